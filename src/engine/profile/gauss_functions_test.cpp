// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/profile/gauss_functions.tpp"

#include <gtest/gtest.h>

#include <initializer_list>

#include "engine/number/cnumber.h"
#include "engine/number/complex.h"
#include "engine/profile/profile.tpp"
#include "support/stacks.h"

namespace tolvik::engine {
namespace {

using testing::MakeProfile;

Profile<double> Stack() {
  return MakeProfile<double>({{0, 0.02, 0.01, 3, 0.001, 0.002}, {50, 0.05, 0.02, 4, 0.003, 0.001}, {}});
}

CGaussFunction Gaussian(double delta, double beta, double z, double variance) {
  CGaussFunction function;
  function.gauss_delta = delta;
  function.gauss_beta = beta;
  function.gauss_z = z;
  function.gauss_variance = variance;
  return function;
}

CGaussFunction Spline(std::initializer_list<double> x, std::initializer_list<double> y) {
  CGaussFunction function = Gaussian(1, 1, 0, 1);
  function.gauss_usespline = true;
  for (double value : x) function.gauss_splinex.Append(value);
  for (double value : y) function.gauss_spliney.Append(value);
  return function;
}

template <class T = double>
Profile<double> Sliced(std::initializer_list<CGaussFunction> functions, std::int32_t magnetizationmode = 2) {
  CArray<CGaussFunction> list;
  for (const CGaussFunction& function : functions) list.Append(function);
  auto profile = Stack();
  SegmentProfile(profile, list, LayerSegmentationMode::kSlices, magnetizationmode,
                 {0.5, 0.5, 0, SegmentationModel::kSteps});
  return profile;
}

// The factor by which a function multiplied the magnetic delta of slice i, with the height of its middle.
template <class Check>
void ForEachFactor(const Profile<double>& with, Check check) {
  const auto without = Sliced({});
  ASSERT_EQ(with.size, without.size);
  for (std::int32_t i = 1; i < with.size; ++i) {
    const double z = (with[i - 1].layer_z + with[i].layer_z) / 2;
    if (without[i].layer_ddelta == 0) continue;
    check(z, with[i].layer_ddelta / without[i].layer_ddelta - 1,
          with[i].layer_dbeta / without[i].layer_dbeta - 1);
  }
  EXPECT_EQ(with[0].layer_ddelta, without[0].layer_ddelta);
}

TEST(GaussFunctions, ScaleTheMagneticConstantsByAGaussian) {
  ForEachFactor(Sliced({Gaussian(0.8, -0.5, 20, 6)}), [](double z, double delta, double beta) {
    const double g = std::exp(-0.5 * (z - 20) * (z - 20) / 36);
    EXPECT_NEAR(delta, 0.8 * g, 1e-12);
    EXPECT_NEAR(beta, -0.5 * g, 1e-12);
  });
}

TEST(GaussFunctions, SeveralOnOneSliceCompound) {
  ForEachFactor(Sliced({Gaussian(0.8, 0, 20, 6), Gaussian(0.4, 0, 30, 9)}), [](double z, double delta,
                                                                               double beta) {
    const double g = std::exp(-0.5 * (z - 20) * (z - 20) / 36), h = std::exp(-0.5 * (z - 30) * (z - 30) / 81);
    EXPECT_NEAR(1 + delta, (1 + 0.8 * g) * (1 + 0.4 * h), 1e-12);
    EXPECT_NEAR(beta, 0, 1e-12);
  });
}

TEST(GaussFunctions, AddNoMomentToALayerWithout) {
  auto profile = MakeProfile<double>({{0, 0.02, 0.01, 3}, {50, 0.05, 0.02, 4}, {}});
  CArray<CGaussFunction> list;
  list.Append(Gaussian(5, 5, 20, 6));
  SegmentProfile(profile, list, 1, 2, {0.5, 0.5, 0, 2});
  for (const auto& slice : profile) EXPECT_EQ(slice.layer_ddelta, 0.0);
}

TEST(GaussFunctions, LeaveTheTensorAlone) {
  const auto with = Sliced({Gaussian(0.8, -0.5, 20, 6)}), without = Sliced({});
  for (std::int32_t i = 0; i < with.size; ++i) {
    for (int k = 0; k < 9; ++k) EXPECT_EQ(with[i].epsilon[k], without[i].epsilon[k]);
  }
}

TEST(GaussFunctions, AreReadInMagnetizationModeTwoOnly) {
  for (std::int32_t mode : {0, 1, 3}) {
    ForEachFactor([&] { return Sliced({Gaussian(0.8, 0.5, 20, 6)}, mode); }(),
                  [](double, double delta, double) { EXPECT_EQ(delta, 0.0); });
  }
}

TEST(GaussFunctions, VanishingWidthHasNoEffect) {
  ForEachFactor(Sliced({Gaussian(0.8, 0.5, 20, 0)}),
                [](double, double delta, double) { EXPECT_EQ(delta, 0.0); });
}

TEST(GaussFunctions, BindingCountsFromTheAmbient) {
  auto stack = Stack();
  stack[2].layer_z = 1e100;
  for (std::int32_t binding : {0, 1, 2}) {
    CGaussFunction function = Gaussian(1, 0, 0, 1e9);  // flat
    function.gauss_bindtolayer = binding;
    ForEachFactor(Sliced({function}), [&](double z, double delta, double) {
      EXPECT_NEAR(delta, LayerWeight(stack, 2 - binding, z), 1e-9) << binding << " at " << z;
    });
  }
}

TEST(GaussFunctions, BindingBeyondTheStackIsIgnored) {
  for (std::int32_t binding : {3, 4, 1000000, -2, INT32_MIN, INT32_MAX}) {
    CGaussFunction function = Gaussian(1, 1, 20, 6);
    function.gauss_bindtolayer = binding;
    ForEachFactor(Sliced({function}), [](double, double delta, double) { EXPECT_EQ(delta, 0.0); });
  }
}

TEST(Splines, RunThroughTheirPointsAndVanishOutside) {
  const CGaussFunction function = Spline({0, 10, 25, 30, 50}, {9, 1, 3, -2, 9});
  EXPECT_EQ(gauss::Spline(function, 9.999), 0.0);
  EXPECT_EQ(gauss::Spline(function, 10.0), 1.0);
  EXPECT_EQ(gauss::Spline(function, 25.0), 3.0);
  EXPECT_EQ(gauss::Spline(function, 30.0), -2.0);
  EXPECT_EQ(gauss::Spline(function, 30.001), 0.0);
}

TEST(Splines, ReproduceAParabola) {
  // A Catmull-Rom spline on even points is exact for polynomials of second degree.
  const auto parabola = [](double x) { return 0.3 * x * x - 2 * x + 1; };
  const CGaussFunction function =
      Spline({0, 5, 10, 15, 20}, {parabola(0), parabola(5), parabola(10), parabola(15), parabola(20)});
  for (double z = 5; z <= 15; z += 0.21) EXPECT_NEAR(gauss::Spline(function, z), parabola(z), 1e-12);
}

TEST(Splines, ScaleTheMagneticConstants) {
  const CGaussFunction function = Spline({0, 10, 25, 30, 50}, {9, 1, 3, -2, 9});
  ForEachFactor(Sliced({function}), [&](double z, double delta, double) {
    EXPECT_NEAR(delta, gauss::Spline(function, z), 1e-12);
  });
}

TEST(Splines, ThreePointsHaveNoEffect) {
  ForEachFactor(Sliced({Spline({0, 10, 20}, {1, 1, 1})}),
                [](double, double delta, double) { EXPECT_EQ(delta, 0.0); });
}

TEST(Splines, UnequalListsCountAsTheSmaller) {
  const auto longer_x = Sliced({Spline({0, 10, 20, 30, 40, 50}, {1, 2, 3, 4})});
  const auto longer_y = Sliced({Spline({0, 10, 20, 30}, {1, 2, 3, 4, 5, 6})});
  const auto even = Sliced({Spline({0, 10, 20, 30}, {1, 2, 3, 4})});
  for (std::int32_t i = 0; i < even.size; ++i) {
    EXPECT_EQ(longer_x[i].layer_ddelta, even[i].layer_ddelta);
    EXPECT_EQ(longer_y[i].layer_ddelta, even[i].layer_ddelta);
  }
  ForEachFactor(Sliced({Spline({0, 10, 20, 30}, {1, 2, 3})}),
                [](double, double delta, double) { EXPECT_EQ(delta, 0.0); });
}

TEST(Splines, NeedNoWidth) {
  CGaussFunction function = Spline({0, 10, 25, 30, 50}, {9, 1, 3, -2, 9});
  function.gauss_variance = 0;
  ForEachFactor(Sliced({function}), [&](double z, double delta, double) {
    EXPECT_NEAR(delta, gauss::Spline(function, z), 1e-12);
  });
}

TEST(Splines, PointsOutOfOrderStayInsideTheLists) {
  // Each order of these abscissae, at heights on and between them; the sanitizer checks addresses.
  double x[5] = {0, 1, 2, 3, 4};
  do {
    const CGaussFunction function = Spline({x[0], x[1], x[2], x[3], x[4]}, {1, 2, 3, 4, 5});
    for (double z = -0.5; z <= 4.5; z += 0.5) {
      const double value = gauss::Spline(function, z);
      EXPECT_TRUE((x[1] <= z && z <= x[3]) || value == 0) << z;
    }
  } while (std::next_permutation(x, x + 5));
}

}  // namespace
}  // namespace tolvik::engine
