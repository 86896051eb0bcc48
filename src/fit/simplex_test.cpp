// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "support/toy_fit.h"

namespace tolvik {
namespace {

using testing::Point;
using testing::SumOfSquares;
using testing::ToyFit;

// Rosenbrock, Comput. J. 3, 175 (1960): minimum 0 at (1, 1).
double Rosenbrock(const Point& p) {
  return 100 * std::pow(p[1] - p[0] * p[0], 2) + std::pow(1 - p[0], 2);
}

std::size_t CallsOfAStep(ToyFit& fit) {
  const std::size_t before = fit.evaluated.size();
  fit.SimplexStep();
  return fit.evaluated.size() - before;
}

TEST(Simplex, FirstStepBuildsAndDoesNotMove) {
  ToyFit fit(SumOfSquares);
  fit.Vary(4, 2).Vary(4, 2).Start();
  EXPECT_EQ(CallsOfAStep(fit), 3u);
  EXPECT_EQ(fit.evaluated, (std::vector<Point>{{4, 4}, {6, 4}, {4, 6}}));
  EXPECT_EQ(fit.Errors(), (Point{32, 52, 52}));
  EXPECT_EQ(fit.Sum(), (Point{14, 14}));
  EXPECT_EQ(fit.lasterror, 52);  // of the last vertex, not of the best
  EXPECT_EQ(fit.Parameters(), (Point{4, 4}));
  EXPECT_EQ(Point(fit.bestparameters.begin(), fit.bestparameters.end()), (Point{4, 4}));
  EXPECT_FALSE(fit.restart);
}

// x² + y² from (4, 4) with steps of 2, by hand. For two variables a reflection is sum - 2 worst, an expansion
// -sum / 2 + 5/2 worst and a contraction (sum + worst) / 4.
TEST(Simplex, SevenStepsByHand) {
  ToyFit fit(SumOfSquares);
  fit.Vary(4, 2).Vary(4, 2).Start();
  fit.SimplexStep();
  struct Step {
    std::vector<Point> trials;
    Point best;        // at the start of the step
    double lasterror;  // of that point
    Point errors;      // after it
  };
  const Step steps[] = {
      {{{2, 6}}, {4, 4}, 32, {32, 40, 52}},               // reflected, between best and second worst
      {{{2, 4}, {1, 3}}, {4, 4}, 32, {32, 40, 10}},       // expanded
      {{{3, 1}, {3.5, -1.5}}, {1, 3}, 10, {32, 10, 10}},  // the expansion is worse: the reflection stays
      {{{0, 0}, {-2, -2}}, {1, 3}, 10, {0, 10, 10}},
      {{{-2, 2}}, {0, 0}, 0, {0, 8, 10}},
      {{{-3, -1}, {0, 2}},
       {0, 0},
       0,
       {0, 8, 4}},  // the reflection is not better: contracted from the old vertex
      {{{2, 0}, {1, 0.5}}, {0, 0}, 0, {0, 1.25, 4}},  // contracted from the reflected vertex
  };
  for (const Step& step : steps) {
    fit.evaluated.clear();
    fit.SimplexStep();
    std::vector<Point> expected = step.trials;
    expected.push_back(step.best);  // the model ends at the best vertex of the start
    EXPECT_EQ(fit.evaluated, expected);
    EXPECT_EQ(fit.Parameters(), step.best);
    EXPECT_EQ(fit.lasterror, step.lasterror);
    EXPECT_EQ(fit.Errors(), step.errors);
  }
  EXPECT_EQ(fit.Sum(), (Point{1, 2.5}));
}

TEST(Simplex, ShrinksWhenTheContractionFails) {
  // 0 at the origin, 5 on the first two other vertices, 7 elsewhere.
  ToyFit fit([](const Point& p) {
    if (p == Point{0, 0}) return 0.0;
    return p == Point{1, 0} || p == Point{0, 1} ? 5.0 : 7.0;
  });
  fit.Vary(0, 1).Vary(0, 1).Start();
  fit.SimplexStep();
  fit.evaluated.clear();
  EXPECT_EQ(CallsOfAStep(fit), 5u);  // n + 3, the largest number of a step
  EXPECT_EQ(fit.evaluated, (std::vector<Point>{{-1, 1}, {0.5, 0.25}, {0.5, 0}, {0, 0.5}, {0, 0}}));
  EXPECT_EQ(fit.Errors(), (Point{0, 7, 7}));
  EXPECT_EQ(fit.Sum(), (Point{0.5, 0.5}));
  EXPECT_EQ(fit.lasterror, 0);
}

TEST(Simplex, ShrinkEvaluatesInsideTheBoundsAndLeavesTheVertex) {
  // The upper bound moves below the vertices after they were built.
  ToyFit fit([](const Point& p) { return p[0] == 0 ? 0.0 : 5.0; });
  fit.Vary(0, 8).Start();
  fit.SimplexStep();
  fit.fitvariables[0].fit_upper_boundary = 1;
  fit.evaluated.clear();
  fit.SimplexStep();
  // Reflection 2·8 - 3·8 = -8, contraction (8 + 8) / 2 clamped, shrink 8 / 2 clamped, best.
  EXPECT_EQ(fit.evaluated, (std::vector<Point>{{-8}, {1}, {1}, {0}}));
  EXPECT_EQ(fit.Vertex(1), (Point{4}));
}

TEST(Simplex, OneVariable) {
  ToyFit fit(SumOfSquares);
  fit.Vary(3, 1).Start();
  fit.SimplexStep();
  fit.evaluated.clear();
  fit.SimplexStep();  // reflection 2·7 - 3·4, expansion -7 + 4·2 of the reflected vertex
  EXPECT_EQ(fit.evaluated, (std::vector<Point>{{2}, {-7.0 + 0 + 5 + 3}, {3}}));
  for (int i = 0; i < 200; ++i) fit.SimplexStep();
  EXPECT_NEAR(fit.parameters[0], 0, 1e-12);
}

TEST(Simplex, NoVariableEvaluatesOnce) {
  ToyFit fit([](const Point&) { return 3.0; });
  fit.Start();
  EXPECT_EQ(CallsOfAStep(fit), 1u);
  EXPECT_EQ(fit.lasterror, 3);
  EXPECT_EQ(CallsOfAStep(fit), 0u);
}

TEST(Simplex, NothingToStepWithoutAStart) {
  ToyFit fit(SumOfSquares);
  EXPECT_EQ(CallsOfAStep(fit), 0u);
}

TEST(Simplex, StepOfZeroKeepsTheCoordinate) {
  ToyFit fit(SumOfSquares);
  fit.Vary(4, 1).Vary(7, 0).Start();
  for (int i = 0; i < 300; ++i) fit.SimplexStep();
  for (const Point& p : fit.evaluated) ASSERT_EQ(p[1], 7);
  EXPECT_LT(std::abs(fit.parameters[0]), 2);  // the other one moves
}

TEST(Simplex, StartOnABoundFoldsTheVertexBack) {
  ToyFit fit(SumOfSquares);
  fit.Vary(4, 2, 0, 4).Vary(4, 2).Start();
  fit.SimplexStep();
  EXPECT_EQ(fit.Vertex(1), fit.Vertex(0));
  EXPECT_EQ(fit.Vertex(2), (Point{4, 6}));
}

TEST(Simplex, EqualErrorsEverywhere) {
  ToyFit fit([](const Point&) { return 2.0; });
  fit.Vary(0, 1).Vary(0, 1).Vary(0, 1).Start();
  fit.SimplexStep();
  fit.evaluated.clear();
  fit.SimplexStep();
  // low is the last vertex, high the first: the trial is the reflection of vertex 0, and since it is not
  // worse than low it is expanded, although no trial is better than the vertex that it would replace.
  EXPECT_EQ(fit.evaluated.size(), 3u);
  EXPECT_NEAR(fit.evaluated[0][0], 2.0 / 3, 1e-15);
  EXPECT_EQ(fit.Parameters(), (Point{0, 0, 1}));
  for (int i = 0; i < 100; ++i) fit.SimplexStep();
  EXPECT_EQ(fit.lasterror, 2);
}

TEST(Simplex, ErrorThatIsNoNumberIsTakenAsLow) {
  ToyFit fit([](const Point& p) { return p[0] == 1 ? std::numeric_limits<double>::quiet_NaN() : p[0]; });
  fit.Vary(0, 1).Start();
  fit.SimplexStep();  // errors 0, NaN: not greater, so the later one is low
  fit.SimplexStep();
  EXPECT_EQ(fit.Parameters(), (Point{1}));
  EXPECT_TRUE(std::isnan(fit.lasterror));
}

TEST(Simplex, RestartThrowsTheSimplexAway) {
  ToyFit fit(SumOfSquares);
  fit.Vary(4, 2).Vary(4, 2).Start();
  for (int i = 0; i < 5; ++i) fit.SimplexStep();
  fit.fitvariables[0].fit_value = 8;
  fit.fitvariables[1].fit_value = 9;
  fit.Start();
  fit.SimplexStep();
  EXPECT_EQ(fit.Vertex(0), (Point{8, 9}));
  EXPECT_EQ(fit.Vertex(1), (Point{10, 9}));
}

TEST(Simplex, FindsRosenbrocksMinimum) {
  for (const Point& start : {Point{-1.2, 1}, Point{0, 0}, Point{3, -2}, Point{-2, -2}}) {
    ToyFit fit(Rosenbrock);
    fit.Vary(start[0], 0.5).Vary(start[1], 0.5).Start();
    for (int i = 0; i < 400; ++i) fit.SimplexStep();
    EXPECT_NEAR(fit.parameters[0], 1, 1e-6) << start[0];
    EXPECT_NEAR(fit.parameters[1], 1, 1e-6) << start[0];
    EXPECT_LT(fit.lasterror, 1e-12);
  }
}

// Powell, Comput. J. 5, 147 (1962): minimum 0 at the origin of four dimensions, with a singular Hessian
// there.
TEST(Simplex, FindsPowellsMinimum) {
  const auto powell = [](const Point& p) {
    return std::pow(p[0] + 10 * p[1], 2) + 5 * std::pow(p[2] - p[3], 2) + std::pow(p[1] - 2 * p[2], 4) +
           10 * std::pow(p[0] - p[3], 4);
  };
  for (const double sign : {1.0, -1.0}) {
    ToyFit fit(powell);
    fit.Vary(3 * sign, 1).Vary(-sign, 1).Vary(0, 1).Vary(sign, 1).Start();
    for (int i = 0; i < 2000; ++i) fit.SimplexStep();
    EXPECT_LT(fit.lasterror, 1e-16);
    for (const double x : fit.Parameters()) EXPECT_NEAR(x, 0, 1e-3);
  }
}

TEST(Simplex, FindsAQuadraticMinimumInUpToSixDimensions) {
  for (std::size_t n = 1; n <= 6; ++n) {
    ToyFit fit([n](const Point& p) {
      double sum = 0;
      for (std::size_t i = 0; i < n; ++i) {
        sum += static_cast<double>(i + 1) * std::pow(p[i] - static_cast<double>(i), 2);
      }
      return sum;
    });
    for (std::size_t i = 0; i < n; ++i) fit.Vary(5, 1);
    fit.Start();
    for (int i = 0; i < 1500; ++i) fit.SimplexStep();
    for (std::size_t i = 0; i < n; ++i) EXPECT_NEAR(fit.Parameters()[i], static_cast<double>(i), 1e-6) << n;
  }
}

TEST(Simplex, StopsAtAnActiveBound) {
  // Limited to at most 0.5, the first coordinate of Rosenbrock ends there: minimum (0.5, 0.25) with 0.25.
  ToyFit fit(Rosenbrock);
  fit.Vary(-1, 0.25, -2, 0.5).Vary(1, 0.25).Start();
  for (int i = 0; i < 400; ++i) fit.SimplexStep();
  EXPECT_NEAR(fit.parameters[0], 0.5, 1e-6);
  EXPECT_NEAR(fit.parameters[1], 0.25, 1e-5);
  EXPECT_NEAR(fit.lasterror, 0.25, 1e-6);
  for (const Point& p : fit.evaluated) EXPECT_LE(p[0], 0.5);
}

TEST(Simplex, CrossedBoundsHoldTheUpperOne) {
  ToyFit fit(SumOfSquares);
  fit.Vary(5, 1, 3, 2).Vary(5, 1).Start();
  for (int i = 0; i < 200; ++i) fit.SimplexStep();
  EXPECT_EQ(fit.parameters[0], 2);
  EXPECT_NEAR(fit.parameters[1], 0, 1e-6);
}

TEST(RandomRestart, DrawsStartsBetweenTheBoundsAndKeepsTheBest) {
  // Two wells, the deeper one at 3; the simplex alone ends in the well of its start.
  ToyFit fit(
      [](const Point& p) { return std::min(std::pow(p[0] + 3, 2) + 1, std::pow(p[0] - 3, 2)) + p[1] * p[1]; },
      11);
  fit.Vary(-3, 0.1, -6, 6).Vary(0, 0.1, -1, 2).Start();
  const std::uint32_t key = 11;
  MTRand_int32 stream;
  stream.Seed(&key, 1);
  for (int i = 0; i < 2000; ++i) stream.Draw();
  const double x = -6 + 12 * (stream.Draw() * 0x1p-32);
  const double y = -1 + 3 * (stream.Draw() * 0x1p-32);
  stream.Seed(&key, 1);
  for (int i = 0; i < 2000; ++i) stream.Draw();

  fit.RandomRestartSearch();
  EXPECT_EQ(fit.evaluated[0], (Point{x, y}));
  double best = fit.restartbesterror;
  EXPECT_EQ(best, fit.lasterror);
  for (int i = 0; i < 9; ++i) {
    fit.RandomRestartSearch();
    EXPECT_LE(fit.restartbesterror, best);
    best = fit.restartbesterror;
  }
  EXPECT_LT(best, 1e-12);
  ASSERT_EQ(fit.bestvariables.size, 2);
  EXPECT_NEAR(fit.bestvariables[0].fit_value, 3, 1e-6);
}

TEST(CoordinateStep, TakesBackAWorseStepAndTurns) {
  ToyFit fit(SumOfSquares);
  fit.Vary(2, 1).Vary(5, -2).Start();
  fit.CoordinateStep();
  // 29 at the start; x to 3 is worse (34) and taken back; y to 3: compared with the 34 just before, and kept.
  EXPECT_EQ(fit.evaluated, (std::vector<Point>{{2, 5}, {3, 5}, {2, 3}}));
  EXPECT_EQ(fit.Parameters(), (Point{2, 3}));
  EXPECT_DOUBLE_EQ(fit.fitvariables[0].fit_delta, -0.3);
  EXPECT_EQ(fit.fitvariables[1].fit_delta, -2);
  EXPECT_EQ(fit.lasterror, 13);
  for (int i = 0; i < 100; ++i) fit.CoordinateStep();
  EXPECT_NEAR(fit.parameters[0], 0, 1e-3);
  EXPECT_NEAR(fit.parameters[1], 0, 1e-3);
}

TEST(CoordinateStep, AnEqualErrorIsNoWorseOne) {
  ToyFit fit([](const Point&) { return 1.0; });
  fit.Vary(2, 1).Start();
  fit.CoordinateStep();
  EXPECT_EQ(fit.Parameters(), (Point{3}));
  EXPECT_EQ(fit.fitvariables[0].fit_delta, 1);
}

}  // namespace
}  // namespace tolvik
