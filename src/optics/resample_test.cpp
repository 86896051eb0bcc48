// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "optics/column_table.h"
#include "optics/resample.h"

namespace tolvik {
namespace {

CColumnRow MakeRow(double energy, double delta, double beta) {
  CColumnRow row;
  row.energy = energy;
  row.values.Append(delta);
  row.values.Append(beta);
  return row;
}

// An absorption edge with a resonance, every 2.95 eV from 780 to 920, and three rows far away.
CColumnTable Edge() {
  CColumnTable table(2);
  table.Append(MakeRow(500, 5e-3, 2e-3));
  table.Append(MakeRow(700, 4e-3, 1.5e-3));
  for (double E = 780; E < 920; E += 2.95) {
    const double x = (E - 852) / 3;
    table.Append(MakeRow(E, 3e-3 - 2e-3 * x / (1 + x * x),
                         1e-3 + 2e-3 * (std::atan(x) / 3.2 + 0.5) + 3e-3 / (1 + x * x)));
  }
  table.Append(MakeRow(1200, 1e-3, 4e-4));
  return table;
}

std::vector<double> Energies(const CColumnTable& table) {
  std::vector<double> energies;
  for (const CColumnRow& row : table) energies.push_back(row.energy);
  return energies;
}

// The plain form: every round evaluates every interval again, on a working table that is searched by energy.
std::vector<double> PlainGrid(CColumnTable input, double emin, double emax, double step,
                              std::uint32_t target) {
  const int n = static_cast<int>((emax - emin) / step);
  CColumnTable grid(2);
  const auto add = [&](double E) {
    CColumnRow row = MakeRow(E, 0, 0);
    InterpolateColumnTable(input, E, {row.values.data, 2});
    grid.Append(row);
    SortColumnTable(grid);
    grid.cursor = 0;
  };
  for (int k = 0; k <= n; ++k) add(((emax - emin) / n) * k + emin);
  while (grid.count < target) {
    double best = -1, best_score = 0;
    for (std::uint32_t i = 0; i + 1 < grid.count; ++i) {
      const double p = grid.rows[i].energy, q = grid.rows[i + 1].energy;
      double sum = 0;
      for (int k = 0; p + 0.1 * k <= q; ++k) {
        double a[2], b[2];
        InterpolateColumnTable(input, p + 0.1 * k, a);
        InterpolateColumnTable(grid, p + 0.1 * k, b);
        for (int c : {0, 1}) sum += (a[c] - b[c]) * (a[c] - b[c]);
      }
      const double score = sum / (q - p);
      if (score > best_score) {
        best = (p + q) / 2;
        best_score = score;
      }
    }
    if (best == -1) return {};
    add(best);
  }
  return Energies(grid);
}

TEST(ResampleColumnTable, FollowsTheCurveAsThePlainFormDoes) {
  const CColumnTable input = Edge();
  CColumnTable table = input;
  table.cursor = 3;
  ResampleColumnTable(table, 800, 900, 2.5, 100);
  EXPECT_EQ(table.cursor, 0u);

  std::vector<double> expected = PlainGrid(input, 800, 900, 2.5, 100);
  ASSERT_EQ(expected.size(), 100u);
  std::vector<double> outside_below, outside_above;
  for (double E : Energies(input)) {
    if (E < 800) outside_below.push_back(E);
    if (E > 900) outside_above.push_back(E);
  }
  expected.insert(expected.begin(), outside_below.begin(), outside_below.end());
  expected.insert(expected.end(), outside_above.begin(), outside_above.end());
  EXPECT_EQ(Energies(table), expected);

  // Most of the 59 extra points are around the resonance; a regular grid would have 26 there.
  int near = 0;
  for (double E : Energies(table)) near += E > 840 && E < 866 ? 1 : 0;
  EXPECT_GT(near, 45);

  CColumnTable source = input;
  for (const CColumnRow& row : table) {
    double values[2];
    InterpolateColumnTable(source, row.energy, values);
    EXPECT_NEAR(row.values[0], values[0], 1e-17);
    EXPECT_NEAR(row.values[1], values[1], 1e-17);
  }
}

TEST(ResampleColumnTable, KeepsAStraightTable) {
  // A straight line whose values are not exact in binary: rounding must not count as a bend.
  CColumnTable table(2);
  for (double E : {700.0, 799.3, 812.7, 850.1, 899.9, 1000.0})
    table.Append(MakeRow(E, 0.1 + 0.003 * E, -0.7 + 1e-3 * E));
  const CColumnTable before = table;
  ResampleColumnTable(table, 800, 900, 2.5, 100);
  EXPECT_EQ(Energies(table), Energies(before));
  for (std::uint32_t i = 0; i < table.count; ++i) EXPECT_TRUE(table.rows[i].values == before.rows[i].values);
}

TEST(ResampleColumnTable, IsAPlainGridWhenTheTargetIsReachedAtOnce) {
  CColumnTable table = Edge();
  ResampleColumnTable(table, 800, 900, 30, 4);  // 100/30 truncates to 3 intervals of 33.3 eV
  std::vector<double> inside;
  for (double E : Energies(table))
    if (E >= 800 && E <= 900) inside.push_back(E);
  ASSERT_EQ(inside.size(), 4u);
  EXPECT_NEAR(inside[1], 800 + 100.0 / 3, 1e-10);
  EXPECT_EQ(inside[3], 900);
}

TEST(ResampleColumnTable, LeavesTheTableForArgumentsThatNameNoGrid) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::nan("");
  struct {
    double emin, emax, step;
    std::int32_t target;
  } const cases[] = {
      {800, 900, 0, 100},       {800, 900, -1, 100},     {800, 900, nan, 100},     {800, 900, inf, 1},
      {800, 900, 1e-9, 100},    {800, 900, 200, 1},      {900, 800, 1, 100},       {900, 800, -1, 2},
      {nan, 900, 1, 100},       {800, inf, 1, 100},      {-inf, 900, 1, 100},      {800, 800, 1, 1},
      {-1e18, 1e18, 1e17, 100}, {800, 900, 5e-324, 100}, {800, 900, 1, INT32_MAX}, {0, 1e300, 1e299, 99}};
  for (const auto& c : cases) {
    CColumnTable table = Edge();
    ResampleColumnTable(table, c.emin, c.emax, c.step, c.target);
    EXPECT_EQ(Energies(table), Energies(Edge())) << c.emin << " " << c.emax << " " << c.step;
  }
  CColumnTable none(0);
  ResampleColumnTable(none, 800, 900, 1, 10);
  EXPECT_EQ(none.count, 0u);
}

TEST(ResampleColumnTable, SurvivesRowsThatAreNoNumbers) {
  CColumnTable table = Edge();
  table.rows[10].values[1] = std::nan("");
  table.rows[20].values[0] = std::numeric_limits<double>::infinity();
  table.rows[30].energy = std::nan("");
  ResampleColumnTable(table, 780, 910, 2.5, 80);
  EXPECT_GT(table.count, 0u);

  CColumnTable empty(2);
  ResampleColumnTable(empty, 800, 900, 2.5, 100);
  EXPECT_EQ(empty.count, 0u);
  ResampleColumnTable(empty, 800, 900, 2.5, -1);  // the grid alone, all zeros
  EXPECT_EQ(empty.count, 41u);
}

}  // namespace
}  // namespace tolvik
