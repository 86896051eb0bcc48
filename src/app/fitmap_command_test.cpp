// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <sstream>

#include "app/fitmap_command.h"
#include "optics/rays.h"
#include "support/child.h"
#include "support/fit_project.h"
#include "support/scratch.h"

namespace tolvik {
namespace {

using testing::FilmState;
using testing::ScratchFolder;
using testing::Vary;
using ::testing::internal::CaptureStderr;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStderr;
using ::testing::internal::GetCapturedStdout;

constexpr double kLow = 7900, kHigh = 8100;  // eV; the ends of the tables

// Tables of the film's three layers, constant but for delta of the film, which is 2e-5 and 3e-5 at the ends.
void WriteTables(const ScratchFolder& folder) {
  folder.Write("si.db", "7900 7.58e-6 1.77e-7\n8100 7.58e-6 1.77e-7\n");
  folder.Write("film.db", "7900 2e-5 2.9e-6\n8100 3e-5 2.9e-6\n");
  folder.Write("vac.db", "7900 0 0\n8100 0 0\n");
}

CState StateWithTables() {
  CState state = FilmState(3);
  const char* const stems[] = {"si", "film", "vac"};
  for (std::int32_t i = 0; i < 3; ++i) state.layers[i].layer_db.Set(stems[i]);
  return state;
}

// A curve of the map: the film of 120 Å with the constants of the tables at that energy.
CDataset Measure(double energy, char letter = 's') {
  CState truth = FilmState(3);
  truth.lambda = 12398.326 / energy;
  truth.layers[1].layer_delta = 2e-5 + 1e-5 * (energy - kLow) / (kHigh - kLow);
  CDataset curve = testing::MakeGrid(0.02, 0.3, 30);
  SetRayFromLetter(FirstRay(curve), letter);
  SetRayFromLetter(SecondRay(curve), letter);
  std::copy_n(FirstRay(curve).begin(), 4, FirstRay(truth).begin());
  std::copy_n(SecondRay(curve).begin(), 4, SecondRay(truth).begin());
  CalcReflectivityDLL(&curve, &truth);
  curve.dataset_Rp.Clear();
  curve.datasetenergy = energy;
  return curve;
}

struct Printed {
  std::string out, err;
};
// Runs the command in the folder of the tables.
Printed FitMap(const ScratchFolder& folder, CMapFile& map) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path("."));
  CaptureStderr();
  CaptureStdout();
  FitMapCommand(map);
  const std::string out = GetCapturedStdout();
  std::filesystem::current_path(before);
  return {out, GetCapturedStderr()};
}

std::vector<double> Columns(const std::string& line) {
  std::vector<double> columns;
  std::istringstream in(line);
  for (std::string word; in >> word;) columns.push_back(std::stod(word));
  return columns;
}

TEST(FitMapCommand, FitsOneCurve) {
  const ScratchFolder folder;
  WriteTables(folder);
  CState state = StateWithTables();
  CMapFile map(state);
  map.constenergy.Append(Measure(8000));
  const Printed printed = FitMap(folder, map);
  EXPECT_EQ(printed.err, "save state\nFit thickness 1\nFit sigma 1\nFit e=8000.000000 p=sigma\n");
  EXPECT_EQ(std::count(printed.out.begin(), printed.out.end(), '\n'), 1);
  const auto columns = Columns(printed.out);
  ASSERT_EQ(columns.size(), 16u) << printed.out;
  EXPECT_EQ(columns[0], 8000);
  EXPECT_EQ(columns[1], 1);
  EXPECT_NEAR(columns[2], 120, 0.05);  // thickness of layer 1
  EXPECT_EQ(columns[3], 3);            // roughness of layers 0 to 2
  EXPECT_NEAR(columns[4], 5, 0.05);
  EXPECT_EQ(columns[5], 0);
  EXPECT_NEAR(columns[6], 7.58e-6, 1e-11);  // delta and beta of layers 0 to 2, from the tables
  EXPECT_NEAR(columns[7], 1.77e-7, 1e-12);
  EXPECT_NEAR(columns[8], 2.5e-5, 1e-10);
  EXPECT_NEAR(columns[9], 2.9e-6, 1e-11);
  EXPECT_EQ(columns[10], 0);
  EXPECT_EQ(columns[11], 0);
  EXPECT_LT(columns[12], 1e-4);  // error
  EXPECT_EQ(columns[13], 30);    // points
  EXPECT_EQ(columns[14], 0);     // a simplex gives no deviations
  EXPECT_EQ(columns[15], 0);

  ASSERT_EQ(map.fitdatasets.size, 1);
  EXPECT_EQ(map.fitdatasets[0].datasetenergy, 8000);
  EXPECT_EQ(map.fitdatasets[0].dataset_R0.size, 30);
  ASSERT_EQ(map.constenergy.size, 2);  // the measured curve, then the calculated one
  EXPECT_EQ(map.constenergy[0].datasetactive, 0);
  EXPECT_NEAR(map.constenergy[1].dataset_R0[5] / map.constenergy[0].dataset_R0[5], 1, 0.05);
  EXPECT_TRUE(std::filesystem::exists(folder.Path("test.all")));
}

