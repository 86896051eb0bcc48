// SPDX-License-Identifier: GPL-2.0-or-later
// The map of the benchmarks: 200 energies × 500 qz on a stack of ten layers with tables.
#pragma once

#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik::bench {

inline constexpr int kEnergies = 200;
inline constexpr int kQz = 500;
inline constexpr double kQzWithoutAngle = -0.5;  // Å⁻¹; all points of a map that begins there are negative

inline void AddTable(CState& state, const char* name, double delta, double beta) {
  COpticalTable table;
  table.name = name;
  for (int i = 0; i <= 200; ++i) {
    CColumnRow row;
    row.energy = 600 + i;
    row.values.Append(delta * (1 - 0.001 * i));
    row.values.Append(beta * (1 + 0.002 * i));
    table.db.Append(row);
  }
  state.opticaltables.Append(table);
}

inline CState MakeMapState() {
  CState state;
  state.layers.Clear();
  state.lambda = 18;
  AddTable(state, "light", 1e-3, 3e-4);
  AddTable(state, "heavy", 4e-3, 2e-3);
  AddTable(state, "vacuum", 0, 0);
  for (int i = 0; i < 11; ++i) {
    CLayer layer;
    layer.layer_db = i % 2 == 0 ? "light" : "heavy";
    layer.layer_d = 20 + i;
    layer.layer_sigma = 3;
    state.layers.Append(layer);
  }
  state.layers.Append(CLayer());
  return state;
}

/// The points, energy running fastest as in the command. In a map that starts at kQzWithoutAngle each of them
/// ends before its kernel.
inline CSolution MakeMapPoints(double first_qz = 0.001) {
  CSolution solution;
  for (int q = 0; q < kQz; ++q) {
    for (int e = 0; e < kEnergies; ++e) {
      solution.dataset_eng.Append(601.0 + 0.9 * e);
      solution.dataset_qz.Append(first_qz + 0.5 * q / kQz);
    }
  }
  solution.dataset_R0.Assign(solution.dataset_qz.size, 1.0);
  return solution;
}

}  // namespace tolvik::bench
