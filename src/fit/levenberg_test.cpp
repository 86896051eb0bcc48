// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#include "fit/levmar_call.h"
#include "support/leaks.h"
#include "support/toy_fit.h"

namespace tolvik {
namespace {

using testing::Point;
using testing::ToyFit;

Point RosenbrockResiduals(const Point& p) {
  return {10 * (p[1] - p[0] * p[0]), 1 - p[0]};
}

TEST(Levenberg, FindsRosenbrocksMinimumFromSeveralStarts) {
  for (const Point& start : {Point{-1.2, 1}, Point{0, 0}, Point{3, -2}, Point{-4, 20}}) {
    ToyFit fit(RosenbrockResiduals, 2);
    fit.Vary(start[0], 1).Vary(start[1], 1).Start();
    fit.LevenbergStep();
    EXPECT_NEAR(fit.parameters[0], 1, 1e-6);
    EXPECT_NEAR(fit.parameters[1], 1, 1e-6);
    EXPECT_EQ(fit.evaluated.back(), fit.Parameters());
    EXPECT_EQ(currentfit, &fit);
  }
}

TEST(Levenberg, StopsAtAnActiveBound) {
  ToyFit fit(RosenbrockResiduals, 2);
  fit.Vary(-1.2, 1, -5, 0.5).Vary(1, 1).Start();
  fit.LevenbergStep();
  EXPECT_NEAR(fit.parameters[0], 0.5, 1e-4);
  EXPECT_NEAR(fit.parameters[1], 0.25, 1e-4);
  for (const Point& p : fit.evaluated) ASSERT_LE(p[0], 0.5);  // the difference Jacobian included
}

TEST(Levenberg, StartOutsideTheBoundsIsProjected) {
  ToyFit fit(RosenbrockResiduals, 2);
  fit.Vary(-9, 1, 0, 5).Vary(1, 1, -5, 5).Start();
  ::testing::internal::CaptureStderr();
  fit.LevenbergStep();
  EXPECT_NE(::testing::internal::GetCapturedStderr().find("not feasible"), std::string::npos);
  EXPECT_EQ(fit.evaluated[0], (Point{0, 1}));
  EXPECT_NEAR(fit.parameters[0], 1, 1e-5);
}

TEST(Levenberg, ZeroResidualsStopAtOnce) {
  ToyFit fit([](const Point&) { return Point{0, 0}; }, 2);
  fit.Vary(3, 1).Vary(4, 1).Start();
  fit.LevenbergStep();
  EXPECT_EQ(fit.evaluated, (std::vector<Point>{{3, 4}}));
  EXPECT_EQ(fit.Parameters(), (Point{3, 4}));
  EXPECT_EQ(fit.fitvariables[0].fit_sigma, 0);
}

TEST(Levenberg, ResidualsThatAreNoNumbersAreHarmless) {
  ToyFit fit([](const Point&) { return Point{NAN, NAN}; }, 2);
  fit.Vary(3, 1, 0, 5).Vary(4, 1).Start();
  fit.LevenbergStep();
  EXPECT_EQ(fit.evaluated[0], (Point{3, 4}));
  EXPECT_TRUE(std::isnan(fit.lasterror));
}

TEST(Levenberg, FlatObjective) {
  ToyFit fit([](const Point&) { return Point{1, 1, 1}; }, 3);
  fit.Vary(3, 1).Vary(4, 1).Start();
  fit.LevenbergStep();
  EXPECT_EQ(fit.lasterror, 3);
  EXPECT_NEAR(fit.parameters[0], 3, 1e-3);  // at most a point of the Jacobian away
}

TEST(Levenberg, NoVariable) {
  ToyFit fit([](const Point&) { return Point{1, 2}; }, 2);
  fit.Start();
  fit.LevenbergStep();
  EXPECT_EQ(fit.lasterror, 5);
  EXPECT_TRUE(fit.fitvariables.IsEmpty());
}

TEST(Levenberg, NeitherVariableNorResidual) {
  ToyFit fit([](const Point&) { return Point{}; }, 0);
  fit.Start();
  fit.LevenbergStep();
  EXPECT_EQ(fit.lasterror, 0);
}

TEST(Levenberg, FewerResidualsThanVariablesAreRefused) {
  ToyFit fit([](const Point& p) { return Point{p[0]}; }, 1);
  fit.Vary(3, 1).Vary(4, 1).Start();
  fit.lasterror = 17;
  ::testing::internal::CaptureStderr();
  fit.LevenbergStep();
  EXPECT_NE(::testing::internal::GetCapturedStderr().find("fewer measurements"), std::string::npos);
  EXPECT_TRUE(fit.evaluated.empty());
  EXPECT_EQ(fit.Parameters(), (Point{3, 4}));
  EXPECT_EQ(fit.lasterror, 17);
}

TEST(Levenberg, CrossedBoundsAreRefused) {
  ToyFit fit(RosenbrockResiduals, 2);
  fit.Vary(3, 1, 2, 1).Vary(4, 1).Start();
  ::testing::internal::CaptureStderr();
  fit.LevenbergStep();
  EXPECT_FALSE(::testing::internal::GetCapturedStderr().empty());
  EXPECT_EQ(fit.Parameters(), (Point{3, 4}));
}

TEST(Levenberg, ShortStepIsAtMostTenIterations) {
  // One iteration of Rosenbrock from the classical start costs a Jacobian of two calls and at least one
  // trial.
  ToyFit whole(RosenbrockResiduals, 2);
  whole.Vary(-1.2, 1).Vary(1, 1).Start().LevenbergStep();
  ToyFit part(RosenbrockResiduals, 2);
  part.Vary(-1.2, 1).Vary(1, 1).Start().LevenbergShortStep();
  EXPECT_LT(part.evaluated.size(), whole.evaluated.size());
  EXPECT_GT(part.lasterror, 1e-12);
}

// From 8, x decreases by less than a hundredth in each iteration of x^100: no run ends by itself here. A
// direct call of levmar for 100 iterations with the settings of a step makes the same number of calls.
TEST(Levenberg, AStepIsAtMostAHundredIterations) {
  static std::size_t calls;
  calls = 0;
  const auto power = [](double* x, double* hx, int, int, void*) {
    ++calls;
    hx[0] = std::pow(x[0], 100);
  };
  double x = 8, zero = 0, lower = -1e10, upper = 1e10, options[] = {1e-3, 1e-15, 1e-15, 1e-20, 1e-6};
  double info[10] = {};
  fit::CallLevmar(power, &x, &zero, 1, 1, &lower, &upper, 100, options, info, nullptr, nullptr, nullptr);
  ASSERT_EQ(info[5], 100);  // iterations

  ToyFit step([](const Point& p) { return Point{std::pow(p[0], 100)}; }, 1);
  step.Vary(8, 1).Start().LevenbergStep();
  EXPECT_EQ(step.evaluated.size(), calls);
}

TEST(Levenberg, ExceptionOfTheObjectiveComesOut) {
  ToyFit fit([](const Point&) -> Point { throw std::runtime_error("curve"); }, 2);
  fit.Vary(3, 1).Vary(4, 1).Start();
  const testing::LeaksAllowed levmar_loses_its_jacobian_rows;
  EXPECT_THROW(fit.LevenbergStep(), std::runtime_error);
}

// Problems of the NIST Statistical Reference Datasets, nonlinear regression (itl.nist.gov/div898/strd), with
// the certified values for parameters, standard deviations and the residual sum of squares.
struct Certified {
  const char* name;
  double (*model)(const Point& b, double x);
  Point y, x;
  std::vector<Point> starts;
  Point b, sd;
  double rss;
  double lower;  // bound of all parameters: keeps the line search away from exponents that overflow
};

double Exponential(const Point& b, double x) {
  return b[0] * (1 - std::exp(-b[1] * x));
}
double Logistic(const Point& b, double x) {
  return b[0] / (1 + std::exp(b[1] - b[2] * x));
}
double Rational(const Point& b, double x) {
  return (b[0] + b[1] * x + b[2] * x * x + b[3] * x * x * x) /
         (1 + b[4] * x + b[5] * x * x + b[6] * x * x * x);
}

const Certified kProblems[] = {
    {"Misra1a",
     Exponential,
     {10.07, 14.73, 17.94, 23.93, 29.61, 35.18, 40.02, 44.82, 50.76, 55.05, 61.01, 66.40, 75.47, 81.78},
     {77.6, 114.9, 141.1, 190.8, 239.9, 289.0, 332.8, 378.4, 434.8, 477.3, 536.8, 593.1, 689.1, 760.0},
     {{500, 0.0001}, {250, 0.0005}},
     {2.3894212918E+02, 5.5015643181E-04},
     {2.7070075241E+00, 7.2668688436E-06},
     1.2455138894E-01,
     0},
    {"BoxBOD",
     Exponential,
     {109, 149, 149, 191, 213, 224},
     {1, 2, 3, 5, 7, 10},
     {{1, 1}, {100, 0.75}},
     {2.1380940889E+02, 5.4723748542E-01},
     {1.2354515176E+01, 1.0455993237E-01},
     1.1680088766E+03,
     0},
    {"Rat42",
     Logistic,
     {8.930, 10.800, 18.590, 22.330, 39.350, 56.110, 61.730, 64.620, 67.080},
     {9, 14, 21, 28, 42, 57, 63, 70, 79},
     {{100, 1, 0.1}, {75, 2.5, 0.07}},
     {7.2462237576E+01, 2.6180768402E+00, 6.7359200066E-02},
     {1.7340283401E+00, 8.8295217536E-02, 3.4465663377E-03},
     8.0565229338E+00,
     0},
    {"Thurber",
     Rational,
     {80.574,   84.248,   87.264,   87.195,   89.076,   89.608,   89.868,   90.101,   92.405,   95.854,
      100.696,  101.060,  401.672,  390.724,  567.534,  635.316,  733.054,  759.087,  894.206,  990.785,
      1090.109, 1080.914, 1122.643, 1178.351, 1260.531, 1273.514, 1288.339, 1327.543, 1353.863, 1414.509,
      1425.208, 1421.384, 1442.962, 1464.350, 1468.705, 1447.894, 1457.628},
     {-3.067, -2.981, -2.921, -2.912, -2.840, -2.797, -2.702, -2.699, -2.633, -2.481, -2.363, -2.322, -1.501,
      -1.460, -1.274, -1.212, -1.100, -1.046, -0.915, -0.714, -0.566, -0.545, -0.400, -0.309, -0.109, -0.103,
      0.010,  0.119,  0.377,  0.790,  0.963,  1.006,  1.115,  1.572,  1.841,  2.047,  2.200},
     {{1000, 1000, 400, 40, 0.7, 0.3, 0.03}, {1300, 1500, 500, 75, 1, 0.4, 0.05}},
     {1.2881396800E+03, 1.4910792535E+03, 5.8323836877E+02, 7.5416644291E+01, 9.6629502864E-01,
      3.9797285797E-01, 4.9727297349E-02},
     {4.6647963344E+00, 3.9571156086E+01, 2.8698696102E+01, 5.5675370270E+00, 3.1333340687E-02,
      1.4984928198E-02, 6.5842344623E-03},
     5.6427082397E+03,
     -1e10}};

// The Jacobian is a forward difference over 1e-4 of a parameter, and a run ends at its last evaluation:
// parameters are good to parts in 1e-4, the sum of squares, flat at its minimum, to parts in 1e-6. The bounds
// keep the line search away from exponents that overflow.
TEST(Levenberg, CertifiedProblems) {
  for (const Certified& problem : kProblems) {
    const auto residuals_of = [&problem](const Point& b) {
      Point r;
      for (std::size_t i = 0; i < problem.x.size(); ++i)
        r.push_back(problem.y[i] - problem.model(b, problem.x[i]));
      return r;
    };
    for (const Point& start : problem.starts) {
      ToyFit fit(residuals_of, static_cast<std::int32_t>(problem.x.size()));
      for (const double b : start) fit.Vary(b, 1, problem.lower);
      fit.Start();
      for (int run = 0; run < 3; ++run) fit.LevenbergStep();
      for (std::size_t i = 0; i < problem.b.size(); ++i) {
        const CFitVariable& variable = fit.fitvariables.data[i];
        EXPECT_NEAR(variable.fit_value / problem.b[i], 1, 2e-4) << problem.name << " from " << start[0];
        EXPECT_NEAR(variable.fit_sigma / problem.sd[i], 1, 2e-3) << problem.name << " from " << start[0];
      }
      EXPECT_NEAR(fit.lasterror / problem.rss, 1, 1e-6) << problem.name << " from " << start[0];
    }
  }
}

}  // namespace
}  // namespace tolvik
