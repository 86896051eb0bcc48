// SPDX-License-Identifier: GPL-2.0-or-later
// Slices of rough interfaces against roughness factors, and shapes of magnetic profiles against each other.
#include <gtest/gtest.h>

#include "engine/profile/profile.tpp"
#include "support/intensities.h"
#include "support/stacks.h"

namespace tolvik::testing {
namespace {

constexpr double kWavevector = 0.32;
using Profile = engine::Profile<double>;

Profile Slice(Profile profile, double step, const CArray<CGaussFunction>& functions = {}) {
  engine::SegmentProfile(profile, functions, 1, 2, {step, step, 0, 2});
  return profile;
}

Profile Interface(double sigma) {
  return MakeProfile<double>({{0, 0.009, 0.004, sigma}, {}});
}

// Relative distance of the sliced interface from the Névot-Croce factor. Without absorption: the error
// function is that of the index and not of its square, which shifts the interface by (δ - iβ) σ / 2√π, and an
// imaginary shift changes R.
double Distance(double sigma, double theta) {
  const auto interface = MakeProfile<double>({{0, 0.009, 0, sigma}, {}});
  const double rough = RecursionIntensity(interface, kWavevector, theta, kSigma);
  return std::abs(RecursionIntensity(Slice(interface, 0.01), kWavevector, theta, kSigma) / rough - 1);
}

TEST(Slices, OfOneErrorFunctionConvergeToNevotCroce) {
  // The factor is exact to second order in the roughness; odd orders vanish.
  for (double theta : {0.2, 0.5, 0.8}) {
    EXPECT_LT(Distance(2, theta), 2e-5) << theta;
    EXPECT_LT(Distance(2, theta), Distance(4, theta) / 14) << theta;
  }
}

TEST(Slices, HaveTheRoughnessThatASharpInterfaceLacks) {
  const double theta = 0.5, sigma = 2;
  const double sharp = RecursionIntensity(Interface(0), kWavevector, theta, kSigma);
  const double sliced = RecursionIntensity(Slice(Interface(sigma), 0.05), kWavevector, theta, kSigma);
  // Born approximation of an error-function profile: exp(-qz² σ²), qz = 2 k0 sin θ.
  const double q = 2 * kWavevector * std::sin(theta);
  EXPECT_NEAR(sliced / sharp, std::exp(-q * q * sigma * sigma), 0.02);
}

TEST(Slices, ThinnerThanNeededChangeNothing) {
  auto stack = MakeProfile<double>({{0, 0.004, 0.002, 4}, {60, 0.009, 0.004, 3}, {}});
  for (double theta : {0.1, 0.3, 0.6}) {
    const double coarse = RecursionIntensity(Slice(stack, 0.2), kWavevector, theta, kSigma);
    EXPECT_NEAR(RecursionIntensity(Slice(stack, 0.1), kWavevector, theta, kSigma), coarse, 2e-3 * coarse);
  }
}

TEST(Slices, AdaptiveOnesEqualEvenOnes) {
  auto stack = MakeProfile<double>({{0, 0.004, 0.002, 4}, {120, 0.009, 0.004, 3}, {}});
  auto adaptive = stack;
  engine::SegmentProfile(adaptive, {}, 1, 0, {0.2, 5, 1, 2});
  const auto even = Slice(stack, 0.2);
  EXPECT_LT(adaptive.size, even.size / 2);
  for (double theta : {0.1, 0.3, 0.6}) {
    const double expected = RecursionIntensity(even, kWavevector, theta, kSigma);
    EXPECT_NEAR(RecursionIntensity(adaptive, kWavevector, theta, kSigma), expected, 1e-3 * expected);
  }
}

TEST(Slices, SplineAndGaussianOfTheSameShapeAgree) {
  CGaussFunction gaussian;
  gaussian.gauss_delta = 1.2;
  gaussian.gauss_beta = -0.7;
  gaussian.gauss_z = 30;
  gaussian.gauss_variance = 6;
  CGaussFunction spline = gaussian;
  spline.gauss_usespline = true;
  for (double z = -8; z <= 68; z += 1) {
    spline.gauss_splinex.Append(z);
    spline.gauss_spliney.Append(std::exp(-0.5 * (z - 30) * (z - 30) / 36));
  }
  const auto stack = MakeProfile<double>({{0, 0.004, 0.002, 2}, {60, 0.009, 0.004, 3, 0.002, 0.001}, {}});
  CArray<CGaussFunction> first, second;
  first.Append(gaussian);
  second.Append(spline);
  const auto plain = Slice(stack, 0.5), a = Slice(stack, 0.5, first), b = Slice(stack, 0.5, second);
  for (std::int32_t i = 0; i < a.size; ++i) EXPECT_NEAR(a[i].layer_ddelta, b[i].layer_ddelta, 1e-3 * 0.002);
  const double expected = FirstOrderIntensity(a, kWavevector, 0.4, kLeft, 90, 40);
  EXPECT_NEAR(FirstOrderIntensity(b, kWavevector, 0.4, kLeft, 90, 40), expected, 5e-5 * expected);
  EXPECT_GT(std::abs(FirstOrderIntensity(plain, kWavevector, 0.4, kLeft, 90, 40) / expected - 1), 1e-3);
}

TEST(Slices, ElementProfileOfOneInterfaceIsTheLayerWithThatDensity) {
  // One element, two densities: its profile is that of the two-layer stack of the same constants and
  // roughness.
  CState state;
  state.mode = Mode::kElement;
  state.lambda = 2 * M_PI / kWavevector;
  const double energy = 12398.326 / state.lambda;
  CElementLayer element;
  element.el_f1 = 9;
  element.el_f2 = 4;
  for (const auto& [d, density] : {std::pair{0.0, 0.5}, std::pair{20.0, 0.2}, std::pair{0.0, 0.0}}) {
    CElementSlice slice;
    slice.el_d = d;
    slice.el_density = density;
    slice.el_sigma = 2;
    element.slices.Append(slice);
  }
  state.elementlayers.Append(element);
  Profile elements;
  engine::PrepareProfile<double>(state, elements);

  const double scale = 415.1761541 / (energy * energy);
  auto stack = MakeProfile<double>(
      {{0, scale * 0.5 * 9, scale * 0.5 * 4, 2}, {20, scale * 0.2 * 9, scale * 0.2 * 4, 2}, {}});
  engine::SegmentProfile(stack, {}, 1, 0, {0.5, 0.5, 0, 1});
  for (double theta : {0.1, 0.3, 0.6}) {
    const double expected = RecursionIntensity(stack, kWavevector, theta, kSigma);
    // The two grids lie a quarter of a step apart.
    EXPECT_NEAR(RecursionIntensity(elements, kWavevector, theta, kSigma), expected, 0.01 * expected) << theta;
  }
}

}  // namespace
}  // namespace tolvik::testing
