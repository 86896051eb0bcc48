// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/restore.h"

#include <algorithm>

namespace tolvik::analysis {
namespace {

void Restore(const CLayer& base, CLayer& layer) {
  layer.layer_z = base.layer_z;
  layer.layer_d = base.layer_d;
  layer.layer_delta = base.layer_delta;
  layer.layer_beta = base.layer_beta;
  layer.layer_ddelta = base.layer_ddelta;
  layer.layer_dbeta = base.layer_dbeta;
  layer.magnetic = base.magnetic;
  std::ranges::copy(base.epsilon, layer.epsilon);
  layer.layer_sigma = base.layer_sigma;
  layer.scalarindex = base.scalarindex;
}

void Restore(const CElementSlice& base, CElementSlice& slice) {
  slice.z = base.z;
  slice.el_d = base.el_d;
  slice.el_sigma = base.el_sigma;
  slice.el_density = base.el_density;
}

void Restore(const CGaussFunction& base, CGaussFunction& function) {
  function.gauss_variance = base.gauss_variance;
  function.gauss_z = base.gauss_z;
  function.gauss_delta = base.gauss_delta;
  function.gauss_beta = base.gauss_beta;
}

void Restore(const CDataset& base, CDataset& dataset) {
  dataset.datasetmultiplicator = base.datasetmultiplicator;
  dataset.datasetqztranslation = base.datasetqztranslation;
}

// In a table whose energies do not ascend, the result of a query depends on where it starts.
void Restore(const COpticalTable& base, COpticalTable& table) {
  table.db.cursor = base.db.cursor;
  table.m.cursor = base.m.cursor;
  table.e.cursor = base.e.cursor;
  table.ff.cursor = base.ff.cursor;
}

void Restore(const CElementLayer& base, CElementLayer& element) {
  element.el_f1 = base.el_f1;
  element.el_f2 = base.el_f2;
  std::ranges::copy(base.spare, element.spare);
  for (std::int32_t i = 0; i < base.slices.size; ++i) Restore(base.slices[i], element.slices[i]);
}

template <class T>
void RestoreAll(const CArray<T>& base, CArray<T>& list) {
  for (std::int32_t i = 0; i < base.size; ++i) Restore(base[i], list[i]);
}

}  // namespace

void RestoreNumbers(const CState& base, CState& state) {
  RestoreAll(base.layers, state.layers);
  RestoreAll(base.elementlayers, state.elementlayers);
  RestoreAll(base.gaussfunctions, state.gaussfunctions);
  RestoreAll(base.datasets, state.datasets);
  RestoreAll(base.opticaltables, state.opticaltables);
  std::copy(base.scriptparameters.begin(), base.scriptparameters.end(), state.scriptparameters.begin());
  state.lambda = base.lambda;
  state.resolution = base.resolution;
  state.epsilon = base.epsilon;
  state.engscanqz = base.engscanqz;
}

}  // namespace tolvik::analysis
