// SPDX-License-Identifier: GPL-2.0-or-later
// KramersKronigSum against KramersKronigHat, which is tested against the integral itself.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "optics/kramers_kronig.h"

namespace tolvik {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

CColumnTable MakeTable(const std::vector<double>& energies, double column0 = 0) {
  CColumnTable table(2);
  for (const double energy : energies) {
    CColumnRow row;
    row.energy = energy;
    row.values.Append(column0);
    row.values.Append(0.5);
    table.Append(row);
  }
  return table;
}

struct Change {
  std::int32_t index;
  double height;
};

CColumnTable AddPlainly(CColumnTable table, const std::vector<Change>& hats) {
  for (const Change& hat : hats) KramersKronigHat(table, hat.index, hat.height);
  return table;
}

CColumnTable AddBySum(KramersKronigSum& sum, CColumnTable table, const std::vector<Change>& hats) {
  sum.Begin(table);
  for (const Change& hat : hats) sum.Add(table, hat.index, hat.height);
  sum.End(table);
  return table;
}

// Compares every bit; all NaNs count as equal.
void ExpectSame(const CColumnTable& a, const CColumnTable& b) {
  ASSERT_EQ(a.count, b.count);
  for (std::uint32_t j = 0; j < a.count; ++j) {
    for (const std::int32_t column : {0, 1}) {
      const double x = a.rows[j].values[column], y = b.rows[j].values[column];
      EXPECT_TRUE(std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y) ||
                  (std::isnan(x) && std::isnan(y)))
          << "row " << j << " column " << column << ": " << x << " and " << y;
    }
  }
}

TEST(KramersKronigSum, EqualsTheHatsOneByOneOnRandomTables) {
  constexpr unsigned kSeed = 20;
  std::mt19937 random(kSeed);
  std::uniform_real_distribution<double> step(0.05, 6), height(-1e4, 1e4);
  for (int table_number = 0; table_number < 20; ++table_number) {
    std::vector<double> energies = {700};
    for (int i = 0; i < 40; ++i) energies.push_back(energies.back() + step(random));
    const CColumnTable table = MakeTable(energies, height(random));
    std::vector<Change> hats;
    for (std::int32_t i = 0; i < 41; i += 1 + static_cast<std::int32_t>(random() % 3))
      hats.push_back({i, height(random)});
    hats.push_back(hats[hats.size() / 2]);  // the same row twice, and again with another height
    hats.push_back({hats[3].index, height(random)});
    KramersKronigSum sum;
    for (int evaluation = 0; evaluation < 30; ++evaluation) {
      ExpectSame(AddBySum(sum, table, hats), AddPlainly(table, hats));
      hats[random() % hats.size()].height *= 1 + 1e-6;  // as a difference Jacobian moves them
    }
  }
}

TEST(KramersKronigSum, ForgetsWhatOtherEnergiesGave) {
  KramersKronigSum sum;
  const std::vector<Change> hats = {{1, 3.0}, {2, -2.0}};
  for (const std::vector<double>& energies : {std::vector<double>{800, 801, 803, 804},
                                              {800, 801, 803, 804.5},
                                              {800, 801, 803, 804.5, 806},
                                              {800, 801},
                                              {}}) {
    const CColumnTable table = MakeTable(energies);
    ExpectSame(AddBySum(sum, table, hats), AddPlainly(table, hats));
  }
}

TEST(KramersKronigSum, NaNInfinityAndSignedZeroTravelAsInTheHat) {
  KramersKronigSum sum;
  CColumnTable table = MakeTable({800, 801, 801.01, 802, 820}, -0.0);
  table.rows[2].energy = 801 + 0.01;  // where the logarithms of row 1 diverge
  for (const double height : {1.0, 0.0, -0.0, kInf, -kInf, std::nan(""), 1e308, 5e-324, 0.0}) {
    for (const std::int32_t index : {1, 2, 3})
      ExpectSame(AddBySum(sum, table, {{index, height}}), AddPlainly(table, {{index, height}}));
  }
  // With a NaN among the energies kept contributions must not be reused.
  table.rows[3].energy = std::nan("");
  for (int i = 0; i < 2; ++i) ExpectSame(AddBySum(sum, table, {{1, 2.0}}), AddPlainly(table, {{1, 2.0}}));
}

TEST(KramersKronigSum, SetReplacesOneRowInOrder) {
  KramersKronigSum sum;
  CColumnTable table = MakeTable({800, 801, 803, 804}), expected = table;
  KramersKronigHat(expected, 1, 2.0);
  expected.rows[2].values[0] = 7;
  KramersKronigHat(expected, 2, 3.0);
  sum.Begin(table);
  sum.Add(table, 1, 2.0);
  sum.Set(2, 7);
  sum.Add(table, 2, 3.0);
  EXPECT_EQ(table.rows[3].values[0], 0) << "before the end";
  sum.End(table);
  ExpectSame(table, expected);
}

TEST(KramersKronigSum, LeavesEndRowsAndForeignTablesAlone) {
  KramersKronigSum sum;
  const CColumnTable table = MakeTable({800, 801, 802}, 7);
  for (const std::int32_t index : {-5, -1, 0, 2, 3, INT32_MAX, INT32_MIN})
    ExpectSame(AddBySum(sum, table, {{index, 5.0}}), table);
  CColumnTable three(3);
  for (int i = 0; i < 3; ++i) three.Append({800.0 + i, {}});
  EXPECT_EQ(AddBySum(sum, three, {{1, 5.0}}).rows[1].values.size, 0);
}

}  // namespace
}  // namespace tolvik
