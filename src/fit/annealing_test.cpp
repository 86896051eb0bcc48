// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "support/toy_fit.h"

namespace tolvik {
namespace {

using testing::Point;
using testing::SumOfSquares;
using testing::ToyFit;

// Draws after those that a fit of that seed discards, from an object that shares no code with the stream.
class Reference {
 public:
  explicit Reference(std::uint32_t seed) {
    MTRand_int32 stream;
    stream.Seed(&seed, 1);
    for (int i = 0; i < 2000; ++i) stream.Draw();
    for (double& u : draws_) u = stream.Draw() / 4294967296.0;
  }
  double operator()() { return draws_[next_++]; }

 private:
  double draws_[600];
  std::size_t next_ = 0;
};

// The count of numbers that a fit has drawn since it was made, from the next number of the stream.
int CountDraws(ToyFit& fit, std::uint32_t seed) {
  const std::uint32_t next = fit.integergenerator.Draw();
  MTRand_int32 stream;
  stream.Seed(&seed, 1);
  for (int i = 0; i < 2000; ++i) stream.Draw();
  for (int i = 0; i < 10000; ++i) {
    if (stream.Draw() == next) return i;
  }
  return -1;
}

TEST(Annealing, FirstStepBuildsAndMoves) {
  ToyFit fit(SumOfSquares);
  fit.Vary(4, 2).Vary(4, 2).Start();
  fit.AnnealingStep();
  // Errors 32, 52, 52: in the tie the earlier vertex stays the highest, and its reflection (2, 6) has 40.
  EXPECT_EQ(fit.evaluated, (std::vector<Point>{{4, 4}, {6, 4}, {4, 6}, {2, 6}}));
  EXPECT_EQ(fit.Errors(), (Point{32, 40, 52}));
  EXPECT_EQ(fit.lasterror, 40);  // of the last trial
  EXPECT_EQ(fit.Parameters(), (Point{4, 4}));
}

// The steps of the plain simplex by hand (see its test), without the evaluation of the best vertex at the
// end.
TEST(Annealing, AtTemperatureZeroItIsTheSimplex) {
  ToyFit fit(SumOfSquares);
  fit.Vary(4, 2).Vary(4, 2).Start();
  fit.AnnealingStep();
  fit.evaluated.clear();
  fit.AnnealingStep();
  EXPECT_EQ(fit.evaluated, (std::vector<Point>{{2, 4}, {1, 3}}));
  EXPECT_EQ(fit.Errors(), (Point{32, 40, 10}));
  fit.evaluated.clear();
  fit.AnnealingStep();
  EXPECT_EQ(fit.evaluated, (std::vector<Point>{{3, 1}, {3.5, -1.5}}));
  EXPECT_EQ(fit.Errors(), (Point{32, 10, 10}));
  EXPECT_EQ(fit.lasterror, 14.5);  // a rejected trial
  EXPECT_EQ(Point(fit.bestparameters.begin(), fit.bestparameters.end()), (Point{3, 1}));
  EXPECT_EQ(fit.besterror, 10);
}

TEST(Annealing, ShrinksWhenTheContractionFails) {
  ToyFit fit([](const Point& p) {
    if (p == Point{0, 0}) return 0.0;
    return p == Point{1, 0} || p == Point{0, 1} ? 5.0 : 7.0;
  });
  fit.Vary(0, 1).Vary(0, 1).Start();
  fit.AnnealingStep();
  // 0, 5, 5: the highest is vertex 1; reflection, contraction, then both others halfway to vertex 0.
  EXPECT_EQ(fit.evaluated,
            (std::vector<Point>{{0, 0}, {1, 0}, {0, 1}, {-1, 1}, {0.5, 0.25}, {0.5, 0}, {0, 0.5}}));
  EXPECT_EQ(fit.Errors(), (Point{0, 7, 7}));
  EXPECT_EQ(fit.Sum(), (Point{0.5, 0.5}));
}

TEST(Annealing, TiesExpandAndContract) {
  ToyFit flat([](const Point&) { return 2.0; });
  flat.Vary(0, 1).Vary(0, 1).Start();
  flat.AnnealingStep();  // a trial as good as the lowest is expanded, from the old vertex: -sum / 2 + 5/2 (1,
                         // 0)
  EXPECT_EQ(flat.evaluated, (std::vector<Point>{{0, 0}, {1, 0}, {0, 1}, {-1, 1}, {2, -0.5}}));

  // Errors 0, 5, 7; the reflection (1, -1) of the highest is taken with 5, which equals the second highest,
  // and so the contraction (sum + worst) / 4 of sum (2, -1) follows; it fails, and all shrink.
  ToyFit tie([](const Point& p) {
    if (p == Point{0, 0}) return 0.0;
    if (p == Point{1, 0} || p == Point{1, -1}) return 5.0;
    return p == Point{0, 1} ? 7.0 : 9.0;
  });
  tie.Vary(0, 1).Vary(0, 1).Start();
  tie.AnnealingStep();
  EXPECT_EQ(tie.evaluated,
            (std::vector<Point>{{0, 0}, {1, 0}, {0, 1}, {1, -1}, {0.75, -0.5}, {0.5, 0}, {0.5, -0.5}}));
}

TEST(Annealing, OfEqualLowestVerticesTheLaterOneDrawsTheOthers) {
  ToyFit fit([](const Point& p) {
    if (p == Point{0, 0} || p == Point{0, 1}) return 0.0;
    return p == Point{1, 0} ? 5.0 : 7.0;
  });
  fit.Vary(0, 1).Vary(0, 1).Start();
  fit.AnnealingStep();
  EXPECT_EQ(fit.evaluated,
            (std::vector<Point>{{0, 0}, {1, 0}, {0, 1}, {-1, 1}, {0.5, 0.25}, {0, 0.5}, {0.5, 0.5}}));
}

// A reflection between the lowest and the second highest vertex ends the step: no contraction. The errors of
// the vertices (0, 0), (8, 0) and (0, 8) are 1, 20 and 30 in either order; the reflection of the highest one,
// (8, 0) - (0, 8) or the other way round, has 15.
TEST(Annealing, AReflectionBelowTheSecondHighestIsEnough) {
  for (const bool highest_last : {true, false}) {
    ToyFit fit([=](const Point& p) -> double {
      if (p == Point{0, 0}) return 1;
      if (p == Point{8, 0}) return highest_last ? 20 : 30;
      if (p == Point{0, 8}) return highest_last ? 30 : 20;
      return 15;
    });
    fit.Vary(0, 8).Vary(0, 8).Start();
    fit.AnnealingStep();
    EXPECT_EQ(fit.evaluated.size(), 4u) << highest_last;
    EXPECT_EQ(fit.lasterror, 15);
  }
}

TEST(Annealing, ScheduleIsLinearAndEndsAtZero) {
  ToyFit fit(SumOfSquares);
  fit.Vary(4, 2).Start();
  fit.fittemp = 1;
  fit.fitdtemp = -0.375;
  for (const double expected : {0.625, 0.25, 0.0, 0.0}) {
    fit.AnnealingStep();
    EXPECT_EQ(fit.fittemp, expected);
  }
  fit.fitdtemp = 2;
  fit.AnnealingStep();
  fit.AnnealingStep();
  EXPECT_EQ(fit.fittemp, 4);
}

TEST(Annealing, OneDrawForEachVertexAndTrial) {
  ToyFit fit(SumOfSquares, 3);
  fit.Vary(4, 2).Vary(4, 2).Start();
  fit.AnnealingStep();  // 3 vertices and 1 trial at temperature 0
  EXPECT_EQ(CountDraws(fit, 3), 4);
  ToyFit again(SumOfSquares, 3);
  again.Vary(4, 2).Vary(4, 2).Start();
  again.AnnealingStep();
  again.AnnealingStep();  // 3 and 2 more
  EXPECT_EQ(CountDraws(again, 3), 9);
}

// Two vertices at 0 and 1 with errors 1 and 2 at T = 1: the draws decide which one is reflected, and whether
// the trial, whose true error is 2.5 on either side, replaces it.
TEST(Annealing, NoiseOnVerticesAndTrialsFollowsTheDraws) {
  int reflected[2] = {0, 0};
  int taken = 0;
  for (std::uint32_t seed = 0; seed < 60; ++seed) {
    ToyFit fit([](const Point& p) { return p[0] == 0 ? 1.0 : p[0] == 1 ? 2.0 : 2.5; }, seed);
    fit.Vary(0, 1).Start();
    fit.fittemp = 0.5;
    fit.fitdtemp = 0.5;  // the temperature of the step is 1
    fit.AnnealingStep();
    Reference u(seed);
    const double y0 = 1 - std::log(u());
    const double y1 = 2 - std::log(u());
    const int high = y0 <= y1 ? 1 : 0;
    ++reflected[high];
    const double trial = high == 1 ? -1 : 2;  // 2 sum - 3 worst with sum 1
    ASSERT_EQ(fit.evaluated[2], (Point{trial})) << seed;
    const double noisy = 2.5 + std::log(u());
    const double highest = std::max(y0, y1);
    const bool reflection_taken = noisy < highest;
    taken += reflection_taken;
    // The next trial shows whether the reflection was accepted.
    double worst = reflection_taken ? trial : high;
    const double sum = 1 - high + worst;
    if (noisy <= std::min(y0, y1)) {
      ASSERT_EQ(fit.evaluated[3], (Point{-sum + 3 * worst})) << seed;  // expansion, and the end of the step
      ASSERT_EQ(fit.evaluated.size(), 4u);
    } else {
      ASSERT_EQ(fit.evaluated[3], (Point{0.5 * sum})) << seed;  // nexthighest is lowest: contraction
    }
    ASSERT_EQ(fit.besterror, 2.5);  // no trial is better
  }
  EXPECT_GT(reflected[0], 5);
  EXPECT_GT(reflected[1], 5);
  EXPECT_GT(taken, 5);
  EXPECT_LT(taken, 60);
}

TEST(Annealing, TrialIsKeptWithItsTrueError) {
  // At a huge temperature every trial is taken, even a bad one.
  ToyFit fit(SumOfSquares, 1);
  fit.Vary(4, 2).Vary(4, 2).Start();
  fit.fittemp = 1e12;
  for (int i = 0; i < 20; ++i) fit.AnnealingStep();
  for (std::int32_t k = 0; k < 3; ++k)
    EXPECT_EQ(fit.Errors()[static_cast<std::size_t>(k)], SumOfSquares(fit.Vertex(k)));
  double least = 1e300;
  for (std::size_t i = 3; i < fit.evaluated.size(); ++i)
    least = std::min(least, SumOfSquares(fit.evaluated[i]));
  EXPECT_EQ(fit.besterror, least);
}

TEST(Annealing, OneVariableAndNone) {
  ToyFit one(SumOfSquares);
  one.Vary(3, 1).Start();
  one.AnnealingStep();
  EXPECT_EQ(one.evaluated[2], (Point{2}));
  for (int i = 0; i < 100; ++i) one.AnnealingStep();
  EXPECT_LT(one.besterror, 1e-20);

  ToyFit none([](const Point&) { return 3.0; }, 8);
  none.fitdtemp = 1;
  none.Start();
  none.AnnealingStep();
  none.AnnealingStep();
  EXPECT_EQ(none.evaluated.size(), 1u);
  EXPECT_EQ(none.fittemp, 0);  // no step, no change of temperature
  EXPECT_EQ(CountDraws(none, 8), 0);
}

TEST(Annealing, FlatObjective) {
  ToyFit fit([](const Point&) { return 2.0; }, 1);
  fit.Vary(0, 1).Vary(0, 1).Start();
  fit.fittemp = 1;
  fit.fitdtemp = -0.01;
  for (int i = 0; i < 200; ++i) fit.AnnealingStep();
  EXPECT_EQ(fit.lasterror, 2);
  EXPECT_EQ(fit.besterror, 2);
}

TEST(Annealing, StaysInsideTheBounds) {
  ToyFit fit(SumOfSquares, 4);
  fit.Vary(2, 0.5, 1, 3).Vary(2, 0.5).Start();
  fit.fittemp = 10;
  fit.fitdtemp = -0.05;
  for (int i = 0; i < 400; ++i) fit.AnnealingStep();
  for (const Point& p : fit.evaluated) {
    ASSERT_GE(p[0], 1);
    ASSERT_LE(p[0], 3);
  }
  EXPECT_NEAR(fit.bestparameters[0], 1, 1e-6);
  EXPECT_NEAR(fit.besterror, 1, 1e-6);
}

// A double well, tilted: the plain simplex stays in the well of its start at -1, heat brings it to the deeper
// one.
TEST(Annealing, ClimbsOutOfALocalMinimum) {
  const auto wells = [](const Point& p) {
    return std::pow(p[0] * p[0] - 1, 2) - 0.3 * p[0] + SumOfSquares(p) * 0.0 + p[1] * p[1];
  };
  int cold = 0;
  int hot = 0;
  for (std::uint32_t seed = 0; seed < 10; ++seed) {
    for (const bool heat : {false, true}) {
      ToyFit fit(wells, seed);
      fit.Vary(-1, 0.05, -3, 3).Vary(0.1, 0.05, -3, 3).Start();
      fit.fittemp = heat ? 2 : 0;
      fit.fitdtemp = -0.005;
      for (int i = 0; i < 700; ++i) fit.AnnealingStep();
      (heat ? hot : cold) += fit.bestparameters[0] > 0.5;
    }
  }
  EXPECT_EQ(cold, 0);
  EXPECT_GE(hot, 8);
}

TEST(Annealing, FindsKnownMinimaFromSeveralStarts) {
  for (const Point& start : {Point{-1.2, 1}, Point{0, 0}, Point{3, -2}}) {
    ToyFit fit([](const Point& p) { return 100 * std::pow(p[1] - p[0] * p[0], 2) + std::pow(1 - p[0], 2); },
               2);
    fit.Vary(start[0], 0.5).Vary(start[1], 0.5).Start();
    fit.fittemp = 1;
    fit.fitdtemp = -0.005;
    for (int i = 0; i < 800; ++i) fit.AnnealingStep();
    EXPECT_NEAR(fit.bestparameters[0], 1, 1e-5);
    EXPECT_NEAR(fit.bestparameters[1], 1, 1e-5);
  }
}

TEST(Annealing, SameSeedGivesTheSameErrors) {
  std::vector<double> errors[2];
  for (auto& run : errors) {
    ToyFit fit(SumOfSquares, 99);
    fit.Vary(4, 2).Vary(-3, 1).Start();
    fit.fittemp = 5;
    fit.fitdtemp = -0.01;
    for (int i = 0; i < 300; ++i) {
      fit.AnnealingStep();
      run.push_back(fit.lasterror);
    }
  }
  EXPECT_EQ(errors[0], errors[1]);
}

}  // namespace
}  // namespace tolvik
