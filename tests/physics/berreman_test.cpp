// SPDX-License-Identifier: GPL-2.0-or-later
// The tensor algorithm against an independent 4×4 solution by matrix exponential.
#include <gtest/gtest.h>

#include <random>

#include "support/intensities.h"
#include "support/stacks.h"

namespace tolvik::testing {
namespace {

constexpr double kWavevector = 0.32;  // near 630 eV
constexpr double kAngles[] = {0.12, 0.35, 0.8, 1.3};

using Profile = engine::Profile<double>;
using Value = std::complex<double>;

void ExpectIndependent(const Profile& profile, double relative, const char* what) {
  for (double theta : kAngles) {
    for (const Ray& ray : kAllRays) {
      const double expected = IndependentIntensity(profile, kWavevector, theta, ray);
      EXPECT_NEAR(TensorIntensity(profile, kWavevector, theta, ray), expected, relative * expected)
          << what << " at " << theta << " for " << ray.sigma << ray.pi;
    }
  }
}

// Three films on a substrate, all of ordinary soft x-ray contrast.
Profile Films() {
  return MakeProfile<double>(
      {{0, 0.004, 0.002}, {60, 0.009, 0.004}, {25, 0.003, 0.001}, {40, 0.012, 0.006}, {}});
}

void SetTensor(engine::CLayer<double>& entry, const Value (&e)[9]) {
  entry.magnetic = 1;
  for (int k = 0; k < 9; ++k) entry.epsilon[k] = e[k];
}

TEST(Berreman, IsotropicFilms) {
  ExpectIndependent(Films(), 1e-9, "isotropic");
}

TEST(Berreman, GeneralTensorsInAllLayersAndTheSubstrate) {
  std::mt19937 random(99);
  std::uniform_real_distribution<double> uniform(-0.02, 0.02);
  for (int trial = 0; trial < 20; ++trial) {
    Profile profile = Films();
    for (std::int32_t i = 0; i < 4; ++i) {
      Value e[9];
      for (int k = 0; k < 9; ++k) {
        const bool diagonal = k % 4 == 0;
        const double real = uniform(random), imag = uniform(random);
        e[k] = diagonal ? Value(0.98 + real, 0.03 + imag) : Value(0.3 * real, 0.3 * imag);
      }
      SetTensor(profile[i], e);
    }
    ExpectIndependent(profile, 1e-8, "general");
  }
}

TEST(Berreman, UniaxialFilmWithItsAxisAlongEachAxis) {
  for (int axis : {0, 4, 8}) {
    Profile profile = Films();
    Value e[9] = {};
    for (int k : {0, 4, 8}) e[k] = k == axis ? Value(0.97, 0.02) : Value(0.985, 0.008);
    SetTensor(profile[2], e);
    ExpectIndependent(profile, 1e-8, "uniaxial");
  }
}

TEST(Berreman, BiaxialFilmTurnedAnyWay) {
  // Turns about x and then z.
  for (const auto& [a, b] : {std::pair{0.6, 0.0}, std::pair{0.3, 1.1}, std::pair{2.0, 0.7}}) {
    const double turn[3][3] = {{std::cos(a), -std::sin(a) * std::cos(b), std::sin(a) * std::sin(b)},
                               {std::sin(a), std::cos(a) * std::cos(b), -std::cos(a) * std::sin(b)},
                               {0, std::sin(b), std::cos(b)}};
    const Value principal[3] = {{0.975, 0.02}, {0.985, 0.012}, {0.99, 0.006}};
    Value e[9] = {};
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 3; ++c) {
        for (int k = 0; k < 3; ++k) e[3 * r + c] += turn[r][k] * principal[k] * turn[c][k];
      }
    }
    Profile profile = Films();
    SetTensor(profile[2], e);
    ExpectIndependent(profile, 1e-8, "biaxial");
  }
}

