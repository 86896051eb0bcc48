// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/kramers_kronig.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace tolvik {
namespace {

constexpr double kTwoOverPi = 0.6366197723675814;
constexpr double kOffGrid = 0.01;  // eV; keeps the logarithms finite at the energies of the table
constexpr double kFarField = 5.0;  // eV

// g = beta E² as a triangle over the energies a, b, c with its top at b.
//
//   l, r     slopes of the left and the right side      G_l, G_r   half the values of both sides extended to
//   E = 0 K        heights of both sides; cancels, see KramersKronigHat
struct Hat {
  double a, b, c;
  double height;
  double l = height / (b - a);
  double r = height / (b - c);
  double G_l = (height - l * b) / 2;
  double G_r = (height - r * b) / 2;
  double K = (b - a) * l + (c - b) * r;
};

// Point of the same area, height (c - a) / 2, at the top of the hat.
double FarFieldIntegral(const Hat& hat, double w) {
  return -(hat.height * hat.b / (w * w - hat.b * hat.b)) * ((hat.c - hat.a) / 2);
}

// P∫ E g / (E² - w²) dE: with g = l (E - a) on the left side the integrand is
// l + l w² / (E² - w²) + 2 G_l E / (E² - w²), and likewise on the right.
double NearFieldIntegral(const Hat& hat, double w) {
  const double a = hat.a, b = hat.b, c = hat.c;
  const double to_a = std::abs(w * w - a * a);
  const double to_b = std::abs(w * w - b * b);
  const double to_c = std::abs(w * w - c * c);
  const double L1 = std::log(to_c / to_b);
  const double L2 = std::log((b + w) / (c + w)) + std::log(std::abs(w - c) / std::abs(w - b));
  const double L3 = std::log(to_b / to_a);
  const double L4 = std::log((a + w) / (b + w)) + std::log(std::abs(w - b) / std::abs(w - a));
  return w * (L4 * hat.l / 2 + L2 * hat.r / 2) + hat.K + L1 * hat.G_r + L3 * hat.G_l;
}

// The contribution of a hat that is subtracted from D at a row of that energy.
double HatTransform(const Hat& hat, double energy) {
  const double w = energy + kOffGrid;
  const bool far = std::abs(hat.b - w) >= kFarField;
  return kTwoOverPi * (far ? FarFieldIntegral(hat, w) : NearFieldIntegral(hat, w));
}

bool HasHat(const CColumnTable& table, std::int32_t index) {
  return table.columns == 2 && index >= 1 && static_cast<std::int64_t>(index) + 1 < table.count;
}

Hat MakeHat(const CColumnTable& table, std::int32_t index, double height) {
  const CColumnRow* const row = table.rows + index;
  return {row[-1].energy, row->energy, row[1].energy, height};
}

}  // namespace

void ToTransformForm(CColumnTable& table) {
  if (table.columns != 2) return;
  for (CColumnRow& row : table) row.values[1] *= row.energy * row.energy;
}

void FromTransformForm(CColumnTable& table, double offset) {
  if (table.columns != 2) return;
  for (CColumnRow& row : table) {
    const double square = row.energy * row.energy;
    row.values[1] /= square;
    row.values[0] = (row.values[0] + offset) / square;
  }
}

void KramersKronigHat(CColumnTable& table, std::int32_t index, double height) {
  if (!HasHat(table, index)) return;
  table.rows[index].values[1] = height;
  const Hat hat = MakeHat(table, index, height);
  for (CColumnRow& row : table) row.values[0] -= HatTransform(hat, row.energy);
}

void KramersKronigSum::Begin(const CColumnTable& table) {
  const auto same = [](double energy, const CColumnRow& row) { return energy == row.energy; };
  if (!std::equal(energies_.begin(), energies_.end(), table.begin(), table.end(), same)) {
    energies_.clear();
    for (const CColumnRow& row : table) energies_.push_back(row.energy);
    kept_.assign(energies_.size(), {});
  }
  column_.clear();
  if (table.columns != 2) return;
  for (const CColumnRow& row : table) column_.push_back(row.values[0]);
}

void KramersKronigSum::Add(CColumnTable& table, std::int32_t index, double height) {
  if (!HasHat(table, index)) return;
  table.rows[index].values[1] = height;
  Kept& kept = kept_[static_cast<std::size_t>(index)];
  if (kept.transform.empty() ||
      std::bit_cast<std::uint64_t>(kept.height) != std::bit_cast<std::uint64_t>(height)) {
    const Hat hat = MakeHat(table, index, height);
    kept.transform.resize(energies_.size());
    for (std::size_t j = 0; j < energies_.size(); ++j) kept.transform[j] = HatTransform(hat, energies_[j]);
    kept.height = height;
  }
  for (std::size_t j = 0; j < column_.size(); ++j) column_[j] -= kept.transform[j];
}

void KramersKronigSum::End(CColumnTable& table) const {
  for (std::size_t j = 0; j < column_.size(); ++j) table.rows[j].values[0] = column_[j];
}

void KramersKronigAll(CColumnTable& table) {
  if (table.columns != 2) return;
  for (CColumnRow& row : table) row.values[0] = 0;
  for (std::int32_t i = 1; static_cast<std::int64_t>(i) + 1 < table.count; ++i)
    KramersKronigHat(table, i, table.rows[i].values[1]);
}

void CutColumnTable(CColumnTable& table, double lo, double hi) {
  const auto inside = [=](const CColumnRow& row) { return lo < row.energy && row.energy < hi; };
  CColumnRow* const kept = std::remove_if(table.begin(), table.end(), inside);
  for (CColumnRow* row = kept; row != table.end(); ++row) row->values.Clear();
  table.count = static_cast<std::uint32_t>(kept - table.begin());
}

}  // namespace tolvik
