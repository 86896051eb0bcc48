// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/scan_commands.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <new>
#include <stdexcept>

#include "model/status.h"
#include "support/scratch.h"

namespace tolvik {
namespace {

CMapRange MakeRange(double min1, double max1, std::int32_t n1, double min2, double max2, std::int32_t n2) {
  CMapRange range;
  range.min1 = min1;
  range.max1 = max1;
  range.n1 = n1;
  range.min2 = min2;
  range.max2 = max2;
  range.n2 = n2;
  return range;
}

// A substrate under vacuum, both with tables: from 600 to 800 eV and from 650 to 900 eV.
class ScanCommands : public ::testing::Test {
 protected:
  ScanCommands() {
    folder_.Write("film.db", "600 0.002 0.0005\n800 0.001 0.0004\n");
    folder_.Write("air.db", "650 0 0\n900 0 0\n");
    state_.layers[0].layer_db.Set(folder_.Path("film"));
    state_.layers[1].layer_db.Set(folder_.Path("air"));
    state_.engscanqz = 0.05;
    state_.engscanmin = 0;
    state_.engscanmax = 10000;
    state_.numberofpoints = 4;
  }

  // The output of a command on both streams.
  template <class Command>
  void Run(Command command) {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    command();
    std::fflush(stdout);
    output_ = ::testing::internal::GetCapturedStdout();
    errors_ = ::testing::internal::GetCapturedStderr();
  }

