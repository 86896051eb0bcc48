// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/column_table.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <locale>

namespace tolvik {
namespace {

bool ByEnergy(const CColumnRow& a, const CColumnRow& b) {
  return a.energy < b.energy;
}

// The first row above a bracket of energy, which lies strictly inside the table. NaN rows may stand anywhere
// but at the front, so every search stops at the ends of the table.
std::uint32_t FindUpperRow(const CColumnTable& table, double energy) {
  const std::uint32_t last = table.count - 1;
  std::uint32_t at = table.cursor <= last ? table.cursor : 0;
  if (std::isnan(table.rows[at].energy)) at = 0;
  if (energy == table.rows[at].energy) return std::min(at + 1, last);
  if (energy > table.rows[at].energy) {
    std::uint32_t upper = at + 1;
    while (upper < last && !(table.rows[upper].energy >= energy)) ++upper;
    return upper;
  }
  std::uint32_t lower = at - 1;
  while (lower > 0 && !(table.rows[lower].energy <= energy)) --lower;
  return lower + 1;
}

void CopyRow(const CColumnTable& table, const CColumnRow& row, std::span<double> values) {
  std::copy_n(row.values.begin(), table.columns, values.begin());
}

}  // namespace

void SortColumnTable(CColumnTable& table) {
  // Exchanging neighbours while the left energy is greater ends in the stable order of every run of numbers
  // between NaNs, which no exchange passes.
  CColumnRow* run = table.begin();
  while (run != table.end()) {
    CColumnRow* end = std::find_if(run, table.end(), [](const auto& row) { return std::isnan(row.energy); });
    if (!std::is_sorted(run, end, ByEnergy)) std::stable_sort(run, end, ByEnergy);
    run = end == table.end() ? end : end + 1;
  }
}

void InterpolateColumnTable(CColumnTable& table, double energy, std::span<double> values) {
  if (table.count == 0) {
    std::fill_n(values.begin(), table.columns, 0.0);
    return;
  }
  const CColumnRow& first = table.rows[0];
  const CColumnRow& last = table.rows[table.count - 1];
  if (!(energy > first.energy)) return CopyRow(table, first, values);
  if (energy >= last.energy) return CopyRow(table, last, values);

  table.cursor = FindUpperRow(table, energy);
  const CColumnRow& upper = table.rows[table.cursor];
  const CColumnRow& lower = table.rows[table.cursor - 1];
  for (std::int32_t i = 0; i < table.columns; ++i) {
    const double lo = lower.values[i];
    const double hi = upper.values[i];
    values[static_cast<std::size_t>(i)] =
        lo + (energy - lower.energy) / (upper.energy - lower.energy) * (hi - lo);
  }
}

bool IsColumnTableAscending(const CColumnTable& table) {
  for (std::uint32_t i = 0; i + 1 < table.count; ++i) {
    if (!(table.rows[i].energy < table.rows[i + 1].energy)) return false;
  }
  return table.count != 1 || !std::isnan(table.rows[0].energy);
}

void MoveCursorBelow(CColumnTable& table, double energy) {
  const CColumnRow* at = std::lower_bound(table.begin(), table.end(), energy,
                                          [](const CColumnRow& row, double e) { return row.energy < e; });
  table.cursor = at == table.begin() ? 0 : static_cast<std::uint32_t>(at - table.begin()) - 1;
}

bool IsEnergyInColumnTable(const CColumnTable& table, double energy) {
  return table.count > 0 && table.rows[0].energy <= energy && energy <= table.rows[table.count - 1].energy;
}

bool SaveColumnTable(const CColumnTable& table, const std::string& path) {
  std::ofstream out(path, std::ios::trunc);
  if (!out.is_open()) return false;
  out.imbue(std::locale::classic());
  for (const CColumnRow& row : table) {
    out << row.energy;
    for (double value : row.values) out << '\t' << value;
    out << '\n';
  }
  return true;
}

}  // namespace tolvik
