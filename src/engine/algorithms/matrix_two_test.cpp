// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/algorithms/matrix_two.tpp"

#include <gtest/gtest.h>

#include "engine/algorithms/matrix_one.tpp"
#include "engine/number/cnumber.h"
#include "engine/number/complex.h"
#include "support/stacks.h"

namespace tolvik::engine {
namespace {

using testing::MakeProfile;
using testing::Slab;

const double kSigmaThenPi[8] = {1, 0, 0, 0, 0, 0, 1, 0};
const Slab kVacuum;

struct Pair {
  double first, second;
};

struct Direction {
  double gamma, phi;
};

template <class T>
Pair MatrixTwo(const Profile<T>& profile, double theta, double k0, Direction m, bool magnetic,
               bool transmission = false, const double* rays = kSigmaThenPi) {
  T first, second;
  CalcMatrixTwo<T>({profile, transmission}, T(theta), T(m.gamma), T(m.phi), T(k0), magnetic, second, first,
                   rays);
  return {static_cast<double>(first), static_cast<double>(second)};
}

template <class T>
Pair MatrixOne(const Profile<T>& profile, double theta, double k0, bool transmission, const double* rays) {
  T first, second;
  CalcMatrixOne<T>({profile, transmission}, T(theta), T(0.0), T(0.0), T(k0), true, second, first, rays,
                   T(1e-12));
  return {static_cast<double>(first), static_cast<double>(second)};
}

void ExpectSame(const Pair& a, const Pair& b, double relative) {
  EXPECT_NEAR(a.first, b.first, relative * b.first);
  EXPECT_NEAR(a.second, b.second, relative * b.second);
}

template <class T>
class MatrixTwoOf : public ::testing::Test {
 public:
  static double Tolerance() { return std::is_same_v<T, float> ? 2e-2 : 1e-11; }
};
using NumberTypes = ::testing::Types<float, double, long double, CNumber>;
TYPED_TEST_SUITE(MatrixTwoOf, NumberTypes);

TYPED_TEST(MatrixTwoOf, WithoutMagnetismEqualsAlgorithmOne) {
  using T = TypeParam;
  // The magnetic constants are set but not requested.
  const auto profile =
      MakeProfile<T>({{0, 0.03, 0.01, 4}, {25, 0.06, 0.02, 3, 0.01, 0.02}, {40, 0.01, 0.004, 2}, kVacuum});
  const double h = std::sqrt(0.5);
  const double mixed[8] = {h, 0, 0, h, 0.6, 0, 0.8, 0};
  for (bool transmission : {false, true}) {
    for (const double* rays : {kSigmaThenPi, mixed}) {
      ExpectSame(MatrixTwo<T>(profile, 0.4, 0.05, {30, 60}, false, transmission, rays),
                 MatrixOne<T>(profile, 0.4, 0.05, transmission, rays), this->Tolerance());
    }
  }
}

TYPED_TEST(MatrixTwoOf, MatricesWithoutMagnetismAreTheIsotropicOnes) {
  using T = TypeParam;
  const Cplx<T> n = FromDouble<T>({0.96, 0.03});
  Matrix4<T> P, D, P0, D0;
  Cplx<T> kappa[4] = {}, kappa0[4] = {};
  CalcMagneticMatrices<T>(P, D, kappa, T(0.3), T(0.7), T(0.4), T(0.2), T(30.0), n, Cplx<T>());
  CalcIsotropicMatrices<T>(P0, D0, kappa0, T(0.3), T(0.2), T(30.0), n);
  EXPECT_TRUE(kappa[0] == kappa0[0]);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      EXPECT_TRUE(P(r, c) == P0(r, c)) << r << c;
      EXPECT_TRUE(D(r, c) == D0(r, c)) << r << c;
    }
  }
}

TEST(MatrixTwo, ZeroThicknessLeavesP) {
  Matrix4<double> P, D;
  std::complex<double> kappa[4] = {0.0, 5.0, 6.0, 7.0};
  P(0, 2) = 9;
  CalcMagneticMatrices<double>(P, D, kappa, 0.3, 0.7, 0.4, 0.2, 0.0, 0.9, {0.01, 0.02});
  EXPECT_EQ(P(0, 2), 9.0);
  EXPECT_EQ(P(0, 0), 0.0);
  EXPECT_EQ(kappa[3], 7.0);
  const Slab film{20, 0.06, 0.02}, empty{0, 0.06, 0.02}, twice{40, 0.06, 0.02};
  const auto odd = MakeProfile<double>({{0, 0.03, 0.01}, empty, film, kVacuum});
  const auto thick = MakeProfile<double>({{0, 0.03, 0.01}, twice, kVacuum});
  ExpectSame(MatrixTwo(odd, 0.4, 0.1, {0, 0}, true), MatrixTwo(thick, 0.4, 0.1, {0, 0}, true), 1e-12);
}