TEST(FitMapCommand, BeginsEachCurveWithTheSameVariablesButTheOpticalConstants) {
  const ScratchFolder folder;
  WriteTables(folder);
  CState state = StateWithTables();
  state.fitvariables.Clear();
  state.fitvariables.Append(Vary(FitKind::kThickness, 1, 133, 3));
  state.fitvariables.Append(Vary(FitKind::kDelta, 1, 99, 3));  // delta: refreshed from the table
  state.fitalgorithm = 5;                                      // leaves the start values
  CMapFile map(state);
  map.constenergy.Append(Measure(kLow));
  map.constenergy.Append(Measure(kHigh, 'l'));
  const Printed printed = FitMap(folder, map);
  EXPECT_EQ(printed.err,
            "save state\nFit thickness 1\nFit delta 1\nFit e=7900.000000 p=sigma\nFit e=8100.000000 p=left "
            "circular\n");
  std::istringstream lines(printed.out);
  std::string low, high;
  std::getline(lines, low);
  std::getline(lines, high);
  EXPECT_EQ(Columns(low)[2], 133);
  EXPECT_EQ(Columns(high)[2], 133);
  EXPECT_NEAR(Columns(low)[8], 2e-5, 1e-10);
  EXPECT_NEAR(Columns(high)[8], 3e-5, 1e-10);
  // The state stays set up for the last curve.
  EXPECT_EQ(state.datasets.size, 1);
  EXPECT_EQ(state.activedatasetindex, 0);
  EXPECT_EQ(state.ray1sigmare, map.constenergy[1].datasetray1sigmare);
  EXPECT_NEAR(state.lambda, 12398.326 / kHigh, 1e-12);
}

TEST(FitMapCommand, NamesTheVariables) {
  const ScratchFolder folder;
  WriteTables(folder);
  CState state = StateWithTables();
  state.fitvariables.Clear();
  for (std::int32_t id : {0, 1, 2, 3, 7, 4, 13, 99, -1}) state.fitvariables.Append(Vary(id, 2, 1, 1));
  CMapFile map(state);
  EXPECT_EQ(
      FitMap(folder, map).err,
      "save state\nFit thickness 2\nFit delta 2\nFit beta 2\nFit sigma 2\nFit measurement multiplicator 2\n"
      "Fit 4 2\nFit 13 2\nFit 99 2\nFit -1 2\n");
}

TEST(FitMapCommand, NeedsTheTables) {
  const ScratchFolder folder;
  CState state = StateWithTables();
  CMapFile map(state);
  map.constenergy.Append(Measure(8000));
  const Printed printed = FitMap(folder, map);
  EXPECT_EQ(printed.err, "You need .db-files or .e-files for all layers\n");
  EXPECT_EQ(printed.out, "");
  EXPECT_FALSE(std::filesystem::exists(folder.Path("test.all")));
  EXPECT_EQ(map.constenergy.size, 1);
}

TEST(FitMapCommand, TellsAnEnergyOutsideTheTables) {
  const ScratchFolder folder;
  WriteTables(folder);
  CState state = StateWithTables();
  state.fitalgorithm = 5;
  CMapFile map(state);
  map.constenergy.Append(Measure(8100.5));
  EXPECT_EQ(FitMap(folder, map).err,
            "save state\nFit thickness 1\nFit sigma 1\nError: Check if you chose the right energy!\n"
            "Fit e=8100.500000 p=sigma\n");
}

TEST(FitMapCommand, MissingMagneticTablesEndTheProcess) {
  const ScratchFolder folder;
  WriteTables(folder);
  CState state = StateWithTables();
  state.magnetizationmode = MagnetizationMode::kLayers;
  CMapFile map(state);
  map.constenergy.Append(Measure(8000));
  testing::Child child(folder.Path("."), [&] { FitMapCommand(map); });
  const std::string err = child.ReadErr(4, std::chrono::seconds(10));
  EXPECT_TRUE(err.ends_with("\nError: You need .m-files and/or .e files for all layers\n")) << err;
  EXPECT_EQ(child.Wait(), 1);
}

TEST(FitMapCommand, PrintsNaNForWhatASmallStateDoesNotHave) {
  const ScratchFolder folder;
  WriteTables(folder);
  CState state = StateWithTables();
  state.layers.Clear();
  CLayer substrate;
  substrate.layer_db.Set("si");
  substrate.layer_sigma = 3;
  state.layers.Append(substrate);
  state.fitvariables.Clear();
  state.fitvariables.Append(Vary(FitKind::kSigma, 0, 3, 1));
  state.fitalgorithm = 5;
  CMapFile map(state);
  map.constenergy.Append(Measure(8000));
  const auto columns = Columns(FitMap(folder, map).out);
  ASSERT_EQ(columns.size(), 16u);
  EXPECT_EQ(columns[3], 3);
  EXPECT_NEAR(columns[6], 7.58e-6, 1e-11);
  for (std::size_t i : {2u, 4u, 5u, 8u, 9u, 10u, 11u, 15u}) EXPECT_TRUE(std::isnan(columns[i])) << i;
  EXPECT_EQ(columns[14], 0);
}

TEST(FitMapCommand, TakesTheFittedMultiplicator) {
  const ScratchFolder folder;
  WriteTables(folder);
  CState state = StateWithTables();
  state.fitvariables.Append(Vary(FitKind::kMultiplicator, -1, 1, 0.1));  // the scale of the measurement
  CMapFile map(state);
  CDataset curve = Measure(8000);
  for (double& r : curve.dataset_R0) r /= 2;
  map.constenergy.Append(curve);
  const auto columns = Columns(FitMap(folder, map).out);
  EXPECT_NEAR(columns[1], 2, 0.02);
  EXPECT_NEAR(map.constenergy[0].datasetmultiplicator, 2, 0.02);
  EXPECT_EQ(map.constenergy[1].datasetmultiplicator, 1.0);
}

}  // namespace
}  // namespace tolvik