  const testing::ScratchFolder folder_;
  CState state_;
  std::string output_, errors_;
};

TEST(BuildMapGrid, EnergyRunsFastest) {
  CSolution solution;
  BuildMapGrid(MakeRange(600, 800, 3, 0.1, 0.2, 2), solution);
  ASSERT_EQ(solution.dataset_eng.size, 6);
  const double energies[] = {600, 700, 800, 600, 700, 800}, qz[] = {0.1, 0.1, 0.1, 0.2, 0.2, 0.2};
  for (int k = 0; k < 6; ++k) {
    EXPECT_EQ(solution.dataset_eng[k], energies[k]);
    EXPECT_EQ(solution.dataset_qz[k], qz[k]);
    EXPECT_EQ(solution.dataset_R0[k], k == 0 ? 0 : 1);
  }
}

TEST(BuildMapGrid, AnAxisOfOnePointDividesByZero) {
  CSolution solution;
  BuildMapGrid(MakeRange(600, 800, 1, 0.1, 0.2, 2), solution);
  ASSERT_EQ(solution.dataset_eng.size, 2);
  EXPECT_TRUE(std::isnan(solution.dataset_eng[0]));
  EXPECT_EQ(solution.dataset_qz[1], 0.2);
}

TEST(BuildMapGrid, ImpossibleNumbersOfPointsAreRefused) {
  CSolution solution;
  EXPECT_THROW(BuildMapGrid(MakeRange(1, 2, 2000000000, 1, 2, 2000000000), solution), std::length_error);
  EXPECT_THROW(BuildMapGrid(MakeRange(1, 2, INT32_MIN, 1, 2, INT32_MIN), solution), std::length_error);
  for (auto [n1, n2] : {std::pair{0, 5}, {-1, 5}, {5, -1}, {0, 0}}) {
    BuildMapGrid(MakeRange(1, 2, n1, 1, 2, n2), solution);
    EXPECT_EQ(solution.dataset_qz.size + solution.dataset_R0.size, 0);
  }
  BuildMapGrid(MakeRange(1, 2, -2, 1, 2, -3), solution);  // six points, none of them set
  ASSERT_EQ(solution.dataset_eng.size, 6);
  EXPECT_EQ(solution.dataset_eng[5], 0);
}

TEST(BuildScanGrid, HasOnePointMoreThanSteps) {
  CState state;
  state.numberofpoints = 4;
  state.engscanqz = 0.25;
  CSolution solution;
  BuildScanGrid(state, 700, 704, solution);
  ASSERT_EQ(solution.dataset_eng.size, 5);
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(solution.dataset_eng[i], 700 + i);
    EXPECT_EQ(solution.dataset_qz[i], 0.25);
  }
}

TEST(BuildScanGrid, AlwaysEnds) {
  CState state;
  const double nan = std::nan("");
  for (std::int32_t count : {0, -5, 1000000}) {
    state.numberofpoints = count;
    for (auto [start, end] : {std::pair{700.0, 700.0}, {700.0, std::nextafter(700.0, 800.0)}}) {
      CSolution solution;
      BuildScanGrid(state, start, end, solution);
      EXPECT_EQ(solution.dataset_eng.size, 1);
    }
    for (auto [start, end] : {std::pair{701.0, 700.0}, {nan, 700.0}, {700.0, nan}}) {
      CSolution solution;
      BuildScanGrid(state, start, end, solution);
      EXPECT_EQ(solution.dataset_eng.size, 0);
    }
  }
  state.numberofpoints = INT32_MAX;
  CSolution solution;
  EXPECT_THROW(BuildScanGrid(state, 700, 800, solution), std::exception);
}

TEST_F(ScanCommands, MapIsNarrowedToTheTablesWithoutAWord) {
  CMapRange range = MakeRange(0, 10000, 3, 0.1, 0.2, 2);
  Run([&] { CalcMapCommand(state_, range); });
  EXPECT_EQ(errors_, "");
  EXPECT_EQ(range.min1, 650);
  EXPECT_EQ(range.max1, 800);
  double energy = 0, qz = 0, reflectivity = 0;
  ASSERT_EQ(std::sscanf(output_.c_str(), "%lf %lf %lf", &energy, &qz, &reflectivity), 3);
  EXPECT_EQ(energy, 650);
  EXPECT_EQ(qz, 0.1);
  EXPECT_GT(reflectivity, 0);
  EXPECT_LT(reflectivity, 1);
  // two blocks of three lines, each followed by an empty line
  EXPECT_EQ(std::count(output_.begin(), output_.end(), '\n'), 8);
  EXPECT_EQ(output_.substr(output_.size() - 2), "\n\n");
}

TEST_F(ScanCommands, MapWithoutTablesGivesItsOwnCode) {
  state_.layers[1].layer_db.Set(folder_.Path("gone"));
  CMapRange range = MakeRange(650, 800, 3, 0.1, 0.2, 2);
  CSolution solution;
  Run([&] { EXPECT_EQ(CalcMap(state_, range, solution), ReturnCode::kTablesMissing); });
  EXPECT_EQ(errors_, "You need db-files for all layers");
  Run([&] { CalcMapCommand(state_, range); });
  EXPECT_EQ(output_, "#error\n");
  EXPECT_EQ(errors_, "You need db-files for all layers");
}

TEST_F(ScanCommands, EnergyScanPrintsNothing) {
  Run([&] { CalcEnergyScanCommand(state_); });
  EXPECT_EQ(output_ + errors_, "");
}

TEST_F(ScanCommands, EnergyScanLoadsItsTablesAfresh) {
  Run([&] { CalcEnergyScanCommand(state_); });
  ASSERT_EQ(state_.opticaltables.size, 2);
  folder_.Write("film.db", "500 1 2\n");
  Run([&] { CalcEnergyScanCommand(state_); });
  EXPECT_EQ(state_.opticaltables[0].db.rows[0].energy, 500);
}

TEST_F(ScanCommands, EnergyScanTellsWhatIsMissing) {
  state_.magnetizationmode = MagnetizationMode::kLayers;
  Run([&] { CalcEnergyScanCommand(state_); });
  EXPECT_EQ(output_, "You need .m-files or .e files for all layers\n");
  state_.layers[1].layer_db.Set(folder_.Path("gone"));
  Run([&] { CalcEnergyScanCommand(state_); });
  EXPECT_EQ(output_, "You need .db-files or .e-files for all layers\n");
  EXPECT_EQ(errors_, "");
}

TEST_F(ScanCommands, MeasuredEnergyScanNeedsEnergies) {
  state_.usemeasurementqz = true;
  CDataset dataset;
  dataset.dataset_qz.Assign(3, 0.05);
  state_.datasets.Append(dataset);
  Run([&] { CalcEnergyScanCommand(state_); });
  EXPECT_EQ(output_,
            "Error: No energy values loaded. Either load dataset with energy values or use no dataset.\n");
  state_.datasets[0].dataset_eng.Assign(3, 700);
  Run([&] { CalcEnergyScanCommand(state_); });
  EXPECT_EQ(output_, "");
}

}  // namespace
}  // namespace tolvik
