// SPDX-License-Identifier: GPL-2.0-or-later
// Keys that begin a section, a table of an old version, or a record.
#include "model/state_file/keys.h"
#include "model/state_file/old_tables.h"
#include "model/state_file/reading.h"
#include "optics/energy.h"

namespace tolvik {
namespace {

// The default step of a variable that is read from a file.
CFitVariable NewFitVariable() {
  CFitVariable variable;
  variable.fit_delta = 0.1;
  return variable;
}

// Passes the rest of the file to the reader of a table, which may consume all of it.
template <class ReadTable>
void FromStream(StateReading& reading, ReadTable read) {
  const std::string_view rest = reading.lines.Rest();
  TextStream in(rest);
  read(in);
  reading.lines.Skip(rest.size() - in.Remaining());
}

void BeginLayers(StateReading& reading, const SettingLine& line) {
  reading.state.layers.Clear();
  ReadValue(line.value, reading.layerversion);
  const std::int32_t version = reading.layerversion;
  if (version != 1 && version != 2) return;
  FromStream(reading, [&](TextStream& in) { ReadLayerTable(in, version, reading.state.layers); });
}

void BeginGaussFunctions(StateReading& reading, const SettingLine& line) {
  reading.state.gaussfunctions.Clear();
  reading.state.pendinggauss = 0;
  const auto version = Parse<std::int32_t>(line.value);
  if (version < 1 || version > 3) return;
  FromStream(reading, [&](TextStream& in) { ReadGaussTable(in, version, reading.state.gaussfunctions); });
}

void ReadOldMeasurement(StateReading& reading) {
  CState& state = reading.state;
  CDataset dataset;
  FromStream(reading, [&](TextStream& in) { ReadMeasurementTable(in, dataset); });
  if (dataset.dataset_qz.IsEmpty()) return;
  dataset.datasetenergy = EnergyFromLambda(state.lambda);
  dataset.datasetresolution = state.resolution;
  dataset.datasettitle = "data1";
  dataset.datasetfile = reading.file_name;
  dataset.datasetcomment = "Measurement data from state file. (version 1)";
  state.datasets.Append(std::move(dataset));
  state.activedatasetindex = 1;
}

// Dataset 0 of a loaded state means "no measurement".
void BeginDatasets(StateReading& reading, const SettingLine& line) {
  CDataset empty;
  empty.datasetenergy = EnergyFromLambda(reading.state.lambda);
  empty.datasettitle = "Empty";
  empty.datasetcomment = "This Dataset contains no data.";
  reading.state.datasets.Clear();
  reading.state.datasets.Append(std::move(empty));
  if (Parse<std::int32_t>(line.value) == 1) ReadOldMeasurement(reading);
}

void BeginDataset(StateReading& reading, const SettingLine&) {
  FlushDataset(reading);
  reading.dataset.datasetmultiplicator = reading.measuremult;
  reading.dataset.datasetqztranslation = reading.deltaqz;
}

}  // namespace

CElementSlice* LastSlice(CState& state) {
  CElementLayer* element = Last(state.elementlayers);
  return element == nullptr ? nullptr : Last(element->slices);
}

void FlushDataset(StateReading& reading) {
  if (!reading.dataset.dataset_qz.IsEmpty()) reading.state.datasets.Append(std::move(reading.dataset));
  reading.dataset = CDataset();
}

void FlushGauss(StateReading& reading) {
  if (reading.state.pendinggauss != 0) reading.state.gaussfunctions.Append(std::move(reading.gauss));
  reading.gauss = CGaussFunction();
}

void AddSectionKeys(Actions& actions) {
  actions[keys::Name(keys::kFileVersion)] = [](StateReading& reading, const SettingLine& line) {
    reading.refused = line.value != "1";
  };
  actions[keys::Name(keys::kLayerVersion)] = BeginLayers;
  actions[keys::Name(keys::kLayer)] = [](StateReading& reading, const SettingLine&) {
    reading.state.layers.Append(CLayer());
  };
  actions[keys::Name(keys::kElementLayerVersion)] = [](StateReading& reading, const SettingLine&) {
    reading.state.elementlayers.Clear();
  };
  actions[keys::Name(keys::kElementSlice)] = [](StateReading& reading, const SettingLine&) {
    if (CElementLayer* element = Last(reading.state.elementlayers)) element->slices.Append(CElementSlice());
  };
  actions[keys::Name(keys::kMagneticVersion)] = BeginGaussFunctions;
  actions[keys::Name(keys::kGaussFunction)] = [](StateReading& reading, const SettingLine&) {
    FlushGauss(reading);
    ++reading.state.pendinggauss;
  };
  actions[keys::Name(keys::kFitVariableVersion)] = [](StateReading& reading, const SettingLine&) {
    reading.state.fitvariables.Clear();
  };
  actions[keys::Name(keys::kFitVariable)] = [](StateReading& reading, const SettingLine&) {
    reading.state.fitvariables.Append(NewFitVariable());
  };
  actions[keys::Name(keys::kMeasurementDataVersion)] = BeginDatasets;
  actions[keys::Name(keys::kDatasetNumber)] = BeginDataset;
}

}  // namespace tolvik
