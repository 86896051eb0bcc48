// SPDX-License-Identifier: GPL-2.0-or-later
// Reads the settings of a state file one by one. Sections of the present versions are keys; a key sets the
// record begun last, and is ignored when none was begun.
#include <fstream>
#include <new>
#include <stdexcept>
#include <type_traits>

#include "model/state_file/keys.h"
#include "model/state_file/reading.h"
#include "model/state_file/settings.h"
#include "optics/energy.h"
#include "optics/tensor.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

template <class Record>
void ReadField(Record& record, const keys::Field<Record>& field, std::string_view value) {
  std::visit(
      [&](auto member) {
        if constexpr (std::is_same_v<decltype(member), CCharArray Record::*>) {
          (record.*member).Set(value);
        } else {
          ReadValue(value, record.*member);
        }
      },
      field);
}

// The record for the keys of each kind.
CLayer* LastLayer(StateReading& reading) {
  return Last(reading.state.layers);
}
CElementLayer* LastElement(StateReading& reading) {
  return Last(reading.state.elementlayers);
}
CElementSlice* LastElementSlice(StateReading& reading) {
  return LastSlice(reading.state);
}
CFitVariable* LastFitVariable(StateReading& reading) {
  return Last(reading.state.fitvariables);
}
CGaussFunction* PendingGauss(StateReading& reading) {
  return &reading.gauss;
}
CDataset* PendingDataset(StateReading& reading) {
  return &reading.dataset;
}

template <class Record, std::size_t kCount>
void AddKeys(Actions& actions, const keys::Key<Record> (&list)[kCount], Record* (*target)(StateReading&)) {
  for (const auto& key : list) {
    actions[keys::Name(key.start)] = [&key, target](StateReading& reading, const SettingLine& line) {
      if (Record* record = target(reading)) ReadField(*record, key.field, line.value);
    };
  }
}

template <class Record, std::size_t kCount>
void AddArrayKeys(Actions& actions, const keys::ArrayKey<Record> (&list)[kCount],
                  Record* (*target)(StateReading&)) {
  for (const auto& key : list) {
    actions[keys::Name(key.start)] = [&key, target](StateReading& reading, const SettingLine& line) {
      (target(reading)->*key.field).Append(Parse<double>(line.value));
    };
  }
}

template <std::size_t kCount>
void AddSettings(Actions& actions, const keys::Setting (&list)[kCount]) {
  for (const auto& setting : list) {
    actions[keys::Name(setting.start)] = [&setting](StateReading& reading, const SettingLine& line) {
      ReadField(reading.state, setting.field, line.value);
    };
  }
}

// A script line keeps the blank after its "=", so it gains one at each load and save.
void AddScriptKeys(Actions& actions) {
  actions[keys::Name(keys::kScriptParameter)] = [](StateReading& reading, const SettingLine& line) {
    reading.state.scriptparameters.Append(Parse<double>(line.value));
  };
  actions[keys::Name(keys::kScriptLine)] = [](StateReading& reading, const SettingLine& line) {
    reading.state.scriptlines.Append(line.raw);
  };
  actions[keys::Name(keys::kDefaultScriptLine)] = [](StateReading& reading, const SettingLine& line) {
    reading.state.defaultscriptlines.Append(line.raw);
  };
}

Actions MakeActions() {
  Actions actions;
  AddSectionKeys(actions);
  AddKeys(actions, keys::kLayerKeys, LastLayer);
  AddKeys(actions, keys::kElementKeys, LastElement);
  AddKeys(actions, keys::kSliceKeys, LastElementSlice);
  AddKeys(actions, keys::kGaussKeys, PendingGauss);
  AddArrayKeys(actions, keys::kSplineKeys, PendingGauss);
  AddKeys(actions, keys::kFitVariableKeys, LastFitVariable);
  AddKeys(actions, keys::kDatasetKeys, PendingDataset);
  AddArrayKeys(actions, keys::kPointKeys, PendingDataset);
  AddSettings(actions, keys::kSettingsAboveEnergy);
  AddSettings(actions, keys::kSettingsBelowEnergy);
  AddSettings(actions, keys::kActiveDataset);
  AddScriptKeys(actions);
  AddSpecialKeys(actions);
  return actions;
}

// Heights of the interfaces from the thicknesses, or the other way round for files that give heights.
void CompleteHeights(CArray<CLayer>& layers, bool from_thicknesses) {
  for (std::int32_t i = 1; i < layers.size; ++i) {
    if (from_thicknesses) {
      layers[i].layer_z = layers[i - 1].layer_z + layers[i].layer_d;
    } else {
      layers[i].layer_d = layers[i].layer_z - layers[i - 1].layer_z;
    }
  }
}

void Finish(StateReading& reading) {
  CState& state = reading.state;
  FlushDataset(reading);
  FlushGauss(reading);
  state.pendinggauss = 0;
  if (!state.datasets.IsEmpty()) {
    state.datasets[0].datasetenergy = EnergyFromLambda(state.lambda);
    state.datasets[0].datasetresolution = state.resolution;
  }
  if (state.mode == Mode::kElement) state.currentelement = 0;
  BuildAllEpsilonTensors(state);
  CompleteHeights(state.layers, reading.layerversion > 3 || reading.thicknesses_given);
}

// The bytes of the whole file; false when it cannot be opened or read, for example a folder.
bool Slurp(const std::string& file_name, std::string& text) {
  std::ifstream in(file_name, std::ios::binary);
  if (!in) return false;
  std::size_t chunk = 1 << 16;
  if (in.seekg(0, std::ios::end)) {
    const auto size = in.tellg();
    if (size > 0) chunk = static_cast<std::size_t>(size) + 1;
    in.seekg(0);
  }
  in.clear();  // a pipe has no size
  while (in) {
    const std::size_t filled = text.size();
    text.resize(filled + chunk);
    in.read(text.data() + filled, static_cast<std::streamsize>(chunk));
    text.resize(filled + static_cast<std::size_t>(in.gcount()));
    chunk = std::max<std::size_t>(1 << 16, text.size() / 2);
  }
  return !in.bad();
}

}  // namespace

bool ReadState(CState& state, std::string_view text, std::string_view file_name) {
  static const Actions actions = MakeActions();
  state.scriptparameters.Clear();
  state.scriptlines.Clear();
  state.defaultscriptlines.Clear();
  state.fitpenalty = 0;
  StateReading reading{.state = state, .lines = SettingLines(text), .file_name = file_name};
  SettingLine line;
  while (reading.lines.Next(line)) {
    const auto found = actions.find(line.key);
    if (found == actions.end()) continue;
    found->second(reading, line);
    if (reading.refused) return false;
  }
  Finish(reading);
  return true;
}

bool LoadState(CState& state, const std::string& file_name) try {
  std::string text;
  return Slurp(file_name, text) && ReadState(state, text, file_name);
} catch (const std::bad_alloc&) {
  return false;
} catch (const std::length_error&) {
  return false;  // a list or text of more than 2^31 elements
}

}  // namespace tolvik
