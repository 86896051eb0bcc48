// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/material.h"

#include <algorithm>
#include <string>

#include "optics/column_table.h"

namespace tolvik {
namespace {

bool ReadSorted(CColumnTable& table, const std::string& path) {
  const bool read = ReadColumnTable(table, path);
  SortColumnTable(table);
  return read;
}

bool LoadMissing(CState& state, const CCharArray& name, std::int32_t kind) {
  if (FindOpticalTable(name.View(), state.opticaltables, kind) >= 0) return true;
  COpticalTable material;
  material.kind = kind;
  if (!LoadOpticalTable(material, name.View())) return false;
  state.opticaltables.Append(std::move(material));
  return true;
}

void Narrow(EnergyRange& range, const CColumnTable& table) {
  if (table.count == 0) return;
  const double first = table.rows[0].energy;
  const double last = table.rows[table.count - 1].energy;
  if (first > range.lo) range.lo = first;
  if (last < range.hi) range.hi = last;
}

}  // namespace

bool LoadOpticalTable(COpticalTable& material, std::string_view name) {
  const std::string stem(name);  // name may be the record's own
  material.name.Set(stem);
  if (material.kind == TableKind::kElement) return ReadSorted(material.ff, stem + ".ff");
  ReadSorted(material.e, stem + ".e");
  ReadSorted(material.m, stem + ".m");
  return ReadSorted(material.db, stem + ".db");
}

std::int32_t FindOpticalTable(std::string_view name, const CArray<COpticalTable>& materials,
                              std::int32_t kind) {
  if (name.empty()) return -1;
  for (std::int32_t i = 0; i < materials.size; ++i) {
    if (materials[i].kind == kind && materials[i].name == name) return i;
  }
  return -1;
}

bool LoadOpticalTables(CState& state) {
  bool all = true;
  if (state.mode == Mode::kMaterial) {
    for (const CLayer& layer : state.layers) all &= LoadMissing(state, layer.layer_db, TableKind::kLayer);
  } else if (state.mode == Mode::kElement) {
    for (const CElementLayer& element : state.elementlayers) {
      all &= LoadMissing(state, element.element, TableKind::kElement);
    }
  }
  return all;
}

bool CheckMagnetoOpticalTables(const CArray<COpticalTable>& materials) {
  return std::all_of(materials.begin(), materials.end(), [](const auto& each) { return each.m.count > 0; });
}

void InterpolateOpticalConstants(COpticalTable& material, double energy, CLayer& layer) {
  double pair[2];
  InterpolateColumnTable(material.db, energy, pair);
  layer.layer_delta = pair[0];
  layer.layer_beta = pair[1];

  InterpolateColumnTable(material.m, energy, pair);  // zeros without rows
  layer.layer_ddelta = pair[0];
  layer.layer_dbeta = pair[1];

  std::fill(std::begin(layer.epsilon), std::end(layer.epsilon), 0.0);
  layer.magnetic = material.e.count > 0 ? 1 : 0;
  if (layer.magnetic == 0) return;
  double tensor[18];
  InterpolateColumnTable(material.e, energy, tensor);
  for (int i = 0; i < 9; ++i) layer.Epsilon(i / 3, i % 3) = {tensor[2 * i], tensor[2 * i + 1]};
}

void InterpolateFormFactors(COpticalTable& material, double energy, double& f1, double& f2) {
  double pair[2];
  InterpolateColumnTable(material.ff, energy, pair);
  f1 = pair[0];
  f2 = pair[1];
}

EnergyRange GetOpticalEnergyRange(const CState& state) {
  EnergyRange range;
  for (const CLayer& layer : state.layers) {
    const std::int32_t found =
        FindOpticalTable(layer.layer_db.View(), state.opticaltables, TableKind::kLayer);
    if (found < 0) continue;
    Narrow(range, state.opticaltables[found].db);
    if (state.magnetizationmode != MagnetizationMode::kNone) Narrow(range, state.opticaltables[found].m);
  }
  return range;
}

}  // namespace tolvik
