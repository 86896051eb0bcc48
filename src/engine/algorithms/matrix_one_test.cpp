// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/algorithms/matrix_one.tpp"

#include <gtest/gtest.h>

#include "engine/algorithms/parratt.tpp"
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

template <class T>
Pair MatrixOne(const Profile<T>& profile, double theta, double k0, bool transmission = false,
               const double* rays = kSigmaThenPi) {
  T first, second;
  CalcMatrixOne<T>({profile, transmission}, T(theta), T(0.0), T(0.0), T(k0), true, second, first, rays,
                   T(5e-05));
  return {static_cast<double>(first), static_cast<double>(second)};
}

template <class T>
Pair Parratt(Profile<T> profile, double theta, double k0) {
  CArray<Cplx<T>> kz, rpi, rsigma;
  CalcWavevectors<T>(profile, kz, T(k0), T(theta), T(0.0));
  CalcFresnelCoefficients<T>(profile, kz, rpi, rsigma);
  return {static_cast<double>(CalcParrattIntensity<T>(profile, kz, rpi, rsigma, kSigmaThenPi, 1)),
          static_cast<double>(CalcParrattIntensity<T>(profile, kz, rpi, rsigma, kSigmaThenPi, 2))};
}

void ExpectSame(const Pair& a, const Pair& b, double relative) {
  EXPECT_NEAR(a.first, b.first, relative * b.first);
  EXPECT_NEAR(a.second, b.second, relative * b.second);
}

template <class T>
class MatrixOneOf : public ::testing::Test {
 public:
  static double Tolerance() { return std::is_same_v<T, float> ? 2e-2 : 1e-10; }
};
using NumberTypes = ::testing::Types<float, double, long double, CNumber>;
TYPED_TEST_SUITE(MatrixOneOf, NumberTypes);

TYPED_TEST(MatrixOneOf, EqualsTheParrattRecursionForPureRays) {
  using T = TypeParam;
  for (double sigma : {0.0, 3.0}) {
    const auto profile =
        MakeProfile<T>({{0, 0.03, 0.01, sigma}, {25, 0.06, 0.02, sigma}, {40, 0.01, 0.004, sigma}, kVacuum});
    for (double theta : {0.15, 0.4, 0.7}) {
      ExpectSame(MatrixOne<T>(profile, theta, 0.05), Parratt<T>(profile, theta, 0.05), this->Tolerance());
    }
  }
}

TYPED_TEST(MatrixOneOf, IsotropicTensorsEqualTheScalarIndex) {
  using T = TypeParam;
  auto scalar = MakeProfile<T>({{0, 0.03, 0.01, 2}, {25, 0.06, 0.02, 3}, kVacuum});
  auto tensor = scalar;
  for (auto& layer : tensor) layer.magnetic = 1;
  ExpectSame(MatrixOne<T>(tensor, 0.4, 0.05), MatrixOne<T>(scalar, 0.4, 0.05), this->Tolerance());
}

TEST(MatrixOne, IsotropicTensorOfAMagneticEntryBeatsTheScalarIndex) {
  auto profile = MakeProfile<double>({{0, 0.03, 0.01}, kVacuum});
  profile[0].magnetic = 1;
  const std::complex<double> n(0.9, 0.05);
  for (int i = 0; i < 3; ++i) profile[0].Epsilon(i, i) = n * n;
  const auto other = MakeProfile<double>({{0, 0.1, 0.05}, kVacuum});
  ExpectSame(MatrixOne(profile, 0.3, 0.4), MatrixOne(other, 0.3, 0.4), 1e-13);
}

TEST(MatrixOne, OneEntryReflectsNothingAndTransmitsAll) {
  const auto profile = MakeProfile<double>({{0, 0.002, 0.001}});
  const Pair r = MatrixOne(profile, 0.3, 0.4), t = MatrixOne(profile, 0.3, 0.4, true);
  EXPECT_NEAR(r.first, 0, 1e-28);
  EXPECT_NEAR(r.second, 0, 1e-28);
  EXPECT_NEAR(t.first, 1, 1e-13);
  EXPECT_NEAR(t.second, 1, 1e-13);
}

TEST(MatrixOne, NoEntryIsNoObstacle) {
  const Profile<double> profile;
  EXPECT_EQ(MatrixOne(profile, 0.3, 0.4).first, 0.0);
  EXPECT_EQ(MatrixOne(profile, 0.3, 0.4, true).second, 1.0);
}

TEST(MatrixOne, TwoEntriesHaveNoPropagation) {
  // Fresnel amplitudes of one interface; the thicknesses of both half spaces have no effect.
  const auto profile = MakeProfile<double>({{123, 0.05, 0.02}, {77, 0, 0}});
  const double theta = 0.35;
  const std::complex<double> n(0.95, 0.02), w = std::sqrt(n * n - std::cos(theta) * std::cos(theta));
  const double s = std::sin(theta);
  const auto reflected = MatrixOne(profile, theta, 0.4), transmitted = MatrixOne(profile, theta, 0.4, true);
  EXPECT_NEAR(reflected.first, std::norm((s - w) / (s + w)), 1e-14);
  EXPECT_NEAR(reflected.second, std::norm((n * n * s - w) / (n * n * s + w)), 1e-14);
  EXPECT_NEAR(transmitted.first, std::norm(2 * s / (s + w)), 1e-14);
  EXPECT_NEAR(transmitted.second, std::norm(2.0 * n * s / (n * n * s + w)), 1e-13);
}

