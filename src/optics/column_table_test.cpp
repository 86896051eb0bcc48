// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/column_table.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "support/scratch.h"

namespace tolvik {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// One column that numbers the rows in the order given.
CColumnTable MakeTable(const std::vector<double>& energies) {
  CColumnTable table(1);
  for (std::size_t i = 0; i < energies.size(); ++i) {
    CColumnRow row;
    row.energy = energies[i];
    row.values.Append(static_cast<double>(i));
    table.Append(row);
  }
  return table;
}

double At(CColumnTable& table, double energy) {
  std::vector<double> values(static_cast<std::size_t>(table.columns), -7.0);
  InterpolateColumnTable(table, energy, values);
  return values[0];
}

// The plain sort: passes of neighbour exchanges until nothing moves.
void SortByExchanges(CColumnTable& table) {
  for (bool moved = true; moved;) {
    moved = false;
    for (std::uint32_t i = 0; i + 1 < table.count; ++i) {
      if (table.rows[i].energy > table.rows[i + 1].energy) {
        std::swap(table.rows[i], table.rows[i + 1]);
        moved = true;
      }
    }
  }
}

std::vector<double> Order(const CColumnTable& table) {
  std::vector<double> order;
  for (const CColumnRow& row : table) order.push_back(row.values[0]);
  return order;
}

TEST(SortColumnTable, EqualsNeighbourExchanges) {
  std::mt19937 random(20240611);
  for (int round = 0; round < 3000; ++round) {
    std::vector<double> energies(random() % 40);
    for (double& energy : energies) {
      const auto kind = random() % 12;
      energy = kind == 0   ? kNan
               : kind == 1 ? kInf
               : kind == 2 ? -kInf
               : kind == 3 ? -0.0
                           : static_cast<double>(random() % 8);
    }
    CColumnTable sorted = MakeTable(energies);
    CColumnTable plain = MakeTable(energies);
    SortColumnTable(sorted);
    SortByExchanges(plain);
    ASSERT_EQ(Order(sorted), Order(plain)) << "round " << round;
  }
}

TEST(SortColumnTable, KeepsTheOrderOfEqualEnergies) {
  CColumnTable table = MakeTable({5, 3, 5, 3, 1});
  SortColumnTable(table);
  EXPECT_EQ(Order(table), (std::vector<double>{4, 1, 3, 0, 2}));
}

TEST(SortColumnTable, NotANumberPartsTheTable) {
  CColumnTable table = MakeTable({5, 4, kNan, 3, 2});
  SortColumnTable(table);
  EXPECT_EQ(Order(table), (std::vector<double>{1, 0, 2, 4, 3}));
}

TEST(InterpolateColumnTable, EmptyTableGivesZerosAndKeepsTheCursor) {
  CColumnTable table(1);
  table.cursor = 9;
  EXPECT_EQ(At(table, 5.0), 0.0);
  EXPECT_EQ(table.cursor, 9u);
}

TEST(InterpolateColumnTable, HoldsTheEndsBeyondTheTable) {
  CColumnTable table = MakeTable({100, 200, 300});
  table.cursor = 1;
  EXPECT_EQ(At(table, 99), 0);
  EXPECT_EQ(At(table, 100), 0);
  EXPECT_EQ(At(table, kNan), 0);
  EXPECT_EQ(At(table, -kInf), 0);
  EXPECT_EQ(At(table, 300), 2);
  EXPECT_EQ(At(table, 301), 2);
  EXPECT_EQ(At(table, kInf), 2);
  EXPECT_EQ(table.cursor, 1u);
}

TEST(InterpolateColumnTable, IsLinearBetweenRows) {
  CColumnTable table = MakeTable({100, 200, 400});
  EXPECT_DOUBLE_EQ(At(table, 150), 0.5);
  EXPECT_DOUBLE_EQ(At(table, 250), 1.25);
  EXPECT_DOUBLE_EQ(At(table, 399), 1.995);
  EXPECT_DOUBLE_EQ(At(table, 101), 0.01);
}

TEST(InterpolateColumnTable, AnEnergyOnARowGivesThatRow) {
  CColumnTable table = MakeTable({1, 2, 3, 4, 5});
  for (std::uint32_t start = 0; start < 5; ++start) {
    for (int row = 0; row < 5; ++row) {
      table.cursor = start;
      EXPECT_EQ(At(table, 1.0 + row), row) << "cursor " << start;
    }
  }
}

TEST(InterpolateColumnTable, CursorStandsOnTheUpperRow) {
  CColumnTable table = MakeTable({1, 2, 3, 4, 5});
  At(table, 3.5);
  EXPECT_EQ(table.cursor, 3u);  // walked up
  At(table, 3.5);
  EXPECT_EQ(table.cursor, 3u);  // down one row and back to the same pair
  At(table, 1.5);
  EXPECT_EQ(table.cursor, 1u);  // walked down
  At(table, 2.0);
  EXPECT_EQ(table.cursor, 2u);  // from a row at the energy itself: the next one
  At(table, 4.0);
  EXPECT_EQ(table.cursor, 3u);  // from below: the row itself
}

TEST(InterpolateColumnTable, TwoEqualEnergiesGiveNanFromTheFirstOfThem) {
  CColumnTable table = MakeTable({1, 2, 2, 3});
  table.cursor = 1;
  EXPECT_TRUE(std::isnan(At(table, 2.0)));
  table.cursor = 0;
  EXPECT_EQ(At(table, 2.0), 1.0);
  table.cursor = 3;
  EXPECT_EQ(At(table, 2.0), 2.0);
}

TEST(InterpolateColumnTable, AgreesWithABracketSearchFromAnyCursor) {
  CColumnTable table = MakeTable({1, 2, 4, 8, 16, 32});
  std::mt19937 random(7);
  std::uniform_real_distribution<double> energies(1.0, 32.0);
  for (int i = 0; i < 1000; ++i) {
    const double energy = energies(random);
    const double lower = std::floor(std::log2(energy));  // row i is at 2^i
    EXPECT_NEAR(At(table, energy), lower + (energy - std::exp2(lower)) / std::exp2(lower), 1e-12);
  }
}

TEST(InterpolateColumnTable, StaysInsideATableWithRowsThatAreNotNumbers) {
  const std::vector<std::vector<double>> tables = {
      {1, kNan}, {1, 2, kNan}, {1, kNan, 3}, {kNan, 2, 3}, {1, kNan, kNan, 4}, {kNan}, {1, 3, kNan, 2, 4}};
  for (const auto& energies : tables) {
    for (std::uint32_t cursor = 0; cursor < 12; ++cursor) {
      for (double energy : {0.5, 1.0, 1.5, 2.0, 2.5, 3.5, 9.0}) {
        CColumnTable table = MakeTable(energies);
        table.cursor = cursor;
        At(table, energy);
        EXPECT_TRUE(table.cursor < table.count || table.cursor == cursor);
      }
    }
  }
}

TEST(IsEnergyInColumnTable, IncludesBothEnds) {
  const CColumnTable table = MakeTable({700, 800});
  EXPECT_TRUE(IsEnergyInColumnTable(table, 700));
  EXPECT_TRUE(IsEnergyInColumnTable(table, 800));
  EXPECT_FALSE(IsEnergyInColumnTable(table, std::nextafter(700, 0)));
  EXPECT_FALSE(IsEnergyInColumnTable(table, std::nextafter(800, 900)));
  EXPECT_FALSE(IsEnergyInColumnTable(table, kNan));
  EXPECT_FALSE(IsEnergyInColumnTable(CColumnTable(1), 700));
}

TEST(SaveColumnTable, WritesTabsAndSixDigits) {
  const testing::ScratchFolder folder;
  CColumnTable table(2);
  CColumnRow row;
  row.energy = 778.123456789;
  row.values.Append(1.0 / 3);
  row.values.Append(-1.5e-7);
  table.Append(row);
  folder.Write("t", "what stood here before, and longer than what comes");
  EXPECT_TRUE(SaveColumnTable(table, folder.Path("t")));
  EXPECT_EQ(folder.Read("t"), "778.123\t0.333333\t-1.5e-07\n");
  EXPECT_FALSE(SaveColumnTable(table, folder.Path("no/such/folder")));
}

TEST(SortColumnTable, DescendingTableOfTenThousandRowsIsQuick) {
  std::vector<double> energies(10000);
  for (std::size_t i = 0; i < energies.size(); ++i) energies[i] = 10000.0 - static_cast<double>(i);
  CColumnTable table = MakeTable(energies);
  const auto start = std::chrono::steady_clock::now();
  SortColumnTable(table);
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(table.rows[0].energy, 1.0);
  EXPECT_LT(seconds.count(),
            1.0);  // neighbour exchanges need 5e7 swaps a pass pair; the benchmark has the figure
}

TEST(ColumnTable, AssignmentUsesRowsOfTheSameShapeAgain) {
  CColumnTable source(1), other(1);
  for (const double energy : {1.0, 2.0, 3.0}) {
    CColumnRow row;
    row.energy = energy;
    row.values.Append(10 * energy);
    source.Append(row);
  }
  source.cursor = 2;
  other = source;
  const CColumnRow* const rows = other.rows;
  const double* const first = other.rows[0].values.data;
  other.rows[1].values[0] = 5;
  other.rows[1].energy = 6;
  other.cursor = 1;
  other.columns = 4;
  other = source;
  EXPECT_EQ(other.rows, rows);
  EXPECT_EQ(other.rows[0].values.data, first);
  EXPECT_EQ(other.rows[1].values[0], 20);
  EXPECT_EQ(other.rows[1].energy, 2);
  EXPECT_EQ(other.cursor, 2u);
  EXPECT_EQ(other.columns, 1);

  source.rows[2].values.Append(31);  // a longer row, then fewer rows
  other = source;
  EXPECT_EQ(other.rows[2].values.size, 2);
  EXPECT_EQ(other.rows[2].values[1], 31);
  --source.count;
  other = source;
  EXPECT_EQ(other.count, 2u);
  EXPECT_EQ(other.capacity, 2);
}

TEST(ColumnTable, KnowsWhetherItAscends) {
  EXPECT_TRUE(IsColumnTableAscending(MakeTable({})));
  EXPECT_TRUE(IsColumnTableAscending(MakeTable({5})));
  EXPECT_TRUE(IsColumnTableAscending(MakeTable({1, 2, kInf})));
  EXPECT_FALSE(IsColumnTableAscending(MakeTable({kNan})));
  EXPECT_FALSE(IsColumnTableAscending(MakeTable({1, 2, 2, 3})));
  EXPECT_FALSE(IsColumnTableAscending(MakeTable({1, 3, 2})));
  EXPECT_FALSE(IsColumnTableAscending(MakeTable({1, kNan, 3})));
}

// From any cursor the search finds the rows that the search from the first row finds. The values are such
// that the two ways to the energy of a row round differently.
TEST(ColumnTable, ACursorMovedBelowWalksAsInANewTable) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> uniform(-1, 1);
  CColumnTable table = MakeTable({1, 2, 3, 4, 5, 6, 7, 8});
  for (CColumnRow& row : table) row.values[0] = uniform(random);
  int different = 0;
  for (double energy : {-1.0, 1.0, 1.5, 2.0, 3.0, 3.5, 4.0, 5.0, 6.0, 7.0, 7.5, 8.0, 9.0}) {
    for (std::uint32_t cursor = 0; cursor < 8; ++cursor) {
      CColumnTable fresh = table, moved = table, kept = table;
      kept.cursor = moved.cursor = cursor;
      MoveCursorBelow(moved, energy);
      EXPECT_LT(moved.cursor, moved.count);
      const double expected = At(fresh, energy);
      EXPECT_EQ(At(moved, energy), expected) << energy << " from " << cursor;
      different += At(kept, energy) != expected;
    }
  }
  EXPECT_GT(different, 0) << "the values could not show a difference";
}

TEST(ColumnTable, AnEmptyTableHasNoCursorToMove) {
  CColumnTable table(1);
  MoveCursorBelow(table, 5);
  EXPECT_EQ(table.cursor, 0u);
}

}  // namespace
}  // namespace tolvik
