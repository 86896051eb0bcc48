// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/fit_commands.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>
#include <cmath>
#include <sstream>
#include <stdexcept>

#include "fit/multi_fit.h"
#include "support/child.h"
#include "support/fit_project.h"
#include "support/scratch.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

using namespace std::chrono_literals;
using testing::Child;
using testing::FilmState;
using testing::ScratchFolder;
using testing::Vary;
using ::testing::internal::CaptureStderr;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStderr;
using ::testing::internal::GetCapturedStdout;

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

double ErrorOf(const std::string& line) {
  return std::stod(line.substr(line.find("error=") + 6));
}

TEST(FitCommand, PrintsTheSetupThenEachIteration) {
  const ScratchFolder folder;
  std::vector<CState> states = {FilmState()};
  Child child(folder.Path("."), [&] { FitCommand(states, {"film.state"}); });
  const auto lines = Lines(child.ReadOut(40, 30s));
  ASSERT_EQ(lines.size(), 40u);
  const std::string setup[] = {"size datasets = 2",
                               "activedatasetindex = 1",
                               "title[0] = Empty",
                               "title[1] = film",
                               "size fitvariables = 2",
                               "0: 0",
                               "1: 3"};
  for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(lines[i], setup[i]);
  EXPECT_TRUE(lines[7].starts_with("iteration=0: error=")) << lines[7];
  EXPECT_EQ(lines[8], " Saving state film.state.new");
  for (std::size_t i = 1; i <= 10; ++i)
    EXPECT_TRUE(lines[8 + i].starts_with("iteration=" + std::to_string(i) + ": error=")) << lines[8 + i];
  EXPECT_EQ(lines[19], " Saving state film.state.new");
  EXPECT_LT(ErrorOf(lines[39]), 0.1 * ErrorOf(lines[7]));
  EXPECT_EQ(child.ReadErr(1, 10ms), "");
}

TEST(FitCommand, SavesAllStatesAndChangesTheFirst) {
  const ScratchFolder folder;
  CState other = FilmState(5);
  other.layers[1].layer_d = 77;
  std::vector<CState> states = {FilmState(), other, other};
  Child child(folder.Path("."), [&] { FitCommand(states, {"a", "b", "c"}); });
  // Iteration 0, three names, ten iterations, three names, one iteration: the second save is complete.
  const auto lines = Lines(child.ReadOut(7 + 1 + 3 + 10 + 3 + 1, 30s));
  child.Kill();
  ASSERT_EQ(lines.size(), 25u);
  for (std::size_t at : {8u, 21u})
    for (std::size_t i = 0; i < 3; ++i)
      EXPECT_EQ(lines[at + i], std::string(" Saving state ") + "abc"[i] + ".new");
  CState saved;
  ASSERT_TRUE(LoadState(saved, folder.Path("a.new")));
  EXPECT_NE(saved.layers[1].layer_d, 120);
  EXPECT_EQ(saved.fitvariables.size, 2);
  EXPECT_EQ(folder.Read("b.new"), FormatState(other));
  EXPECT_EQ(folder.Read("c.new"), FormatState(other));
}

TEST(FitCommand, UnknownAlgorithmPrintsZeroForever) {
  const ScratchFolder folder;
  std::vector<CState> states = {FilmState()};
  states[0].fitalgorithm = 5;
  Child child(folder.Path("."), [&] { FitCommand(states, {"film"}); });
  const auto lines = Lines(child.ReadOut(20, 10s));
  ASSERT_EQ(lines.size(), 20u);
  EXPECT_EQ(lines[7], "iteration=0: error=0.000000e+00");
  EXPECT_EQ(lines[18], "iteration=10: error=0.000000e+00");
}

// The save blocks until someone opens the pipe, so lines read before were flushed.
TEST(FitCommand, FlushesEachLineAndWritesAPipeInPlace) {
  const ScratchFolder folder;
  ASSERT_EQ(mkfifo(folder.Path("film.new").c_str(), 0600), 0);
  std::vector<CState> states = {FilmState()};
  Child child(folder.Path("."), [&] { FitCommand(states, {"film"}); });
  const auto lines = Lines(child.ReadOut(9, 10s));
  ASSERT_EQ(lines.size(), 9u);
  EXPECT_EQ(lines[8], " Saving state film.new");
  EXPECT_EQ(child.ReadOut(1, 50ms), "");
  CState saved;
  EXPECT_TRUE(ReadState(saved, folder.Read("film.new"), ""));
  EXPECT_EQ(saved.fitvariables.size, 2);
  EXPECT_TRUE(std::filesystem::is_fifo(folder.Path("film.new")));
}

TEST(FitCommand, MissingTablesEndTheProcess) {
  const ScratchFolder folder;
  std::vector<CState> states = {FilmState()};
  states[0].ocautomatic = 1;
  Child child(folder.Path("."), [&] { FitCommand(states, {"film"}); });
  EXPECT_EQ(child.ReadErr(1, 10s), "Error: You need .db-files and/or .e-files for all layers\n");
  EXPECT_EQ(child.Wait(), 1);
}

TEST(TryFitStep, TellsAnException) {
  CaptureStdout();
  EXPECT_FALSE(TryFitStep([] { throw std::runtime_error("short of memory"); }));
  EXPECT_TRUE(TryFitStep([] {}));
  EXPECT_EQ(GetCapturedStdout(), "Error in Fit-routine\n");
}

