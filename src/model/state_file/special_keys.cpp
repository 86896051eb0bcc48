// SPDX-License-Identifier: GPL-2.0-or-later
// Keys that do more than set one member, and the keys of older files, which are read but no longer written.
#include "model/state_file/keys.h"
#include "model/state_file/reading.h"
#include "optics/energy.h"
#include "optics/rays.h"

namespace tolvik {
namespace {

// Neither an energy nor a wavelength may be 0.
double OneForZero(double value) {
  return value == 0 ? 1.0 : value;
}

void ReadEnergy(StateReading& reading, const SettingLine& line) {
  double& lambda = reading.state.lambda;
  lambda = LambdaFromEnergy(OneForZero(Parse(line.value, EnergyFromLambda(lambda))));
}

void ReadLambda(StateReading& reading, const SettingLine& line) {
  reading.state.lambda = OneForZero(Parse(line.value, reading.state.lambda));
}

// A layer by its thickness: the heights of the interfaces are calculated at the end.
void ReadThickness(StateReading& reading, const SettingLine& line) {
  reading.thicknesses_given = true;
  if (CLayer* layer = Last(reading.state.layers)) ReadValue(line.value, layer->layer_d);
}

void ReadHeight(StateReading& reading, const SettingLine& line) {
  if (CLayer* layer = Last(reading.state.layers)) ReadValue(line.value, layer->layer_z);
}

void ReadPiRatio(StateReading& reading, const SettingLine& line) {
  if (line.value.empty()) return;
  SetRaysFromPiRatio(FirstRay(reading.state), SecondRay(reading.state), Parse<double>(line.value));
}

// Old files had one number for slicing and magnetisation.
void ReadCalcMode(StateReading& reading, const SettingLine& line) {
  constexpr std::int32_t kSlicesWithGaussFunctions = 2;
  ReadValue(line.value, reading.state.layersegmentationmode);
  if (reading.state.layersegmentationmode == kSlicesWithGaussFunctions) {
    reading.state.magnetizationmode = MagnetizationMode::kGaussFunctions;
  }
}

void ReadFitMz(StateReading& reading, const SettingLine& line) {
  if (line.value.empty()) return;
  const bool fits = Parse<std::int32_t>(line.value) != 0;
  reading.state.magnetizationmode = fits ? MagnetizationMode::kGaussFunctions : MagnetizationMode::kNone;
}

void ReadDatasetLambda(StateReading& reading, const SettingLine& line) {
  double& energy = reading.dataset.datasetenergy;
  energy = EnergyFromLambda(Parse(line.value, LambdaFromEnergy(energy)));
}

void BeginElement(StateReading& reading, const SettingLine& line) {
  reading.state.elementlayers.Append(CElementLayer());
  reading.state.elementlayers.Last().element.Set(line.value);
}

}  // namespace

void AddSpecialKeys(Actions& actions) {
  actions[keys::Name(keys::kEnergy)] = ReadEnergy;
  actions[keys::Name(keys::kLayerThickness)] = ReadThickness;
  actions[keys::Name(keys::kElement)] = BeginElement;
  actions["lambda"] = ReadLambda;
  actions["layer_z"] = ReadHeight;
  actions["pipolratio"] = ReadPiRatio;
  actions["calcmode"] = ReadCalcMode;
  actions["fitmz"] = ReadFitMz;
  actions["datasetlambda"] = ReadDatasetLambda;
  actions["measuremult"] = [](StateReading& reading, const SettingLine& line) {
    ReadValue(line.value, reading.measuremult);
  };
  actions["deltaqz"] = [](StateReading& reading, const SettingLine& line) {
    ReadValue(line.value, reading.deltaqz);
  };
}

}  // namespace tolvik
