// SPDX-License-Identifier: GPL-2.0-or-later
// Closed forms of one and two interfaces: Fresnel, Airy, Névot-Croce, total reflection, Brewster.
#include <cmath>
#include <complex>

#include "support/precisions.h"
#include "support/states.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

using testing::MakeGrid;
using testing::MakeState;
using Index = std::complex<long double>;

constexpr long double kPi = 3.14159265358979323846L;
constexpr double kLambda = 1.54;

long double SinTheta(double qz) {
  return qz * static_cast<long double>(kLambda) / (4 * kPi);
}

/// Fresnel amplitude of the interface between index a (above) and b, Born and Wolf, Principles of
/// Optics, 1.5.2, with the sine of the grazing angle in vacuum.
Index Fresnel(const Index& a, const Index& b, long double s, bool pi) {
  const long double c2 = 1 - s * s;
  const Index ka = std::sqrt(a * a - c2), kb = std::sqrt(b * b - c2);
  return pi ? (b * b * ka - a * a * kb) / (b * b * ka + a * a * kb) : (ka - kb) / (ka + kb);
}

CArray<double> Curve(CState state, CSolution grid, int precision = 1) {
  state.precision = precision;
  EXPECT_EQ(CalcReflectivityDLL(&grid, &state), ReturnCode::kSuccess);
  return grid.dataset_R0;
}

class EachRay : public ::testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Fresnel, EachRay, ::testing::Values(false, true),
                         [](const auto& param) { return param.param ? "Pi" : "Sigma"; });

TEST_P(EachRay, SubstrateReflectsByFresnelsFormula) {
  const Index silicon(1 - 7.6e-6L, 1.73e-7L), heavy(0.7L, 0.3L);
  for (const Index& n : {silicon, heavy}) {
    CState state =
        MakeState({{.delta = static_cast<double>(1 - n.real()), .beta = static_cast<double>(n.imag())}, {}});
    testing::UsePi(state, GetParam());
    const CSolution grid = MakeGrid(0.001, 8.0, 400);
    for (int precision : {Precision::kDouble, Precision::kLongDouble, Precision::kMpfr}) {
      const CArray<double> curve = Curve(state, grid, precision);
      for (int i = 0; i < grid.dataset_qz.size; ++i) {
        const long double s = SinTheta(grid.dataset_qz[i]);
        const long double expected = std::norm(Fresnel(1, n, s, GetParam()));
        // n² - cos²θ cancels in both media: in double their indices have errors of some roundings of 1.
        constexpr long double kStep = 1e-8L;
        long double slope = 0;
        for (const Index& step : {Index(kStep), Index(0, kStep)}) {
          slope += std::abs(std::norm(Fresnel(1, n + step, s, GetParam())) - expected) / kStep;
          slope += std::abs(std::norm(Fresnel(1.0L + step, n, s, GetParam())) - expected) / kStep;
        }
        // The amplitude itself is a difference, rounded relative to 1: that matters where pi almost vanishes.
        const long double tolerance =
            8 * std::numeric_limits<double>::epsilon() * (slope + std::sqrt(expected));
        EXPECT_NEAR(curve[i], static_cast<double>(expected), static_cast<double>(tolerance))
            << grid.dataset_qz[i];
      }
    }
  }
}

TEST_P(EachRay, RoughSubstrateIsDampedByNevotAndCroce) {
  const Index n(0.7L, 0.3L);
  const double sigma = 0.4;
  CState state = MakeState({{.delta = 0.3, .beta = 0.3, .sigma = sigma}, {}});
  testing::UsePi(state, GetParam());
  const CSolution grid = MakeGrid(0.1, 8.0, 80);
  const CArray<double> curve = Curve(state, grid);
  for (int i = 0; i < grid.dataset_qz.size; ++i) {
    const long double s = SinTheta(grid.dataset_qz[i]), k0 = 2 * kPi / kLambda;
    const Index ka = k0 * s, kb = k0 * std::sqrt(n * n - (1 - s * s));
    const Index factor = std::exp(static_cast<long double>(-2 * sigma * sigma) * ka * kb);
    const auto expected = static_cast<double>(std::norm(Fresnel(1, n, s, GetParam()) * factor));
    EXPECT_NEAR(curve[i], expected, 1e-13 * expected) << grid.dataset_qz[i];
  }
}

// Far above the critical angle both wavevectors are qz/2 and the intensity falls by exp(-qz² σ²).
TEST_P(EachRay, RoughnessActsAsADebyeWallerFactorAtLargeQz) {
  CState smooth = MakeState({{.delta = 7.6e-6, .beta = 1.7e-7}, {}});
  CState rough = MakeState({{.delta = 7.6e-6, .beta = 1.7e-7, .sigma = 5}, {}});
  testing::UsePi(smooth, GetParam());
  testing::UsePi(rough, GetParam());
  const CSolution grid = MakeGrid({0.4, 0.5, 0.6});
  const CArray<double> a = Curve(smooth, grid), b = Curve(rough, grid);
  for (int i = 0; i < 3; ++i) {
    const double q = grid.dataset_qz[i];
    EXPECT_NEAR(b[i] / a[i] / std::exp(-q * q * 25), 1.0, 0.015);  // qc² σ² / 2 is 0.0126
  }
}

