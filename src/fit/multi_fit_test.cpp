// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/multi_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "fit/dataset_errors.h"
#include "support/film.h"

namespace tolvik {
namespace {

CState MakeMeasuredFilm() {
  CState state = testing::MakeFilm();
  testing::Measure(state, 40, 0, 1);
  testing::Vary(state, FitKind::kThickness, 1, 60, 5);
  testing::Vary(state, FitKind::kSigma, 1, 5, 1);
  return state;
}

TEST(MultiFit, MembersStandBehindTheBase) {
  const CState state = MakeMeasuredFilm();
  const CMultiFit fit(state);
  const auto* base = reinterpret_cast<const char*>(static_cast<const CChiSquareFit*>(&fit));
  EXPECT_EQ(reinterpret_cast<const char*>(&fit), base);
  EXPECT_EQ(reinterpret_cast<const char*>(&fit.state), base + sizeof(CChiSquareFit));
  EXPECT_EQ(reinterpret_cast<const char*>(&fit.solution), base + sizeof(CChiSquareFit) + sizeof(CState));
  EXPECT_EQ(sizeof(CMultiFit), sizeof(CChiSquareFit) + sizeof(CState) + sizeof(CSolution));
}

TEST(MultiFit, TakesItsSettingsFromTheState) {
  CState state = MakeMeasuredFilm();
  state.fittemp = 3;
  state.fitdtemp = -0.5;
  state.evo_random = 4711;
  state.datasets.Append(testing::MakeGrid(7));
  state.datasets.Append(testing::MakeGrid(5));
  state.datasets[1].datasetactive = 0;
  const std::uint32_t key = 4711;
  MTRand_int32 stream;
  stream.Seed(&key, 1);
  for (int i = 0; i < 2000; ++i) stream.Draw();
  const std::uint32_t expected = stream.Draw();
  CMultiFit fit(state);
  EXPECT_EQ(stream.Draw(), expected);
  EXPECT_EQ(fit.fittemp, 3);
  EXPECT_EQ(fit.fitdtemp, -0.5);
  ASSERT_EQ(fit.fitvariables.size, 2);
  EXPECT_EQ(fit.fitvariables[0].fit_value, 60);
  ASSERT_EQ(fit.residuals.size, 45);  // active datasets only
  for (const double r : fit.residuals) EXPECT_EQ(r, 0);
  EXPECT_EQ(fit.lasterror, 0);
}

TEST(MultiFit, WorksOnACopy) {
  CState state = MakeMeasuredFilm();
  state.fiterrorfunction = FitErrorFunction::kScaledLog;
  state.datasets[0].datasetmultiplicator = 5;
  CMultiFit fit(state);
  fit.fitvariables[0].fit_value = 70;
  fit.CalcError(fit.fitvariables);
  EXPECT_EQ(fit.state.layers[1].layer_d, 70);
  EXPECT_EQ(state.layers[1].layer_d, 60);
  EXPECT_NE(fit.state.datasets[0].datasetmultiplicator, 5);
  EXPECT_EQ(state.datasets[0].datasetmultiplicator, 5);
  EXPECT_EQ(fit.state.fitvariables[0].fit_value, 70);
}

TEST(MultiFit, TrueModelHasNoError) {
  const CState state = MakeMeasuredFilm();
  CMultiFit fit(state);
  EXPECT_EQ(fit.CalcError(fit.fitvariables), 0);
  fit.fitvariables[0].fit_value = 61;
  EXPECT_GT(fit.CalcError(fit.fitvariables), 1e-5);
}

TEST(MultiFit, OwnVariablesOfTheStateAreTakenAsTheyAre) {
  const CState state = MakeMeasuredFilm();
  CMultiFit fit(state);
  fit.state.fitvariables[0].fit_value = 61;
  const double error = fit.CalcError(fit.state.fitvariables);
  EXPECT_GT(error, 1e-5);
  fit.fitvariables[0].fit_value = 61;
  EXPECT_EQ(fit.CalcError(fit.fitvariables), error);
}

TEST(MultiFit, EmptyListKeepsTheModel) {
  CState state = MakeMeasuredFilm();
  state.layers[1].layer_d = 70;
  CMultiFit fit(state);
  CArray<CFitVariable> nothing;
  const double error = fit.CalcError(nothing);
  EXPECT_GT(error, 1e-5);
  EXPECT_EQ(fit.state.layers[1].layer_d, 70);
  EXPECT_TRUE(fit.state.fitvariables.IsEmpty());
  fit.fitvariables[0].fit_value = 70;
  EXPECT_EQ(fit.CalcError(fit.fitvariables), error);
}

// Variables are applied before the loop over the datasets: they use the dataset index that the call before
// set.
TEST(MultiFit, ActiveIndexOfTheCallBeforeDecides) {
  CState state = testing::MakeFilm();
  testing::Measure(state, 10, 0, 1);
  testing::Measure(state, 10, 0, 1);
  state.activedatasetindex = 0;
  testing::Vary(state, FitKind::kQzMovement, -1, 1e-3, 1e-4);  // of the active dataset
  CMultiFit fit(state);
  fit.CalcError(fit.fitvariables);
  EXPECT_EQ(fit.state.datasets[0].datasetqztranslation, 1e-3);
  EXPECT_EQ(fit.state.datasets[1].datasetqztranslation, 0);
  EXPECT_EQ(fit.state.activedatasetindex, 1);
  fit.CalcError(fit.fitvariables);
  EXPECT_EQ(fit.state.datasets[1].datasetqztranslation, 1e-3);
}

TEST(MultiFit, FittedResolutionIsWrittenButNotUsed) {
  CState state = testing::MakeFilm();
  testing::Measure(state, 10, 0, 1);
  testing::Vary(state, FitKind::kResolution, -1, 0.05, 1e-4);
  CMultiFit fit(state);
  EXPECT_EQ(fit.CalcError(fit.fitvariables), 0);
  EXPECT_EQ(fit.state.resolution, 0);
}

TEST(MultiFit, FittedMultiplicatorScalesTheData) {
  CState state = testing::MakeFilm();
  testing::Measure(state, 10, 0, 1);
  testing::Vary(state, FitKind::kMultiplicator, -1, 10, 1);
  CMultiFit fit(state);
  EXPECT_NEAR(fit.CalcError(fit.fitvariables), 1, 1e-12);
}

TEST(MultiFit, FitsReachTheTensorAlgorithm) {
  CState state = MakeMeasuredFilm();
  state.algorithm = Algorithm::kMatrixOne;
  testing::Vary(state, FitKind::kDelta, 1, 2.25e-5, 1e-6);
  CMultiFit fit(state);
  const double before = fit.CalcError(fit.fitvariables);
  fit.fitvariables[2].fit_value = 3e-5;
  EXPECT_GT(std::abs(fit.CalcError(fit.fitvariables) - before), 1e-3);
}

class MultiFitPenalty : public ::testing::Test {
 protected:
  MultiFitPenalty() {
    state.fitasymmetry = 6;  // no curve: the penalties alone
    state.fitpenalty = 2;
  }
  void Add(std::int32_t id, std::int32_t row, double value) { testing::Vary(state, id, row, value, 1); }
  // The penalty at values, with parameters as the state has them.
  double At(std::initializer_list<double> values) {
    CMultiFit fit(state);
    fit.RestartFit();
    std::int32_t i = 0;
    for (const double value : values) fit.fitvariables[i++].fit_value = value;
    return fit.CalcError(fit.fitvariables);
  }
  CState state;
};

TEST_F(MultiFitPenalty, HoldsThePointNearTheParameters) {
  Add(0, 1, 1);
  Add(3, 1, 2);
  EXPECT_EQ(At({1, 2}), 0);
  EXPECT_DOUBLE_EQ(At({1.5, 5}), 2 * (0.25 + 9));
  EXPECT_DOUBLE_EQ(At({1.5, 1e-7}), 2 * 0.25);  // a value near 0 has no penalty
  state.fitpenalty = -1;
  EXPECT_DOUBLE_EQ(At({1.5, 5}), -(0.25 + 9));
  state.fitpenalty = 0;
  EXPECT_EQ(At({1.5, 5}), 0);
}

TEST_F(MultiFitPenalty, HoldsNeighbouringRowsTogether) {
  Add(17, 4, 1);
  Add(18, 5, 9);  // another kind: no neighbour
  Add(17, 5, 2);
  // Both moved by 1: distance only. Moved apart by 1.5: that squared over the difference of the values, plus
  // a floor.
  EXPECT_DOUBLE_EQ(At({2, 9, 3}), 2 * (1 + 1));
  EXPECT_DOUBLE_EQ(At({2, 9, 1.5}), 2 * (1 + 0.25) + 2 * 1.5 * 1.5 / (0.5 + 1e-5));
}

TEST_F(MultiFitPenalty, LastNeighbourCounts) {
  Add(17, 4, 1);
  Add(17, 5, 2);
  Add(17, 5, 4);
  const double distances = 2 * (1 + 0 + 0);
  EXPECT_DOUBLE_EQ(At({2, 2, 4}), distances + 2 * 1 / (2 + 1e-5));
}

TEST_F(MultiFitPenalty, NoVariablesOrOne) {
  EXPECT_EQ(At({}), 0);
  Add(17, 0, 1);
  EXPECT_DOUBLE_EQ(At({3}), 8);
}

TEST_F(MultiFitPenalty, ShortParameterVectorStaysInside) {
  Add(17, INT32_MAX, 1);
  Add(17, 5, 2);
  CMultiFit fit(state);  // without RestartFit there are no parameters
  EXPECT_EQ(fit.CalcError(fit.fitvariables), 0);
  fit.RestartFit();
  CArray<CFitVariable> nothing;
  EXPECT_EQ(fit.CalcError(nothing), 0);
  // A neighbour without a parameter does not count.
  CArray<CFitVariable> longer = fit.fitvariables;
  longer.Append(longer[1]);
  longer[0].fit_value = 3;
  longer[0].fit_additional_id = 5;
  longer[1].fit_additional_id = 9;
  longer[2].fit_additional_id = 6;
  EXPECT_DOUBLE_EQ(fit.CalcError(longer), 8);
}

TEST(MultiFit, AlgorithmSelectsTheStep) {
  CState state = MakeMeasuredFilm();
  for (const std::int32_t algorithm : {-1, 0, 1, 2, 3, 5}) {
    state.fitalgorithm = algorithm;
    state.fitvariables[0].fit_value = 61;
    CMultiFit fit(state);
    fit.RestartFit();
    const std::uint32_t key = state.evo_random;
    fit.Iterate();
    const std::uint32_t next = fit.integergenerator.Draw();
    MTRand_int32 stream;
    stream.Seed(&key, 1);
    for (int i = 0; i < 2000; ++i) stream.Draw();
    const bool drew = stream.Draw() != next;
    EXPECT_EQ(drew, algorithm == 2) << algorithm;
    EXPECT_EQ(fit.restart, algorithm != 0 && algorithm != 2) << algorithm;
    EXPECT_EQ(fit.fitvariables[0].fit_sigma > 0, algorithm == 1) << algorithm;
    EXPECT_EQ(fit.lasterror == 0, algorithm < 0 || algorithm > 2) << algorithm;
  }
}

TEST(MultiFit, RelativeErrorGivesLeastSquaresNothingToDo) {
  CState state = MakeMeasuredFilm();
  state.fiterrorfunction = FitErrorFunction::kRelativeLog;
  state.fitvariables[0].fit_value = 61;
  CMultiFit fit(state);
  fit.RestartFit();
  fit.LevenbergStep();
  EXPECT_EQ(fit.parameters[0], 61);
  EXPECT_GT(fit.lasterror, 0);
}

TEST(MultiFit, FitWithoutDatasetsOrVariablesIsHarmless) {
  for (std::int32_t algorithm = 0; algorithm < 3; ++algorithm) {
    CState state = testing::MakeFilm();
    state.fitalgorithm = algorithm;
    CMultiFit empty(state);
    empty.RestartFit();
    for (int i = 0; i < 3; ++i) empty.Iterate();
    EXPECT_EQ(empty.lasterror, 0);
    testing::Measure(state, 10, 0.1, 1);
    CMultiFit fixed(state);
    fixed.RestartFit();
    for (int i = 0; i < 3; ++i) fixed.Iterate();
    EXPECT_GT(fixed.lasterror, 0) << algorithm;
  }
}

TEST(MultiFit, SameStateGivesTheSameErrors) {
  for (std::int32_t algorithm = 0; algorithm < 3; ++algorithm) {
    CState state = MakeMeasuredFilm();
    state.fitalgorithm = algorithm;
    state.fittemp = 0.1;
    state.fitdtemp = -0.001;
    state.fitvariables[0].fit_value = 66;
    std::vector<double> errors[2];
    for (auto& run : errors) {
      CMultiFit fit(state);
      fit.RestartFit();
      for (int i = 0; i < 30; ++i) {
        fit.Iterate();
        run.push_back(fit.lasterror);
      }
    }
    EXPECT_EQ(errors[0], errors[1]) << algorithm;
  }
}

}  // namespace
}  // namespace tolvik
