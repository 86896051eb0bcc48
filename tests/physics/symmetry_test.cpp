// SPDX-License-Identifier: GPL-2.0-or-later
// Rotations and mirrors of the sample in the tensor algorithm.
#include <gtest/gtest.h>

#include "support/intensities.h"
#include "support/stacks.h"

namespace tolvik::testing {
namespace {

constexpr double kWavevector = 0.32;
using Profile = engine::Profile<double>;
using Value = std::complex<double>;

// R ε Rᵀ with R a matrix of rows.
void Transform(Profile& profile, const double (&r)[3][3]) {
  for (auto& entry : profile) {
    Value turned[9] = {};
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        for (int k = 0; k < 3; ++k) {
          for (int l = 0; l < 3; ++l) turned[3 * i + j] += r[i][k] * entry.Epsilon(k, l) * r[j][l];
        }
      }
    }
    std::copy(turned, turned + 9, entry.epsilon);
  }
}

void TurnAboutNormal(Profile& profile, double angle) {
  const double c = std::cos(angle), s = std::sin(angle);
  Transform(profile, {{c, -s, 0}, {s, c, 0}, {0, 0, 1}});
}

Profile Magnetic(double gamma, double phi) {
  return MakeProfile<double>({{0, 0.004, 0.002, 0, 0.001, 0.0005}, {60, 0.009, 0.004, 3, 0.002, -0.001}, {}},
                             {gamma, phi, true});
}

// A biaxial crystal in general orientation.
Profile Crystal() {
  Profile profile = MakeProfile<double>({{0, 0.004, 0.002}, {60, 0.009, 0.004, 2}, {}});
  profile[1].magnetic = 1;
  const Value e[9] = {{0.975, 0.02},  {0.004, 0.001},  {-0.003, 0.002}, {0.004, 0.001}, {0.985, 0.012},
                      {0.005, 0.001}, {-0.003, 0.002}, {0.005, 0.001},  {0.99, 0.006}};
  std::copy(e, e + 9, profile[1].epsilon);
  return profile;
}

void ExpectSame(const Profile& a, const Profile& b, double theta, double relative) {
  for (const Ray& ray : kAllRays) {
    const double expected = TensorIntensity(b, kWavevector, theta, ray);
    EXPECT_NEAR(TensorIntensity(a, kWavevector, theta, ray), expected, relative * expected);
  }
}

TEST(Symmetry, GammaTurnsTheMagnetisationFromMinusXOverYToX) {
  // The tensor is that of the direction (-sin φ cos γ, sin φ sin γ, cos φ).
  for (double turn : {20.0, 90.0, -130.0}) {
    Profile turned = Magnetic(35, 70);
    TurnAboutNormal(turned, -turn * M_PI / 180);
    ExpectSame(turned, Magnetic(35 + turn, 70), 0.4, 1e-9);
  }
}

TEST(Symmetry, PhiTiltsTheMagnetisationFromTheNormalTowardsY) {
  // A turn about x by the angle a takes z to (0, -sin a, cos a); with gamma 90 the magnetisation lies in that
  // plane.
  const double a = -50 * M_PI / 180;
  Profile turned = Magnetic(90, 0);
  Transform(turned, {{1, 0, 0}, {0, std::cos(a), -std::sin(a)}, {0, std::sin(a), std::cos(a)}});
  ExpectSame(turned, Magnetic(90, 50), 0.4, 1e-9);
}

TEST(Symmetry, NormalIncidenceSeesATurnOfTheSampleAsATurnOfTheLight) {
  const double angle = 0.7, c = std::cos(angle), s = std::sin(angle);
  Profile turned = Crystal();
  TurnAboutNormal(turned, angle);
  for (const Ray& ray : kAllRays) {
    // The fields of sigma and pi lie along x and y there.
    const Ray rotated = {c * ray.sigma - s * ray.pi, s * ray.sigma + c * ray.pi};
    const double expected = TensorIntensity(Crystal(), kWavevector, M_PI / 2, ray);
    EXPECT_NEAR(TensorIntensity(turned, kWavevector, M_PI / 2, rotated), expected, 1e-9 * expected);
  }
}

TEST(Symmetry, MirrorAtThePlaneOfIncidenceTurnsTheSignOfSigma) {
  Profile mirrored = Crystal();
  Transform(mirrored, {{-1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  for (const Ray& ray : kAllRays) {
    const Ray opposite = {-ray.sigma, ray.pi};
    const double expected = TensorIntensity(Crystal(), kWavevector, 0.4, opposite);
    EXPECT_NEAR(TensorIntensity(mirrored, kWavevector, 0.4, ray), expected, 1e-10 * expected);
  }
}

TEST(Symmetry, ReversedMagnetisationIsReversedHelicity) {
  // Polar and longitudinal: the mirror at the plane of incidence reverses an axial vector in that plane.
  for (const auto& [gamma, phi] : {std::pair{0.0, 0.0}, std::pair{90.0, 90.0}, std::pair{90.0, 40.0}}) {
    const double plus = TensorIntensity(Magnetic(gamma, phi), kWavevector, 0.4, kLeft);
    const double minus = TensorIntensity(Magnetic(gamma, phi + 180), kWavevector, 0.4, kRight);
    EXPECT_NEAR(plus, minus, 1e-10 * plus);
    EXPECT_GT(std::abs(plus / TensorIntensity(Magnetic(gamma, phi), kWavevector, 0.4, kRight) - 1), 1e-3);
  }
}

TEST(Symmetry, PolarMagnetisationAtNormalIncidenceIsTwoScalarProblems) {
  // Circular waves have the indices n (1 ± (deltam - i betam)) there, to first order in the constants.
  const double delta = 0.009, beta = 0.004, dm = 2e-5, bm = -1e-5;
  const auto magnetic = MakeProfile<double>({{0, delta, beta, 0, dm, bm}, {}}, {0, 0, true});
  const Value n(1 - delta, beta);
  for (const auto& [ray, sign] : {std::pair{kLeft, 1.0}, std::pair{kRight, -1.0}}) {
    const Value shifted = n * (1.0 + sign * Value(dm, -bm));
    const double expected = std::norm((1.0 - shifted) / (1.0 + shifted));
    EXPECT_NEAR(TensorIntensity(magnetic, kWavevector, M_PI / 2, ray), expected, 1e-5 * expected) << sign;
    const double opposite = std::norm((1.0 - n * (1.0 - sign * Value(dm, -bm))) / (1.0 + n));
    EXPECT_GT(std::abs(opposite / expected - 1), 1e-3);
  }
}

}  // namespace
}  // namespace tolvik::testing
