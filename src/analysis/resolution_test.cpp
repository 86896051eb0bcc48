// SPDX-License-Identifier: GPL-2.0-or-later
// The resolution of a point against a dense quadrature that knows nothing of nodes or edges.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "support/measured_film.h"
#include "tolvik/analysis/objective.h"

namespace tolvik::analysis {
namespace {

// The curve under a Gaussian by the midpoint rule in steps of sigma / 2000.
double Smeared(const CState& state, double q, double sigma) {
  std::vector<double> places;
  for (double z = -6; z < 6; z += 1 / 2000.0) {
    const double place = q + (z + 1 / 4000.0) * sigma;
    if (place >= 0) places.push_back(place);
  }
  const std::vector<double> curve = testing::CurveOf(state, places);
  double sum = 0;
  for (std::size_t i = 0; i < places.size(); ++i) {
    const double z = (places[i] - q) / sigma;
    sum += curve[i] * std::exp(-0.5 * z * z) / 2000 / std::sqrt(2 * std::numbers::pi);
  }
  return sum;
}

struct Case {
  double thickness;
  double sigma;
};

CState FilmOf(double thickness, double absorption) {
  CState state = testing::MakeFilm();
  state.layers[1].layer_d = thickness;
  for (CLayer& layer : state.layers) layer.layer_beta *= absorption;
  return state;
}

void ExpectAccurate(const CState& state, const std::vector<double>& q, double sigma, double tolerance) {
  Measurement measurement;
  measurement.q = q;
  measurement.R.assign(q.size(), 1.0);
  measurement.dR.assign(q.size(), 1.0);
  measurement.dq.assign(q.size(), sigma);
  Objective objective(state, {measurement}, {.resolution = Resolution::kPoints});
  EXPECT_EQ(objective.nodes_of(0).unresolved, 0);
  const std::vector<double> model = objective.ModelAt(objective.Start(), 0).values[0];
  for (std::size_t i = 0; i < q.size(); ++i) {
    const double exact = Smeared(state, q[i], sigma);
    EXPECT_NEAR(model[i], exact, tolerance * exact) << "q = " << q[i];
  }
}

TEST(Resolution, FringesOfAnyThickness) {
  for (const Case& each : {Case{60, 2e-3}, Case{1000, 2e-3}, Case{1000, 1e-4}, Case{4000, 1e-3}}) {
    ExpectAccurate(FilmOf(each.thickness, 1), testing::Grid(12, 0.08, 0.3), each.sigma, 1e-4);
  }
}

TEST(Resolution, NearTheCriticalEdge) {
  // edges at 0.032 (substrate) and 0.054 (film); points from the horizon over both
  const std::vector<double> q = testing::Grid(25, 0.003, 0.075);
  for (const double absorption : {1.0, 1e-3}) {
    ExpectAccurate(FilmOf(1000, absorption), q, 2e-3, 1e-4);
    ExpectAccurate(FilmOf(60, absorption), q, 2e-3, 1e-4);
  }
}

TEST(Resolution, NodesGrowWithThicknessTimesSigma) {
  std::int32_t before = 0;
  for (const double thickness : {50.0, 500.0, 2000.0}) {
    const CState state = FilmOf(thickness, 1);
    Measurement measurement = testing::MakeMeasurement(state, 10, 0.1);
    measurement.q = testing::Grid(10, 0.15, 0.3);
    measurement.dq.assign(10, 2e-3);
    Objective objective(state, {measurement}, {.resolution = Resolution::kPoints});
    EXPECT_GT(objective.nodes_of(0).most, before);
    before = objective.nodes_of(0).most;
  }
  EXPECT_LT(before, 60);
}

TEST(Resolution, AWidthOfZeroIsOneNode) {
  const CState state = FilmOf(60, 1);
  Measurement measurement = testing::MakeMeasurement(state, 10, 0.1);
  measurement.dq.assign(10, 0.0);
  Objective objective(state, {measurement}, {.resolution = Resolution::kPoints});
  EXPECT_EQ(objective.nodes_of(0).nodes, 10);
  EXPECT_EQ(objective.ModelAt({}, 0).values[0], measurement.R);
}

TEST(Resolution, ThePlanHoldsAwayFromTheStart) {
  CState state = FilmOf(1000, 1);
  testing::Vary(state, FitKind::kThickness, 1, 1000, 1, 900, 1100);
  testing::Vary(state, FitKind::kDelta, 0, 7.58e-6, 1e-7, 6e-6, 9e-6);
  const std::vector<double> q = testing::Grid(20, 0.02, 0.2);
  Measurement measurement;
  measurement.q = q;
  measurement.R.assign(q.size(), 1.0);
  measurement.dR.assign(q.size(), 1.0);
  measurement.dq.assign(q.size(), 2e-3);
  Objective objective(state, {measurement}, {.resolution = Resolution::kPoints});
  const std::vector<double> x = {1070, 7.9e-6};
  const std::vector<double> model = objective.ModelAt(x, 0).values[0];
  const CState moved = objective.StateAt(x);
  for (std::size_t i = 0; i < q.size(); ++i) {
    const double exact = Smeared(moved, q[i], 2e-3);
    EXPECT_NEAR(model[i], exact, 2e-4 * exact) << "q = " << q[i];
  }
}

}  // namespace
}  // namespace tolvik::analysis
