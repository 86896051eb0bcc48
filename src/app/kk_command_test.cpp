// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/kk_command.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <sstream>

#include "support/child.h"
#include "support/scratch.h"

namespace tolvik {
namespace {

using namespace std::chrono_literals;
using testing::Child;
using testing::ScratchFolder;

// An edge at 850 eV on a falling background, energy, delta and beta; rows where the resampling keeps them.
std::string Table(double begin, double end, double step) {
  std::string text;
  for (double E = begin; E <= end; E += step) {
    const double x = (E - 850) / 6;
    const double beta = 600 / E / E * (1 + std::atan(x) / 3.2 + 2 / (1 + x * x));
    text += std::to_string(E) + " " + std::to_string(1200 / E / E) + " " + std::to_string(beta) + "\n";
  }
  return text;
}

void FitHere() {
  FitKramersKronigCommand("LSAT2.db");
}

TEST(FitKramersKronigCommand, ReportsAndSavesEachIteration) {
  const ScratchFolder folder;
  folder.Write("LSAT2.db", Table(600, 1200, 4));
  Child child(folder.Path("."), FitHere);
  const std::string err = child.ReadErr(6, 20s);
  child.Kill();
  EXPECT_TRUE(err.starts_with("number to fit: 100\nCalculate KK\nnumber to fit: 100\niteration=0: error="))
      << err;
  EXPECT_NE(err.find("\niteration=1: error="), std::string::npos) << err;
  EXPECT_EQ(child.ReadOut(1, 1s), "");

  // The rows of 788 and 912 eV are gone, 792 and 908 stay.
  std::istringstream lines(folder.Read("fitdb.txt"));
  double energy, delta, beta, first = 0, last = 0;
  int rows = 0;
  while (lines >> energy >> delta >> beta) {
    if (rows++ == 0) first = energy;
    last = energy;
    EXPECT_GE(beta, 0) << energy;  // the bounds of the fit
    EXPECT_LE(beta, 0.1) << energy;
  }
  EXPECT_EQ(first, 792);
  EXPECT_EQ(last, 908);
  EXPECT_EQ(rows, 104);
}

TEST(FitKramersKronigCommand, FitComesNearer) {
  const ScratchFolder folder;
  folder.Write("LSAT2.db", Table(600, 1200, 2));
  Child child(folder.Path("."), FitHere);
  const std::string err = child.ReadErr(5, 30s);
  const auto error_of = [&](const std::string& label) {
    return std::stod(err.substr(err.find(label) + label.size()));
  };
  EXPECT_LT(error_of("iteration=1: error="), error_of("iteration=0: error="));
}

TEST(FitKramersKronigCommand, NoiseIsTheSameInEveryRun) {
  const ScratchFolder folder;
  folder.Write("LSAT2.db", Table(600, 1200, 4));
  std::string first[2];
  for (std::string& err : first) err = Child(folder.Path("."), FitHere).ReadErr(4, 20s);
  EXPECT_EQ(first[0], first[1]);
}

TEST(FitKramersKronigCommand, ReadsRowsInAnyOrder) {
  const ScratchFolder sorted, turned;
  const std::string table = Table(600, 1200, 4);
  sorted.Write("LSAT2.db", table);
  std::string reversed;
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) reversed = line + "\n" + reversed;
  turned.Write("LSAT2.db", reversed);
  EXPECT_EQ(Child(sorted.Path("."), FitHere).ReadErr(4, 20s),
            Child(turned.Path("."), FitHere).ReadErr(4, 20s));
}

TEST(FitKramersKronigCommand, SurvivesTablesWithoutRowsOrWindow) {
  const std::string edge_rows = "800 1e-3 1e-3\n900 1e-3 1e-3\n";
  for (const std::string& table :
       {std::string("<none>"), std::string(), std::string("# nothing\n"), Table(100, 700, 10),
        Table(1000, 1500, 10), std::string("850 1e-3 1e-3\n"), edge_rows,
        std::string("nan nan nan\n850 nan 1\ninf 0 0\n"), std::string("text\nmore text\n")}) {
    const ScratchFolder folder;
    if (table != "<none>") folder.Write("LSAT2.db", table);
    Child child(folder.Path("."), FitHere);
    const std::string err = child.ReadErr(40, 10s);
    EXPECT_NE(err.find("iteration=2: error="), std::string::npos) << table << "\n" << err;
    EXPECT_TRUE(std::filesystem::exists(folder.Path("fitdb.txt")));
  }
}

TEST(FitKramersKronigCommand, NoWindowLeavesNoVariables) {
  const ScratchFolder folder;
  folder.Write("LSAT2.db", "500 1e-3 1e-3\n600 1e-3 1e-3\n795 1e-3 1e-3\n799 1e-3 1e-3\n905 1e-3 1e-3\n");
  const std::string err = Child(folder.Path("."), FitHere).ReadErr(4, 10s);
  // Linear interpolation across the window agrees with the grid, so there is no row in it.
  EXPECT_TRUE(err.starts_with("number to fit: 0\nCalculate KK\nnumber to fit: 0\niteration=0: error="))
      << err;
}

TEST(AddMultiplicativeNoise, ScalesBothColumnsOfARowAlike) {
  CColumnTable table(2);
  CColumnRow row;
  row.values.Append(1);
  row.values.Append(2);
  for (int i = 0; i < 20000; ++i) table.Append(row);
  AddMultiplicativeNoise(table);
  double smallest = 2, largest = 0, sum = 0;
  for (const CColumnRow& noisy : table) {
    EXPECT_EQ(noisy.values[1], 2 * noisy.values[0]);
    smallest = std::min(smallest, noisy.values[0]);
    largest = std::max(largest, noisy.values[0]);
    sum += noisy.values[0];
  }
  // Uniform in 0.8 to 1.2: the extremes of 20000 lie within 1e-3 of the ends, the mean within 5 deviations.
  EXPECT_GE(smallest, 0.8);
  EXPECT_LT(smallest, 0.801);
  EXPECT_LE(largest, 1.2 + 1e-12);
  EXPECT_GT(largest, 1.199);
  EXPECT_NEAR(sum / 20000, 1.0, 5 * 0.4 / std::sqrt(12.0 * 20000));
}

}  // namespace
}  // namespace tolvik