TEST(MatrixTwo, PolarMagnetisationDoesNotReadGamma) {
  const auto profile = MakeProfile<double>({{0, 0.03, 0.01}, {30, 0.05, 0.02, 2, 0.01, 0.006}, kVacuum});
  const double h = std::sqrt(0.5);
  const double circular[8] = {h, 0, 0, h, h, 0, 0, -h};
  const Pair a = MatrixTwo(profile, 0.5, 0.4, {0, 0}, true, false, circular);
  const Pair b = MatrixTwo(profile, 0.5, 0.4, {77, 0}, true, false, circular);
  EXPECT_EQ(a.first, b.first);
  EXPECT_EQ(a.second, b.second);
  EXPECT_GT(std::abs(a.first - a.second), 0.01 * a.first);
}

TEST(MatrixTwo, RoughnessMultipliesByTwoFactors) {
  // One interface: the reflected amplitudes carry exp(-½σ²k0²((a+b)² - (a-b)²)) = exp(-2σ² kz_a kz_b).
  const auto smooth = MakeProfile<double>({{0, 0.05, 0.02}, kVacuum});
  const auto rough = MakeProfile<double>({{0, 0.05, 0.02, 4}, kVacuum});
  const double theta = 0.4, k0 = 0.3;
  const std::complex<double> n(0.95, 0.02);
  const std::complex<double> ab = std::sin(theta) * std::sqrt(n * n - std::cos(theta) * std::cos(theta));
  const double factor = std::norm(std::exp(-2 * 16 * k0 * k0 * ab));
  const Pair a = MatrixTwo(rough, theta, k0, {0, 0}, true), b = MatrixTwo(smooth, theta, k0, {0, 0}, true);
  ExpectSame(a, {factor * b.first, factor * b.second}, 1e-12);
}

TEST(MatrixTwo, SmallAnglesCountAsTheBound) {
  const auto profile = MakeProfile<double>({{0, 0.03, 0.01}, {30, 0.05, 0.02, 2, 0.01, 0.006}, kVacuum});
  EXPECT_EQ(MatrixTwo(profile, 0, 0.4, {0, 0}, true).first,
            MatrixTwo(profile, 1e-4, 0.4, {0, 0}, true).first);
}

TEST(MatrixTwo, NoEntryIsNoObstacle) {
  EXPECT_EQ(MatrixTwo(Profile<double>(), 0.3, 0.4, {0, 0}, true).first, 0.0);
}

// Reflected intensity of circular light with algorithm one and a tensor along m; the same with two.
void ExpectFirstOrderAgreement(Direction one, Direction two) {
  const double h = std::sqrt(0.5);
  const double rays[8] = {h, 0, 0, h, 0, 0, 1, 0};
  for (const double strength : {1e-3, 1e-4}) {
    const Slab film{30, 0.05, 0.02, 0, strength, 0.6 * strength};
    const auto with = MakeProfile<double>({{0, 0.03, 0.01}, film, kVacuum}, {one.gamma, one.phi, true});
    const auto without = MakeProfile<double>({{0, 0.03, 0.01}, film, kVacuum});
    const Pair a = MatrixOne(with, 0.6, 0.3, false, rays);
    const Pair b = MatrixTwo(with, 0.6, 0.3, two, true, false, rays);
    const Pair plain = MatrixOne(without, 0.6, 0.3, false, rays);
    // The largest of the two effects is of first order; the difference of the algorithms must be of second.
    const double effect = std::abs(a.first / plain.first - 1) + std::abs(a.second / plain.second - 1);
    EXPECT_GT(effect, 0.05 * strength);
    EXPECT_LT(std::abs(a.first / b.first - 1), 120 * strength * strength);
    EXPECT_LT(std::abs(a.second / b.second - 1), 120 * strength * strength);
  }
}

TEST(MatrixTwo, AgreesWithTheTensorToFirstOrderForPolarMagnetisation) {
  ExpectFirstOrderAgreement({0, 0}, {0, 0});
}

TEST(MatrixTwo, AgreesWithTheTensorToFirstOrderForLongitudinalMagnetisation) {
  ExpectFirstOrderAgreement({90, 90}, {90, 90});
}

TEST(MatrixTwo, TransversePartHasTheOppositeSign) {
  // A turn of a thousandth of a degree out of x, where the general branch of algorithm one loses its digits.
  ExpectFirstOrderAgreement({0.001, 90}, {179.999, 90});
}

}  // namespace
}  // namespace tolvik::engine