// Without absorption and above all critical angles the amplitudes r1 (top) and r2 (bottom) are real and
// R = (r1² + r2² + 2 r1 r2 cos 2φ) / (1 + r1² r2² + 2 r1 r2 cos 2φ), φ = kz d: Born and Wolf, 1.6.4.
TEST_P(EachRay, OneFilmReflectsByAirysFormula) {
  const long double film = 0.9L, substrate = 0.8L;
  const double d = 23.7;
  CState state = MakeState({{.delta = 0.2}, {.thickness = d, .delta = 0.1}, {}});
  testing::UsePi(state, GetParam());
  const CSolution grid = MakeGrid(5.5, 8.0, 200);
  const CArray<double> curve = Curve(state, grid);
  for (int i = 0; i < grid.dataset_qz.size; ++i) {
    const long double s = SinTheta(grid.dataset_qz[i]);
    const long double r1 = Fresnel(1, film, s, GetParam()).real();
    const long double r2 = Fresnel(film, substrate, s, GetParam()).real();
    const long double phase = 2 * (2 * kPi / kLambda) * std::sqrt(film * film - (1 - s * s)) * d;
    const long double mixed = 2 * r1 * r2 * std::cos(phase);
    const auto expected = static_cast<double>((r1 * r1 + r2 * r2 + mixed) / (1 + r1 * r1 * r2 * r2 + mixed));
    EXPECT_NEAR(curve[i], expected, 1e-13) << grid.dataset_qz[i];
  }
}

TEST_P(EachRay, ReflectionIsTotalBelowTheCriticalAngle) {
  // sin²θc = 1 - n² = 2 delta - delta²
  const double delta = 2e-5, qc = 4 * M_PI / kLambda * std::sqrt(2 * delta - delta * delta);
  CState bare = MakeState({{.delta = delta}, {}});
  CState film = MakeState({{.delta = delta}, {.thickness = 150, .delta = 1e-5}, {}});
  testing::UsePi(bare, GetParam());
  testing::UsePi(film, GetParam());
  const CSolution grid = MakeGrid(0.01 * qc, 0.999 * qc, 100);
  for (const CState& state : {bare, film}) {
    for (double reflected : Curve(state, grid)) EXPECT_NEAR(reflected, 1.0, 1e-9);
  }
  const CArray<double> above = Curve(bare, MakeGrid({1.05 * qc}));
  EXPECT_LT(above[0], 0.5);
}

// In the pi ray nothing is reflected at tan θ = 1/n (grazing angle): Brewster.
TEST(Fresnel, PiVanishesAtBrewstersAngle) {
  CState state = MakeState({{.delta = 0.2}, {}});
  testing::UsePi(state);
  const double sine = std::sin(std::atan(1 / 0.8));
  EXPECT_LT(Curve(state, MakeGrid({4 * M_PI / kLambda * sine}))[0], 1e-30);
}

// For grazing x-rays sigma and pi hardly differ: the difference is of the order of the intensity times θ².
TEST(Fresnel, SigmaAndPiMeetAtGrazingAngles) {
  CState sigma = MakeState({{.delta = 7.6e-6, .beta = 1.7e-7}, {}});
  CState pi = sigma;
  testing::UsePi(pi);
  const CSolution grid = MakeGrid({0.05, 0.1});
  const CArray<double> a = Curve(sigma, grid), b = Curve(pi, grid);
  for (int i = 0; i < 2; ++i) {
    const auto s = static_cast<double>(SinTheta(grid.dataset_qz[i]));
    EXPECT_NEAR(b[i] / a[i], 1 - 4 * s * s, s * s);  // cos²2θ in first order
  }
}

// Circular light and light at 45 degrees are half sigma and half pi for an algorithm that adds intensities.
TEST(Fresnel, AnEqualMixtureReflectsTheMean) {
  CState mixed = MakeState({{.delta = 0.2, .beta = 0.1}, {}});
  CState sigma = mixed, pi = mixed;
  testing::UsePi(pi);
  mixed.ray1sigmare = M_SQRT1_2;
  mixed.ray1piim = -M_SQRT1_2;
  const CSolution grid = MakeGrid({2.0, 5.0});
  const CArray<double> a = Curve(sigma, grid), b = Curve(pi, grid), m = Curve(mixed, grid);
  for (int i = 0; i < 2; ++i) EXPECT_NEAR(m[i], (a[i] + b[i]) / 2, 1e-15);
}

}  // namespace
}  // namespace tolvik
