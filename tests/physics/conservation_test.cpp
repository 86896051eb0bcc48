// SPDX-License-Identifier: GPL-2.0-or-later
// R + T = 1 for stacks without absorption, with the flux factor of the substrate: the normal component of the
// Poynting vector of a wave of unit field in index n is proportional to its normal wavevector for sigma and
// pi alike.
#include <gtest/gtest.h>

#include "support/intensities.h"
#include "support/stacks.h"

namespace tolvik::testing {
namespace {

constexpr double kWavevector = 0.32;

double FluxFactor(double delta, double theta) {
  const double n = 1 - delta, c = std::cos(theta);
  return std::sqrt(n * n - c * c) / std::sin(theta);
}

void ExpectConserved(const engine::Profile<double>& profile, double tolerance) {
  const double delta = profile[0].layer_delta;
  for (double theta : {0.3, 0.5, 0.9, 1.4}) {
    for (const Ray& ray : {kSigma, kPi}) {
      const double r = TensorIntensity(profile, kWavevector, theta, ray);
      const double t = TensorIntensity(profile, kWavevector, theta, ray, true);
      EXPECT_NEAR(r + FluxFactor(delta, theta) * t, 1, tolerance) << theta << ray.sigma;
    }
  }
}

TEST(Conservation, IsotropicStack) {
  ExpectConserved(MakeProfile<double>({{0, 0.02}, {60, 0.009}, {25, 0.03}, {40, 0.012}, {}}), 1e-12);
}

TEST(Conservation, BareSubstrate) {
  ExpectConserved(MakeProfile<double>({{0, 0.02}, {}}), 1e-13);
}

TEST(Conservation, MagneticFilmsWithoutAbsorption) {
  // Tensors of a real deltam are hermitian: they turn the polarisation but absorb nothing.
  for (const Magnetisation& m : {Magnetisation{0, 0, true}, {90, 90, true}, {30, 60, true}, {45, 90, true}}) {
    auto profile =
        MakeProfile<double>({{0, 0.02}, {60, 0.009, 0, 0, 0.004}, {40, 0.012, 0, 0, -0.003}, {}}, m);
    profile[0].magnetic = 0;
    ExpectConserved(profile, 1e-10);
  }
}

TEST(Conservation, UniaxialFilmWithoutAbsorption) {
  auto profile = MakeProfile<double>({{0, 0.02}, {60, 0.009}, {}});
  profile[1].magnetic = 1;
  profile[1].Epsilon(2, 2) = 0.96;
  ExpectConserved(profile, 1e-12);
}

TEST(Conservation, TotalReflectionReflectsAll) {
  const auto profile = MakeProfile<double>({{0, 0.02}, {60, 0.009}, {}});
  for (const Ray& ray : kAllRays) {
    const double incoming = std::norm(ray.sigma) + std::norm(ray.pi);
    EXPECT_NEAR(TensorIntensity(profile, kWavevector, 0.1, ray), incoming, 1e-12);
  }
}

TEST(Conservation, AbsorptionTakesItsShare) {
  const auto profile = MakeProfile<double>({{0, 0.02}, {60, 0.009, 0.002}, {}});
  const double r = TensorIntensity(profile, kWavevector, 0.5, kSigma);
  const double t = TensorIntensity(profile, kWavevector, 0.5, kSigma, true);
  EXPECT_LT(r + FluxFactor(0.02, 0.5) * t, 0.95);
}

}  // namespace
}  // namespace tolvik::testing
