// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/layer_constants.h"

#include <algorithm>

#include "optics/column_table.h"
#include "optics/energy.h"
#include "optics/material.h"
#include "optics/tensor.h"

namespace tolvik {
namespace {

bool SetElement(CState& state, CElementLayer& element, double energy) {
  const std::int32_t found =
      FindOpticalTable(element.element.View(), state.opticaltables, TableKind::kElement);
  if (found < 0) return false;
  COpticalTable& material = state.opticaltables[found];
  if (!IsEnergyInColumnTable(material.ff, energy)) return false;
  InterpolateFormFactors(material, energy, element.el_f1, element.el_f2);
  std::copy(std::begin(material.spare), std::end(material.spare), element.spare);
  return true;
}

bool SetLayer(CState& state, CLayer& layer, double energy) {
  const std::int32_t found = FindOpticalTable(layer.layer_db.View(), state.opticaltables, TableKind::kLayer);
  if (found < 0) return false;
  COpticalTable& material = state.opticaltables[found];
  // only .db is checked: .m and .e tables keep their end values beyond their ranges
  if (!IsEnergyInColumnTable(material.db, energy)) return false;
  InterpolateOpticalConstants(material, energy, layer);
  if (layer.magnetic == 0) {
    BuildEpsilonTensor(layer, state.maggamma, state.magphi, state.magnetizationmode);
  }
  return true;
}

}  // namespace

bool SetLayerConstantsForEnergy(CState& state) {
  const double energy = EnergyFromLambda(state.lambda);
  bool all = true;
  if (state.mode == Mode::kElement) {
    for (CElementLayer& element : state.elementlayers) all &= SetElement(state, element, energy);
  } else {
    for (CLayer& layer : state.layers) all &= SetLayer(state, layer, energy);
  }
  return all;
}

LayerConstantsStatus PrepareTables(CState& state, TablesToLoad load) {
  const bool wanted = load == TablesToLoad::kMissing || state.opticaltables.IsEmpty();
  if (wanted && !LoadOpticalTables(state)) return LayerConstantsStatus::kMissingTables;
  if (state.magnetizationmode != MagnetizationMode::kNone &&
      !CheckMagnetoOpticalTables(state.opticaltables)) {
    return LayerConstantsStatus::kMissingMagneticTables;
  }
  return LayerConstantsStatus::kReady;
}

LayerConstantsStatus PrepareLayerConstants(CState& state, TablesToLoad load) {
  const LayerConstantsStatus tables = PrepareTables(state, load);
  if (tables != LayerConstantsStatus::kReady) return tables;
  return SetLayerConstantsForEnergy(state) ? LayerConstantsStatus::kReady
                                           : LayerConstantsStatus::kEnergyOutOfRange;
}

}  // namespace tolvik