std::string BruteForce(const CState& state) {
  CaptureStderr();
  BruteForceFitCommand(state);
  return GetCapturedStderr();
}

TEST(BruteForceFitCommand, ScansVariables0And1And3) {
  CState state = FilmState();
  state.fitvariables.Clear();
  state.fitvariables.Append(
      Vary(FitKind::kThickness, 1, 0, 1, 100, 140));                 // the film has 120, a point of the grid
  state.fitvariables.Append(Vary(FitKind::kSigma, 1, 0, 1, 0, 10));  // 5
  state.fitvariables.Append(Vary(FitKind::kSigma, 0, 3, 1, 0, 10));  // variable 2 keeps its 3
  state.fitvariables.Append(Vary(FitKind::kDelta, 1, 0, 1, 1.25e-5, 3.25e-5));
  const CState before = state;
  const auto lines = Lines(BruteForce(state));
  EXPECT_EQ(lines[0], "number of fit parameters = 4");
  EXPECT_EQ(lines[1], "current error 1.000000e+99");
  EXPECT_EQ(lines[2], "0");
  double last = 1e99;
  std::string step = "0";
  for (std::size_t i = 3; i < lines.size(); ++i) {
    if (!lines[i].starts_with("current error ")) {
      EXPECT_EQ(lines[i], std::to_string(std::stoi(step) + 1));
      step = lines[i];
      continue;
    }
    const double error = std::stod(lines[i].substr(14));
    EXPECT_LT(error, last);
    last = error;
    if (error < 1e-20) {
      EXPECT_EQ(step, "10");  // delta of the film is the middle of variable 3
    }
  }
  EXPECT_EQ(step, "20");
  EXPECT_LT(last, 1e-20);
  EXPECT_EQ(FormatState(state), FormatState(before));
}

TEST(BruteForceFitCommand, EqualBoundsImproveOnce) {
  CState state = FilmState(5);
  for (std::int32_t i = 0; i < 2; ++i) state.fitvariables.Append(Vary(FitKind::kSigma, 0, 3, 1));
  for (CFitVariable& variable : state.fitvariables)
    variable.fit_lower_boundary = variable.fit_upper_boundary = variable.fit_value;
  const auto lines = Lines(BruteForce(state));
  ASSERT_EQ(lines.size(), 2u + 21 + 1);
  EXPECT_TRUE(lines[3].starts_with("current error ")) << lines[3];
}

TEST(BruteForceFitCommand, LeavesOutVariablesThatAreNotThere) {
  for (std::int32_t count : {0, 1, 2, 3}) {
    CState state = FilmState(3);
    state.fitvariables.Clear();
    for (std::int32_t i = 0; i < count; ++i)
      state.fitvariables.Append(Vary(FitKind::kThickness, 1, 120, 1, 100, 140));
    const auto lines = Lines(BruteForce(state));
    EXPECT_EQ(lines[0], "number of fit parameters = " + std::to_string(count));
    EXPECT_EQ(lines.back(), "20");
  }
}

TEST(BruteForceFitCommand, NaNImprovesNothing) {
  CState state = FilmState(3);
  state.fitvariables[0].fit_lower_boundary = state.fitvariables[0].fit_upper_boundary = std::nan("");
  state.datasets[1].datasettranslator = std::nan("");
  state.fitasymmetry = FitAsymmetry::kReflectivity;
  const auto lines = Lines(BruteForce(state));
  EXPECT_EQ(lines[1], "current error 1.000000e+99");
  EXPECT_EQ(lines.back(), "20");
}

TEST(RunFitSteps, FitsTheStateItself) {
  CState state = FilmState();
  EXPECT_TRUE(RunFitSteps(state));
  EXPECT_NEAR(state.layers[1].layer_d, testing::kFilmThickness, 0.05);
  EXPECT_NEAR(state.layers[1].layer_sigma, testing::kFilmRoughness, 0.05);
  EXPECT_EQ(state.fitvariables[0].fit_value, state.layers[1].layer_d);
  EXPECT_EQ(state.fitvariables[0].fit_sigma, 0);  // the simplex has none
}

TEST(RunFitSteps, CopiesTheDeviationsOfLevenbergMarquardt) {
  CState state = FilmState(8);
  for (std::int32_t i = 0; i < state.datasets[1].dataset_R0.size; ++i)
    state.datasets[1].dataset_R0[i] *= i % 2 == 0 ? 1.02 : 0.98;
  state.fitalgorithm = FitAlgorithm::kLevenbergMarquardt;
  CaptureStderr();  // levmar may print messages
  EXPECT_TRUE(RunFitSteps(state));
  GetCapturedStderr();
  EXPECT_GT(state.fitvariables[0].fit_sigma, 0);
  EXPECT_LT(state.fitvariables[0].fit_sigma, 10);
}

TEST(RunFitSteps, RunsTheScriptOnceAtTheEnd) {
  CState state = FilmState(3);
  state.disablescript = 0;
  state.fitalgorithm = 5;  // no evaluation, so nothing else runs the script
  state.scriptparameters.Append(0);
  state.scriptlines.Append(" par[0] = par[0] + 1");
  EXPECT_TRUE(RunFitSteps(state));
  EXPECT_EQ(state.scriptparameters[0], 1);
  state.disablescript = 1;
  EXPECT_TRUE(RunFitSteps(state));
  EXPECT_EQ(state.scriptparameters[0], 1);
}

}  // namespace
}  // namespace tolvik
