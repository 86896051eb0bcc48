// SPDX-License-Identifier: GPL-2.0-or-later
// States and curves for tests.
#pragma once

#include <initializer_list>

#include "optics/rays.h"
#include "support/slab.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik::testing {

/// A state with the slabs from the substrate to the ambient, at λ 1.54 Å, without resolution.
inline CState MakeState(std::initializer_list<Slab> slabs) {
  CState state;
  state.lambda = 1.54;
  state.layers.Clear();
  for (const Slab& slab : slabs) state.layers.Append(MakeLayer(slab));
  return state;
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
  SetRayFromLetter(FirstRay(state), pi ? 'p' : 's');
  SetRayFromLetter(SecondRay(state), pi ? 'p' : 's');
}

}  // namespace tolvik::testing