TEST(Berreman, DecoupledSigmaWaveOfTheGeneralCaseIsLost) {
  // A rotation about x does not change the sigma wave. Its vector vanishes in the formulas of the general
  // case: users rotate such a tensor slightly.
  const auto stack = [](double tilt) {
    Value e[9] = {{0.975, 0.02}, 0, tilt, 0, {0.985, 0.012}, {0.002, 0.001}, tilt, {0.002, 0.001},
                  {0.99, 0.006}};
    Profile profile = Films();
    SetTensor(profile[2], e);
    return profile;
  };
  EXPECT_TRUE(std::isnan(TensorIntensity(stack(0), kWavevector, 0.35, kSigma)));
  ExpectIndependent(stack(1e-4), 1e-8, "tilted");
}

struct Direction {
  double gamma, phi;
};

void ExpectMagnetic(const Direction& m, double ddelta, double dbeta, double relative) {
  const Profile profile = MakeProfile<double>({{0, 0.004, 0.002, 0, ddelta, dbeta},
                                               {60, 0.009, 0.004, 0, -ddelta, 2 * dbeta},
                                               {25, 0.003, 0.001},
                                               {40, 0.012, 0.006, 0, 2 * ddelta, dbeta},
                                               {}},
                                              {m.gamma, m.phi, true});
  for (double theta : kAngles) {
    for (const Ray& ray : kAllRays) {
      const double expected = IndependentIntensity(profile, kWavevector, theta, ray);
      EXPECT_NEAR(TensorIntensity(profile, kWavevector, theta, ray), expected, relative * expected)
          << m.gamma << " " << m.phi << " " << ddelta << " " << dbeta << " at " << theta;
    }
  }
}

TEST(Berreman, GyrotropicStacksOfManyDirections) {
  for (const Direction& m :
       {Direction{0, 0}, {90, 90}, {45, 54.7}, {70, 30}, {200, 120}, {-40, 160}, {0, 180}}) {
    ExpectMagnetic(m, 0.002, 0.0008, 1e-8);
  }
}

TEST(Berreman, MagnetisationInTheSurfaceWithBothSignsOfItsConstants) {
  // cos 90° is 6e-17: β of the quartic is a rounding error. Where deltam and betam have opposite signs a
  // wrong choice among the cube roots spoils the intensity by tens of percent.
  for (double gamma : {90.0, 60.0, -35.0, 135.0, 270.0}) {
    for (const auto& [ddelta, dbeta] : {std::pair{0.002, 0.001}, std::pair{0.002, -0.001},
                                        std::pair{-0.002, 0.001}, std::pair{-0.002, -0.001}}) {
      ExpectMagnetic({gamma, 90}, ddelta, dbeta, 1e-8);
    }
  }
}

TEST(Berreman, RandomMagnetisationsOfRandomStrength) {
  std::mt19937 random(4);
  std::uniform_real_distribution<double> unit(-1, 1);
  for (int trial = 0; trial < 40; ++trial) {
    const double gamma = 180 * unit(random), phi = 180 * unit(random);
    // A magnetic beta above the plain one would amplify, and it would be undefined which waves of the
    // substrate run up.
    const double ddelta = 0.004 * unit(random), dbeta = 0.0015 * unit(random);
    ExpectMagnetic({gamma, phi}, ddelta, dbeta, 2e-8);
  }
}

TEST(Berreman, MorePrecisionRemovesTheIllConditioning) {
  // A thousandth of a degree from x double loses half of its digits, long double few that matter.
  const Magnetisation m{0.001, 90, true};
  const Slab film{60, 0.009, 0.004, 0, 0.002, 0.0008}, substrate{0, 0.004, 0.002};
  const auto profile = MakeProfile<double>({substrate, film, {}}, m);
  const auto precise = MakeProfile<long double>({substrate, film, {}}, m);
  for (const Ray& ray : kAllRays) {
    const double expected = IndependentIntensity(profile, kWavevector, 0.35, ray);
    EXPECT_NEAR(TensorIntensity(profile, kWavevector, 0.35, ray), expected, 1e-5 * expected);
    EXPECT_NEAR(TensorIntensity(precise, kWavevector, 0.35, ray), expected, 1e-8 * expected);
  }
}

}  // namespace
}  // namespace tolvik::testing
