// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/algorithms/amplitudes.tpp"

#include <gtest/gtest.h>

#include <random>

#include "engine/number/cnumber.h"
#include "engine/number/complex.h"

namespace tolvik::engine {
namespace {

using Double = std::complex<double>;

Matrix4<double> SomeMatrix() {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> uniform(-1, 1);
  Matrix4<double> m;
  for (auto& row : m.element) {
    for (auto& element : row) {
      const double real = uniform(random);
      element = Double(real, uniform(random));
    }
  }
  return m;
}

// Amplitudes (t0, t1) in the substrate that give the incident wave (s, p), by the rule of Cramer.
void SolveIncident(const Matrix4<double>& m, Double s, Double p, Double& t0, Double& t1) {
  const Double delta = m(0, 0) * m(1, 1) - m(1, 0) * m(0, 1);
  t0 = (s * m(1, 1) - p * m(1, 0)) / delta;
  t1 = (p * m(0, 0) - s * m(0, 1)) / delta;
}

const double kMixed[4] = {0.3, -0.2, 0.5, 0.7};

TEST(Amplitudes, ReflectionIsWhatTheSubstrateWavesSendUp) {
  const Matrix4<double> m = SomeMatrix();
  Double t0, t1;
  SolveIncident(m, {0.3, -0.2}, {0.5, 0.7}, t0, t1);
  const double expected = std::norm(t0 * m(0, 2) + t1 * m(1, 2)) + std::norm(t0 * m(0, 3) + t1 * m(1, 3));
  EXPECT_NEAR(CalcRayIntensity<double>(m, false, kMixed), expected, 1e-13 * expected);
}

TEST(Amplitudes, TransmissionOfPureRaysIsThePlainInverse) {
  const Matrix4<double> m = SomeMatrix();
  const double sigma[4] = {0.6, 0.8, 0, 0}, pi[4] = {0, 0, 0.6, -0.8};
  Double t0, t1;
  SolveIncident(m, {0.6, 0.8}, 0, t0, t1);
  EXPECT_NEAR(CalcRayIntensity<double>(m, true, sigma), std::norm(t0) + std::norm(t1), 1e-12);
  SolveIncident(m, 0, {0.6, -0.8}, t0, t1);
  EXPECT_NEAR(CalcRayIntensity<double>(m, true, pi), std::norm(t0) + std::norm(t1), 1e-12);
}

TEST(Amplitudes, TransmissionOfAMixedRayHasTheOtherSign) {
  const Matrix4<double> m = SomeMatrix();
  Double t0, t1;
  SolveIncident(m, {0.3, -0.2}, {0.5, 0.7}, t0, t1);
  Double other, unused;
  SolveIncident(m, {-0.3, 0.2}, {0.5, 0.7}, other, unused);
  const double expected = std::norm(t1) + std::norm(other);
  EXPECT_NEAR(CalcRayIntensity<double>(m, true, kMixed), expected, 1e-12 * expected);
  EXPECT_GT(std::abs(std::norm(t1) + std::norm(t0) - expected), 0.1 * expected);
}

TEST(Amplitudes, AllNumberTypesAgree) {
  const Matrix4<double> m = SomeMatrix();
  const auto convert = [&m]<class T>(T) {
    Matrix4<T> result;
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 4; ++c) result(r, c) = FromDouble<T>(m(r, c));
    }
    return result;
  };
  for (bool transmission : {false, true}) {
    const double expected = CalcRayIntensity<double>(m, transmission, kMixed);
    EXPECT_NEAR(static_cast<double>(CalcRayIntensity<float>(convert(0.0f), transmission, kMixed)), expected,
                1e-4);
    EXPECT_NEAR(static_cast<double>(CalcRayIntensity<long double>(convert(0.0L), transmission, kMixed)),
                expected, 1e-12);
    EXPECT_NEAR(static_cast<double>(CalcRayIntensity<CNumber>(convert(CNumber()), transmission, kMixed)),
                expected, 1e-12);
  }
}

TEST(Amplitudes, SingularMatrixGivesNoNumber) {
  EXPECT_FALSE(std::isfinite(CalcRayIntensity<double>(Matrix4<double>(), false, kMixed)));
}

}  // namespace
}  // namespace tolvik::engine
