// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/fit_variables.h"

#include "model/find.h"
#include "optics/kramers_kronig.h"
#include "optics/tensor.h"

namespace tolvik {
namespace {

double* FindCell(CColumnTable& table, std::int32_t row, std::int32_t column) {
  if (row < 0 || static_cast<std::uint32_t>(row) >= table.count) return nullptr;
  return Find(table.rows[row].values, column);
}

double* FindSliceMember(CState& state, const CFitVariable& variable, double CElementSlice::*member) {
  CElementLayer* element = Find(state.elementlayers, variable.fit_element_id);
  return element == nullptr ? nullptr : Find(element->slices, variable.fit_additional_id, member);
}

// Column of the Kramers-Kronig kinds: the tables hold delta before beta.
std::int32_t KKColumn(std::int32_t kind) {
  return kind == FitKind::kBetaKK ? 1 : 0;
}

bool IsKK(std::int32_t kind) {
  return kind == FitKind::kBetaKK || kind == FitKind::kDeltaKK;
}

bool IsLayerConstant(std::int32_t kind) {
  return kind == FitKind::kDelta || kind == FitKind::kBeta || kind == FitKind::kDeltaM ||
         kind == FitKind::kBetaM;
}

// The number of the model that belongs to a variable, except for the Kramers-Kronig kinds; null where there
// is none.
double* FindModelField(CState& state, const CFitVariable& variable) {
  const std::int32_t a = variable.fit_additional_id;
  switch (variable.fit_id) {
    case FitKind::kThickness:
      return Find(state.layers, a, &CLayer::layer_d);
    case FitKind::kDelta:
      return Find(state.layers, a, &CLayer::layer_delta);
    case FitKind::kBeta:
      return Find(state.layers, a, &CLayer::layer_beta);
    case FitKind::kSigma:
      return Find(state.layers, a, &CLayer::layer_sigma);
    case FitKind::kDeltaM:
      return Find(state.layers, a, &CLayer::layer_ddelta);
    case FitKind::kBetaM:
      return Find(state.layers, a, &CLayer::layer_dbeta);
    case FitKind::kResolution:
      return &state.resolution;
    case FitKind::kMultiplicator:
      return Find(state.datasets, state.activedatasetindex, &CDataset::datasetmultiplicator);
    case FitKind::kQzMovement:
      return Find(state.datasets, state.activedatasetindex, &CDataset::datasetqztranslation);
    case FitKind::kGaussDelta:
      return Find(state.gaussfunctions, a, &CGaussFunction::gauss_delta);
    case FitKind::kGaussBeta:
      return Find(state.gaussfunctions, a, &CGaussFunction::gauss_beta);
    case FitKind::kGaussVariance:
      return Find(state.gaussfunctions, a, &CGaussFunction::gauss_variance);
    case FitKind::kGaussZ:
      return Find(state.gaussfunctions, a, &CGaussFunction::gauss_z);
    case FitKind::kScript:
      return Find(state.scriptparameters, a);
    case FitKind::kElementDensity:
      return FindSliceMember(state, variable, &CElementSlice::el_density);
    case FitKind::kElementThickness:
      return FindSliceMember(state, variable, &CElementSlice::el_d);
    case FitKind::kElementSigma:
      return FindSliceMember(state, variable, &CElementSlice::el_sigma);
    case FitKind::kElementF1:
      return Find(state.elementlayers, variable.fit_element_id, &CElementLayer::el_f1);
    case FitKind::kElementF2:
      return Find(state.elementlayers, variable.fit_element_id, &CElementLayer::el_f2);
    default:
      return nullptr;
  }
}

// A variable tied to datasets counts while one of them is active.
bool IsTiedElsewhere(const CState& state, const CFitVariable& variable) {
  const std::int32_t kind = variable.fit_id;
  if (kind != FitKind::kDelta && kind != FitKind::kBeta) return false;
  if (variable.fit_dataset1 == -1) return false;
  return state.activedatasetindex != variable.fit_dataset1 &&
         state.activedatasetindex != variable.fit_dataset2;
}

void ApplyVariable(CState& state, const CFitVariable& variable) {
  const std::int32_t kind = variable.fit_id;
  if (IsTiedElsewhere(state, variable)) return;
  double* field = FindModelField(state, variable);
  if (field != nullptr) *field = variable.fit_value;
  if (kind == FitKind::kMultiplicator) {
    for (CDataset& dataset : state.datasets) {
      if (dataset.datasetactive != 0) dataset.datasetmultiplicator = variable.fit_value;
    }
  }
  if (field != nullptr && IsLayerConstant(kind)) {
    BuildEpsilonTensor(state.layers[variable.fit_additional_id], state.maggamma, state.magphi,
                       state.magnetizationmode);
  }
}

// Sets one row of the table in transform form, where both columns are products with the squared energy.
void ApplyKKVariable(CColumnTable& table, const CFitVariable& variable) {
  double* cell = FindCell(table, variable.fit_additional_id, KKColumn(variable.fit_id));
  if (cell == nullptr) return;
  const double energy = table.rows[variable.fit_additional_id].energy;
  *cell = energy * energy * variable.fit_value;
}

}  // namespace

void ApplyFitVariables(CState& state) {
  COpticalTable* material = Find(state.opticaltables, state.kktableindex);
  bool kk_met = false;
  for (const CFitVariable& variable : state.fitvariables) {
    if (!IsKK(variable.fit_id)) {
      ApplyVariable(state, variable);
    } else if (material != nullptr) {
      // The table is reset once, so that several rows keep their changes.
      if (!kk_met) material->db = state.kktable;
      kk_met = true;
      ApplyKKVariable(material->db, variable);
    }
  }
  if (kk_met) FromTransformForm(material->db, state.kkoffset);
}

void ReadFitVariables(CState& state, bool onlyoptical) {
  for (CFitVariable& variable : state.fitvariables) {
    const std::int32_t kind = variable.fit_id;
    const bool optical = IsLayerConstant(kind) || kind == FitKind::kElementF1 || kind == FitKind::kElementF2;
    if (onlyoptical && !optical) continue;
    const double* field = nullptr;
    if (IsKK(kind)) {
      COpticalTable* material = Find(state.opticaltables, variable.fit_element_id);
      if (material != nullptr) field = FindCell(material->db, variable.fit_additional_id, KKColumn(kind));
    } else {
      field = FindModelField(state, variable);
    }
    if (field != nullptr) variable.fit_value = *field;
  }
}

}  // namespace tolvik
