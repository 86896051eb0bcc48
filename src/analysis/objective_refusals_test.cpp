// SPDX-License-Identifier: GPL-2.0-or-later
// Mistakes of users, and their refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "support/measured_film.h"
#include "tolvik/analysis/errors.h"
#include "tolvik/analysis/objective.h"

namespace tolvik::analysis {
namespace {

using testing::MakeFreeFilm;
using testing::MakeMeasurement;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The message of the refusal of type T; empty when there is none.
template <class T, class Call>
std::string RefusalOf(Call call) {
  try {
    call();
  } catch (const T& error) {
    return error.what();
  }
  return "";
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(ObjectiveRefusals, PointsThatCannotBeUsedAreLeftOutAndCounted) {
  const CState state = MakeFreeFilm();
  Measurement measurement = MakeMeasurement(state, 20, 0.02);
  const double k0 = 2 * std::numbers::pi / state.lambda;
  measurement.R[1] = 0;
  measurement.dR[2] = 0;
  measurement.R[3] = kNaN;
  measurement.q[4] = kNaN;
  measurement.dR[5] = kNaN;
  measurement.q[19] = 2 * k0;
  measurement.masked.assign(20, 0);
  measurement.masked[6] = 1;
  Objective objective(state, {measurement});
  const PointCount& count = objective.points_of(0);
  EXPECT_EQ(count.zero_value, 1);
  EXPECT_EQ(count.zero_error, 1);
  EXPECT_EQ(count.not_finite, 3);
  EXPECT_EQ(count.out_of_reach, 1);
  EXPECT_EQ(count.masked, 1);
  EXPECT_EQ(count.used, 13);
  ASSERT_EQ(objective.warnings().size(), 1u);
  EXPECT_TRUE(Contains(objective.warnings()[0], "data 0: 13 of 20 points used (1 masked, 3 with a value"));
  for (const double r : objective.ResidualsAt(objective.Start())) EXPECT_NEAR(r, 0, 1e-9);
  EXPECT_EQ(objective.ModelAt(objective.Start(), 0).points.front(), 0);
  EXPECT_EQ(objective.ModelAt(objective.Start(), 0).points[1], 7);
}

TEST(ObjectiveRefusals, TheWindowOfTheStateLeavesPointsOut) {
  CState state = MakeFreeFilm();
  state.fitqzmin = 0.05;
  state.fitqzmax = 0.2;
  const Measurement measurement = MakeMeasurement(state, 29, 0.02);  // a step of 0.01 Å⁻¹
  Objective objective(state, {measurement});
  EXPECT_NEAR(objective.points_of(0).used, 16, 1);
  EXPECT_EQ(objective.points_of(0).used + objective.points_of(0).outside_window, 29);
}

TEST(ObjectiveRefusals, NoPointLeft) {
  const CState state = MakeFreeFilm();
  Measurement measurement = MakeMeasurement(state, 5, 0.02);
  measurement.dR.assign(5, 0.0);
  const std::string text = RefusalOf<DataError>([&] { Objective(state, {measurement}); });
  EXPECT_TRUE(Contains(text, "0 of 5 points used (5 with dR = 0")) << text;
  EXPECT_TRUE(Contains(RefusalOf<DataError>([&] { Objective(state, {}); }), "no measurement"));
}

TEST(ObjectiveRefusals, ColumnsOfUnequalLengths) {
  const CState state = MakeFreeFilm();
  Measurement measurement = MakeMeasurement(state, 5, 0.02);
  measurement.dR.pop_back();
  EXPECT_TRUE(Contains(RefusalOf<DataError>([&] { Objective(state, {measurement}); }),
                       "dR has 4 values and q has 5"));
  measurement.dR.clear();
  EXPECT_TRUE(Contains(RefusalOf<DataError>([&] { Objective(state, {measurement}); }), "no error bars"));
  EXPECT_NO_THROW(Objective(state, {measurement}, {.weights = Weights::kLog}));
  EXPECT_TRUE(Contains(RefusalOf<DataError>([&] {
                         Objective(state, {measurement},
                                   {.weights = Weights::kLog, .resolution = Resolution::kPoints});
                       }),
                       "it has no dq"));
}

TEST(ObjectiveRefusals, AStartOutsideOfTheBoundsMovesToTheNearest) {
  CState state = MakeFreeFilm();
  state.fitvariables[0].fit_value = 120;
  Objective objective(state, {MakeMeasurement(state, 20, 0.02)});
  EXPECT_EQ(objective.Start()[0], 90);
  ASSERT_EQ(objective.warnings().size(), 1u);
  EXPECT_EQ(objective.warnings()[0],
            "layer 1 thickness: the start 120 lies outside of its bounds and was moved to 90");
}

TEST(ObjectiveRefusals, CrossedBounds) {
  CState state = MakeFreeFilm();
  state.fitvariables[1].fit_lower_boundary = 30;
  const std::string text =
      RefusalOf<DataError>([&] { Objective(state, {MakeMeasurement(MakeFreeFilm(), 20, 0.02)}); });
  EXPECT_EQ(text, "layer 1 roughness: its bounds are crossed (30 to 20); swap them");
}

TEST(ObjectiveRefusals, AScriptThatDoesNotCompileOrRaises) {
  CState state = MakeFreeFilm();
  state.disablescript = 0;
  const Measurement measurement = MakeMeasurement(state, 20, 0.02);
  state.scriptlines.Append("thickness[1] = 50");
  state.scriptlines.Append("thickness[1 = 50");
  std::string text = RefusalOf<ScriptError>([&] { Objective(state, {measurement}); });
  EXPECT_TRUE(Contains(text, "the script does not compile: line 2")) << text;
  state.scriptlines[1] = "error('no such alloy')";
  text = RefusalOf<ScriptError>([&] { Objective(state, {measurement}); });
  EXPECT_EQ(text, "the script stopped: line 2: no such alloy");
}

TEST(ObjectiveRefusals, AScriptThatRaisesElsewhereHasNoLikelihoodThere) {
  CState state = MakeFreeFilm();
  state.disablescript = 0;
  const Measurement measurement = MakeMeasurement(state, 20, 0.02);
  state.scriptlines.Append("if thickness[1] > 70 then error('too thick') end");
  Objective objective(state, {measurement});
  const std::vector<double> x = {60, 5, 1.2e-5, 80, 5, 1.2e-5};
  std::vector<RowValues> values;
  const Matrix residuals = objective.Residuals(x, &values);
  EXPECT_EQ(values[0].code, ReturnCode::kSuccess);
  EXPECT_EQ(values[1].code, ReturnCode::kScriptExecution);
  EXPECT_EQ(values[1].fault, "the script stopped: line 1: too thick");
  EXPECT_EQ(values[1].chi_square, INFINITY);
  EXPECT_EQ(values[1].log_posterior(), -INFINITY);
  EXPECT_TRUE(std::isfinite(residuals(0, 0)));
  EXPECT_TRUE(std::isnan(residuals(1, 0)));
  EXPECT_THROW(objective.ResidualsAt(std::span(x).subspan(3)), ScriptError);
  EXPECT_NEAR(objective.Evaluate(std::span(x).first(3))[0].chi_square, 0, 1e-9) << "nothing is left of it";
}

TEST(ObjectiveRefusals, MissingTablesAreNamed) {
  CState state = MakeFreeFilm();
  const Measurement measurement = MakeMeasurement(state, 20, 0.02);
  state.ocautomatic = 1;
  for (CLayer& layer : state.layers) layer.layer_db = "no such folder/Unobtainium";
  try {
    Objective objective(state, {measurement});
    FAIL();
  } catch (const TablesError& error) {
    EXPECT_EQ(error.files, std::vector<std::string>{"no such folder/Unobtainium.db"});
    EXPECT_TRUE(Contains(error.what(), "no such folder/Unobtainium.db")) << error.what();
  }
}

TEST(ObjectiveRefusals, AnOffsetThatMovesAPointOutOfReach) {
  CState state = MakeFreeFilm();
  const double k0 = 2 * std::numbers::pi / state.lambda;
  Measurement measurement = MakeMeasurement(state, 20, 0.02);
  measurement.q[19] = 1.9999 * k0;
  measurement.R[19] = 1e-9;
  measurement.dR[19] = 1e-9;
  measurement.q_shift = 0;
  testing::Vary(state, FitKind::kQzMovement, 0, 0, 1e-4, -0.1, 0.1);
  Objective objective(state, {measurement});
  std::vector<double> x = objective.Start();
  x[3] = 0.01;
  const RowValues values = objective.Evaluate(x)[0];
  EXPECT_EQ(values.code, ReturnCode::kWrongDataPoints);
  EXPECT_EQ(values.chi_square, INFINITY);
  EXPECT_THROW(objective.ResidualsAt(x), CalculationError);
}

TEST(ObjectiveRefusals, PointsOfTheWrongLength) {
  const CState state = MakeFreeFilm();
  Objective objective(state, {MakeMeasurement(state, 20, 0.02)});
  const std::vector<double> x(4, 1.0);
  EXPECT_THROW(objective.Evaluate(x), DataError);
  EXPECT_THROW(objective.ResidualsAt(x), DataError);
  EXPECT_THROW(objective.ModelAt(objective.Start(), 1), DataError);
}

}  // namespace
}  // namespace tolvik::analysis
