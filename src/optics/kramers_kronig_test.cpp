// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/kramers_kronig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "optics/column_table.h"

namespace tolvik {
namespace {

constexpr double kPi = 3.14159265358979323846;

CColumnTable MakeTable(const std::vector<double>& energies, double column0 = 0, double column1 = 0) {
  CColumnTable table(2);
  for (double energy : energies) {
    CColumnRow row;
    row.energy = energy;
    row.values.Append(column0);
    row.values.Append(column1);
    table.Append(row);
  }
  return table;
}

// P∫ F(E) / (E - w) dE over [lo, hi] for a smooth F, by taking out F(w): the rest is regular. Gauss-Legendre
// with three points in many panels.
template <class Function>
double PrincipalValue(Function F, double lo, double hi, double w) {
  const double Fw = w > lo && w < hi ? F(w) : 0;
  const int panels = 4000;
  const double half = (hi - lo) / panels / 2;
  double sum = 0;
  for (int i = 0; i < panels; ++i) {
    const double centre = lo + half * (2 * i + 1);
    const double offset = half * std::sqrt(0.6);
    const auto term = [&](double E) { return (F(E) - Fw) / (E - w); };
    sum += half * (5 * term(centre - offset) + 8 * term(centre) + 5 * term(centre + offset)) / 9;
  }
  return sum + Fw * std::log(std::abs((hi - w) / (w - lo)));
}

// P∫ E g(E) / (E² - w²) dE over both sides of a triangle, each side extended as the straight line it is.
double TriangleIntegral(double a, double b, double c, double height, double w) {
  const auto left = [=](double E) { return E * height * (E - a) / (b - a) / (E + w); };
  const auto right = [=](double E) { return E * height * (c - E) / (c - b) / (E + w); };
  // Where w lies on one side, the other side's pole is outside its range: a plain integral.
  return PrincipalValue(left, a, b, w) + PrincipalValue(right, b, c, w);
}

TEST(KramersKronigHat, NearFieldIsThePrincipalValueIntegral) {
  const double height = 3.5e3;
  CColumnTable table = MakeTable({845, 846.5, 848, 850, 853, 854, 854.9});
  KramersKronigHat(table, 3, height);
  for (const CColumnRow& row : table) {
    const double expected = -2 / kPi * TriangleIntegral(848, 850, 853, height, row.energy + 0.01);
    EXPECT_NEAR(row.values[0], expected, 1e-6 * height) << "at " << row.energy;
  }
}

TEST(KramersKronigHat, FarFieldIsAPointOfTheSameAreaAndNearTheIntegral) {
  const double height = 3.5e3;
  CColumnTable table = MakeTable({100, 700, 800, 840, 844.9, 849, 850, 851, 855, 860, 900, 3000});
  KramersKronigHat(table, 6, height);
  for (std::uint32_t j : {0u, 1u, 2u, 3u, 4u, 9u, 10u, 11u}) {
    const double w = table.rows[j].energy + 0.01;
    const double point = 2 / kPi * height * 850 / (w * w - 850 * 850) * 1.0;  // area = height (851 - 849) / 2
    EXPECT_NEAR(table.rows[j].values[0], point, 1e-12 * std::abs(point));
    // A triangle of half width d seen from distance x differs from its point by (d/x)²/6: below 1 % here.
    const double integral = -2 / kPi * TriangleIntegral(849, 850, 851, height, w);
    EXPECT_NEAR(table.rows[j].values[0], integral, 0.01 * std::abs(integral)) << "at " << w;
  }
}

TEST(KramersKronigHat, CutsOverAtFiveElectronvolts) {
  // w = E + 0.01: the row at 844.98 is 5.01 eV away and far, the one at 845.02 is 4.97 away and near.
  CColumnTable table = MakeTable({844.98, 845.02, 846, 850, 851});
  KramersKronigHat(table, 3, 1.0);
  const double w = 844.99;
  const double point = 2 / kPi * 850 / (w * w - 850 * 850) * 2.5;
  EXPECT_NEAR(table.rows[0].values[0], point, 1e-12 * std::abs(point));
  const double integral = -2 / kPi * TriangleIntegral(846, 850, 851, 1.0, 845.03);
  EXPECT_NEAR(table.rows[1].values[0], integral, 1e-6 * std::abs(integral));
  EXPECT_GT(std::abs(table.rows[1].values[0] / integral -
                     (2 / kPi * 850 / (845.03 * 845.03 - 850 * 850) * 2.5) / integral),
            0.01);
}

TEST(KramersKronigHat, StoresTheHeightAndAccumulates) {
  CColumnTable once = MakeTable({800, 801, 802, 803});
  CColumnTable twice = once;
  KramersKronigHat(once, 1, 2.0);
  KramersKronigHat(twice, 1, 1.0);
  EXPECT_EQ(twice.rows[1].values[1], 1.0);
  KramersKronigHat(twice, 1, 1.0);
  EXPECT_EQ(once.rows[1].values[1], 2.0);
  for (std::uint32_t j = 0; j < once.count; ++j)
    EXPECT_NEAR(once.rows[j].values[0], twice.rows[j].values[0], 1e-9);
}

TEST(KramersKronigHat, LeavesEndRowsAndForeignTablesAlone) {
  CColumnTable table = MakeTable({800, 801, 802}, 7, 8);
  for (std::int32_t index : {-5, -1, 0, 2, 3, 1000, INT32_MAX, INT32_MIN})
    KramersKronigHat(table, index, 5.0);
  CColumnTable three(3);
  three.Append({800, {}});
  for (const CColumnRow& row : table) {
    EXPECT_EQ(row.values[0], 7);
    EXPECT_EQ(row.values[1], 8);
  }
  CColumnTable empty(2);
  KramersKronigHat(empty, 1, 5.0);
  KramersKronigHat(empty, 0, 5.0);
  EXPECT_EQ(empty.count, 0u);
}

TEST(KramersKronigHat, RowAtTheShiftOfAnotherGivesInfinity) {
  CColumnTable table = MakeTable({800, 801, 801.01, 802});
  table.rows[2].energy = 801 + 0.01;  // w of row 1 exactly
  KramersKronigHat(table, 2, 1.0);
  EXPECT_TRUE(std::isnan(table.rows[1].values[0]) || std::isinf(table.rows[1].values[0]));
  EXPECT_TRUE(std::isfinite(table.rows[3].values[0]));
}

TEST(KramersKronigAll, TwoRowsGiveZeroDelta) {
  CColumnTable table = MakeTable({800, 900}, 3, 4);
  KramersKronigAll(table);
  EXPECT_EQ(table.rows[0].values[0], 0);
  EXPECT_EQ(table.rows[1].values[0], 0);
  EXPECT_EQ(table.rows[1].values[1], 4);
}

TEST(KramersKronigAll, IsTheSumOfTheInnerHats) {
  CColumnTable all = MakeTable({800, 801, 803, 804, 807}, 5, 0);
  for (std::uint32_t j = 0; j < all.count; ++j) all.rows[j].values[1] = 1.0 + j;
  CColumnTable sum = all;
  for (CColumnRow& row : sum) row.values[0] = 0;
  for (std::int32_t i : {1, 2, 3}) KramersKronigHat(sum, i, 1.0 + i);
  KramersKronigAll(all);
  for (std::uint32_t j = 0; j < all.count; ++j) EXPECT_EQ(all.rows[j].values[0], sum.rows[j].values[0]);
}

TEST(KramersKronigAll, NeedsTwoColumns) {
  CColumnTable table(1);
  CColumnRow row;
  row.energy = 800;
  row.values.Append(9);
  for (int i = 0; i < 4; ++i) table.Append(row);
  KramersKronigAll(table);
  ToTransformForm(table);
  FromTransformForm(table, 1.0);
  for (const CColumnRow& kept : table) EXPECT_EQ(kept.values[0], 9);
}

// A damped oscillator, n - 1 = -delta + i beta = f / (w0² - w² - i γ w), obeys the relation, and D tends to f
// at high energy, so the offset of its whole spectrum is f.
TEST(KramersKronigAll, ReproducesADampedOscillator) {
  const double f = 1200, w0 = 850, gamma = 10;
  const auto denominator = [=](double w) {
    return (w0 * w0 - w * w) * (w0 * w0 - w * w) + gamma * gamma * w * w;
  };
  std::vector<double> energies;
  for (double w = 1; w < 700; w += 5) energies.push_back(w);
  for (double w = 700; w < 1000; w += 0.25) energies.push_back(w);
  for (double w = 1000; w < 60000; w *= 1.005) energies.push_back(w);
  CColumnTable table = MakeTable(energies);
  for (CColumnRow& row : table) row.values[1] = f * gamma * row.energy / denominator(row.energy);
  ToTransformForm(table);
  KramersKronigAll(table);
  FromTransformForm(table, f);
  const double top = f / (2 * w0 * gamma);
  for (const CColumnRow& row : table) {
    const double w = row.energy + 0.01;  // where the transform is taken
    if (w < 750 || w > 950) continue;
    const double delta = f * (w * w - w0 * w0) / denominator(w);
    EXPECT_NEAR(row.values[0], delta, 0.001 * top) << "at " << w;  // (0.25 / gamma)² of a bent curve
  }
}

TEST(TransformForm, MultipliesAndDividesByTheSquareOfTheEnergy) {
  CColumnTable table = MakeTable({2, 10}, 0.5, 3);
  ToTransformForm(table);
  EXPECT_EQ(table.rows[0].values[0], 0.5);
  EXPECT_EQ(table.rows[0].values[1], 12);
  EXPECT_EQ(table.rows[1].values[1], 300);
  FromTransformForm(table, 1.5);
  EXPECT_EQ(table.rows[0].values[0], 0.5);
  EXPECT_EQ(table.rows[0].values[1], 3);
  EXPECT_EQ(table.rows[1].values[0], 0.02);
  EXPECT_EQ(table.rows[1].values[1], 3);
}

TEST(CutColumnTable, KeepsTheEndsOfTheOpenInterval) {
  CColumnTable table = MakeTable({700, 790, 790.001, 850, 909.999, 910, 1000});
  table.cursor = 5;
  CutColumnTable(table, 790, 910);
  ASSERT_EQ(table.count, 4u);
  EXPECT_EQ(table.rows[0].energy, 700);
  EXPECT_EQ(table.rows[1].energy, 790);
  EXPECT_EQ(table.rows[2].energy, 910);
  EXPECT_EQ(table.rows[3].energy, 1000);
  EXPECT_EQ(table.cursor, 5u);
}

TEST(CutColumnTable, LeavesACursorBehindTheRowsThatQueriesSurvive) {
  CColumnTable table = MakeTable({700, 710, 720, 730, 740}, 1, 2);
  table.rows[1].values[0] = 3;
  table.cursor = 4;
  CutColumnTable(table, 715, 1000);
  ASSERT_EQ(table.count, 2u);
  double values[2];
  InterpolateColumnTable(table, 705, values);
  EXPECT_EQ(values[0], 2);
  EXPECT_EQ(values[1], 2);
}

TEST(CutColumnTable, EmptiesATableAndTakesCrossedOrUnorderedLimits) {
  CColumnTable table = MakeTable({700, 710});
  CutColumnTable(table, 710, 700);
  CutColumnTable(table, std::nan(""), 1000);
  EXPECT_EQ(table.count, 2u);
  CutColumnTable(table, -INFINITY, INFINITY);
  EXPECT_EQ(table.count, 0u);
  table.Append(MakeTable({5}).rows[0]);
  EXPECT_EQ(table.rows[0].energy, 5);
}

}  // namespace
}  // namespace tolvik
