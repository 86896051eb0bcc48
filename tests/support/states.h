// SPDX-License-Identifier: GPL-2.0-or-later
// States and profiles for tests of the engine.
#pragma once

#include <initializer_list>

#include "engine/profile/layer.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik::testing {

/// The numbers of a layer that a test gives; lengths in Å.
struct Slab {
  double delta = 0;
  double beta = 0;
  double thickness = 0;
  double sigma = 0;
  double ddelta = 0;
  double dbeta = 0;
};

/// A state with the slabs from the substrate to the ambient, at λ 1.54 Å, without resolution.
inline CState MakeState(std::initializer_list<Slab> slabs) {
  CState state;
  state.lambda = 1.54;
  state.layers.Clear();
  for (const Slab& slab : slabs) {
    CLayer layer;
    layer.layer_delta = slab.delta;
    layer.layer_beta = slab.beta;
    layer.layer_d = slab.thickness;
    layer.layer_sigma = slab.sigma;
    layer.layer_ddelta = slab.ddelta;
    layer.layer_dbeta = slab.dbeta;
    state.layers.Append(layer);
  }
  return state;
}

/// The same as a profile in the number type T, for tests of single operations.
template <class T>
engine::Profile<T> MakeProfile(std::initializer_list<Slab> slabs) {
  engine::Profile<T> profile;
  for (const Slab& slab : slabs) {
    engine::CLayer<T> entry;
    entry.layer_delta = T(slab.delta);
    entry.layer_beta = T(slab.beta);
    entry.layer_d = T(slab.thickness);
    entry.layer_sigma = T(slab.sigma);
    entry.layer_ddelta = T(slab.ddelta);
    entry.layer_dbeta = T(slab.dbeta);
    profile.Append(entry);
  }
  return profile;
}

/// A record with a grid.
inline CSolution MakeGrid(std::initializer_list<double> qz) {
  CSolution solution;
  for (double q : qz) solution.dataset_qz.Append(q);
  return solution;
}

/// A regular grid of count points from first to last.
inline CSolution MakeGrid(double first, double last, int count) {
  CSolution solution;
  for (int i = 0; i < count; ++i) solution.dataset_qz.Append(first + (last - first) * i / (count - 1));
  return solution;
}

/// One energy of a table of optical constants.
struct Constants {
  double energy;
  double delta;
  double beta;
};

/// Gives a state the table of a material, rows by ascending energy.
inline void AddTable(CState& state, const char* material, std::initializer_list<Constants> rows) {
  COpticalTable table;
  table.name = material;
  for (const Constants& row : rows) {
    CColumnRow line;
    line.energy = row.energy;
    line.values.Append(row.delta);
    line.values.Append(row.beta);
    table.db.Append(line);
  }
  state.opticaltables.Append(table);
}

/// A record for an energy scan.
inline CSolution MakeScan(std::initializer_list<double> qz, std::initializer_list<double> energies) {
  CSolution solution = MakeGrid(qz);
  for (double energy : energies) solution.dataset_eng.Append(energy);
  return solution;
}

/// Makes both rays of a state pi (or both sigma).
inline void UsePi(CState& state, bool pi = true) {
  state.ray1sigmare = state.ray2sigmare = pi ? 0 : 1;
  state.ray1pire = state.ray2pire = pi ? 1 : 0;
  state.ray1sigmaim = state.ray2sigmaim = state.ray1piim = state.ray2piim = 0;
}

}  // namespace tolvik::testing