TEST(MatrixOne, ZeroThicknessScalarEntryRepeatsThePropagationAbove) {
  const Slab film{20, 0.06, 0.02}, empty{0, 0.06, 0.02}, twice{40, 0.06, 0.02};
  const auto odd = MakeProfile<double>({{0, 0.03, 0.01}, empty, film, kVacuum});
  const auto thick = MakeProfile<double>({{0, 0.03, 0.01}, twice, kVacuum});
  ExpectSame(MatrixOne(odd, 0.4, 0.1), MatrixOne(thick, 0.4, 0.1), 1e-12);
}

TEST(MatrixOne, ZeroThicknessScalarEntryUnderTheAmbientLosesTheResult) {
  const auto profile = MakeProfile<double>({{0, 0.03, 0.01}, {20, 0.06, 0.02}, {0, 0.02, 0.01}, kVacuum});
  EXPECT_TRUE(std::isnan(MatrixOne(profile, 0.4, 0.1).first));
  EXPECT_TRUE(std::isnan(MatrixOne(profile, 0.4, 0.1, true).second));
}

// The ambient is calculated first: a general tensor there writes the propagation of thickness 0, the
// identity.
TEST(MatrixOne, ZeroThicknessScalarEntryUnderATensorAmbientIsTheIdentity) {
  const Slab substrate{0, 0.03, 0.01}, film{20, 0.06, 0.02}, empty{0, 0.02, 0.01}, ambient{0, 0.01, 0};
  auto plain = MakeProfile<double>({substrate, film, ambient});
  auto odd = MakeProfile<double>({substrate, film, empty, ambient});
  for (auto* profile : {&plain, &odd}) {
    profile->Last().magnetic = 1;
    profile->Last().Epsilon(2, 2) = 0.97;
    profile->Last().Epsilon(0, 2) = 0.01;
  }
  ExpectSame(MatrixOne(odd, 0.4, 0.1), MatrixOne(plain, 0.4, 0.1), 1e-10);
}

TEST(MatrixOne, ZeroThicknessTensorEntryIsTheIdentity) {
  const auto plain = MakeProfile<double>({{0, 0.03, 0.01}, {20, 0.06, 0.02}, kVacuum});
  for (const double off_diagonal : {0.0, 0.01}) {  // tetragonal, then anisotropic
    for (const bool below : {true, false}) {
      const Slab film{20, 0.06, 0.02}, empty{0, 0.02, 0.01};
      auto odd = below ? MakeProfile<double>({{0, 0.03, 0.01}, empty, film, kVacuum})
                       : MakeProfile<double>({{0, 0.03, 0.01}, film, empty, kVacuum});
      CLayer<double>& layer = odd[below ? 1 : 2];
      layer.magnetic = 1;
      layer.Epsilon(2, 2) = {0.93, 0.02};
      layer.Epsilon(0, 2) = off_diagonal;
      ExpectSame(MatrixOne(odd, 0.4, 0.1), MatrixOne(plain, 0.4, 0.1), 1e-10);
    }
  }
}

TEST(MatrixOne, RaysAreAddedAsAmplitudes) {
  // Circular light of both helicities over a polar magnetic film: the sum is that of two pure rays, the parts
  // differ.
  const testing::Magnetisation polar{0, 0, true};
  const auto profile =
      MakeProfile<double>({{0, 0.03, 0.01}, {30, 0.05, 0.02, 0, 0.01, 0.006}, kVacuum}, polar);
  const double h = std::sqrt(0.5);
  const double circular[8] = {h, 0, 0, h, h, 0, 0, -h};
  const Pair c = MatrixOne(profile, 0.5, 0.4, false, circular), p = MatrixOne(profile, 0.5, 0.4);
  EXPECT_NEAR(c.first + c.second, p.first + p.second, 1e-15);
  EXPECT_GT(std::abs(c.first - c.second), 0.01 * c.first);
}

TEST(ApplyRoughness, FactorOfEachPairOfModes) {
  Matrix4<double> ones, plain;
  for (auto& row : ones.element) {
    for (auto& element : row) element = 1;
  }
  const std::complex<double> upper[4] = {0.5, {0.45, 0.02}, -0.5, {-0.4, -0.01}};
  const std::complex<double> lower[4] = {{0.3, 0.1}, {0.3, 0.1}, {-0.3, -0.1}, {-0.2, -0.1}};
  plain = ones;
  ApplyRoughness<double>(plain, 0.0, 0.7, upper, lower);
  ApplyRoughness<double>(ones, 3.0, 0.7, upper, lower);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      const auto expected = std::exp(-0.5 * 9.0 * 0.49 * std::pow(upper[c] - lower[r], 2));
      EXPECT_LT(std::abs(ones(r, c) - expected), 1e-15) << r << c;
      EXPECT_EQ(plain(r, c), 1.0);
    }
  }
}

TEST(ApplyRoughness, NoRoughnessLeavesInfinitiesAlone) {
  Matrix4<double> m;
  m(0, 0) = std::numeric_limits<double>::infinity();
  const std::complex<double> kappa[4] = {1.0, 1.0, -1.0, -1.0};
  ApplyRoughness<double>(m, 0.0, 1.0, kappa, kappa);
  EXPECT_TRUE(std::isinf(m(0, 0).real()));
  EXPECT_EQ(m(0, 0).imag(), 0.0);
}

}  // namespace
}  // namespace tolvik::engine
