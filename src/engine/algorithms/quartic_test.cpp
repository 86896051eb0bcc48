// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/algorithms/quartic.tpp"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <random>

#include "engine/number/cnumber.h"
#include "engine/number/complex.h"

namespace tolvik::engine {
namespace {

using Double = std::complex<double>;
using Five = std::array<Double, 5>;  // a4, a3, a2, a1, a0
using Four = std::array<Double, 4>;

Five Expand(const Four& z) {
  Five a = {1, 0, 0, 0, 0};
  for (const Double& root : z) {
    for (std::size_t k = 4; k > 0; --k) a[k] -= root * a[k - 1];
  }
  return a;
}

template <class T>
Double ToDouble(const Cplx<T>& z) {
  return {static_cast<double>(z.real()), static_cast<double>(z.imag())};
}

template <class T>
Four Roots(const Five& a) {
  Cplx<T> roots[4];
  SolveModes<T>(FromDouble<T>(a[0]), FromDouble<T>(a[1]), FromDouble<T>(a[2]), FromDouble<T>(a[3]),
                FromDouble<T>(a[4]), roots);
  Four result;
  for (std::size_t i = 0; i < 4; ++i) result[i] = ToDouble<T>(roots[i]);
  return result;
}

// The change of a root when each coefficient changes by eps of its own size.
double RootTolerance(const Five& a, const Double& z, double eps) {
  double size = 0;
  Double slope = 0;
  for (std::size_t k = 0; k < 5; ++k) {
    const double power = 4.0 - static_cast<double>(k);
    size += std::abs(a[k]) * std::pow(std::abs(z), power);
    if (k < 4) slope += power * a[k] * std::pow(z, power - 1);
  }
  return 40 * eps * size / std::abs(slope);
}

void ExpectOrder(const Four& z) {
  const double upper = std::min(z[0].real(), z[1].real());
  const double lower = std::max(z[2].real(), z[3].real());
  EXPECT_GE(upper, lower);
  EXPECT_GE(z[0].imag(), z[1].imag());
  EXPECT_GE(z[2].imag(), z[3].imag());
}

template <class T>
class Quartic : public ::testing::Test {
 public:
  static double Epsilon() { return std::is_same_v<T, float> ? 1.2e-7 : 2.3e-16; }
};
using NumberTypes = ::testing::Types<float, double, long double, CNumber>;
TYPED_TEST_SUITE(Quartic, NumberTypes);

TYPED_TEST(Quartic, KnownRealRootsByFallingRealPart) {
  const Five a = Expand({1.0, 5.0, 2.0, 3.0});
  const Four z = Roots<TypeParam>(a);
  const Four expected = {5.0, 3.0, 2.0, 1.0};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_LE(std::abs(z[i] - expected[i]), RootTolerance(a, expected[i], this->Epsilon())) << i;
  }
}

TYPED_TEST(Quartic, PairsFallByImaginaryPart) {
  // ±1 ± 2i and a shift, so that neither shortcut is taken.
  const Five a = Expand({Double(1.5, -2), Double(1.5, 2), Double(-1, -3), Double(-1, 3)});
  const Four z = Roots<TypeParam>(a);
  ExpectOrder(z);
  const Four expected = {Double(1.5, 2), Double(1.5, -2), Double(-1, 3), Double(-1, -3)};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_LE(std::abs(z[i] - expected[i]), 100 * this->Epsilon()) << i;
}

TYPED_TEST(Quartic, BiquadraticRoots) {
  // (z² - 4)(z² + 9): β is exactly 0.
  const Four z = Roots<TypeParam>({1.0, 0.0, 5.0, 0.0, -36.0});
  const Four expected = {2.0, Double(0, 3), Double(0, -3), -2.0};
  for (std::size_t i : {0u, 3u}) EXPECT_LE(std::abs(z[i] - expected[i]), 10 * this->Epsilon()) << i;
  // The middle real parts are equal to rounding, so either may come first.
  EXPECT_LE(std::min(std::abs(z[1] - expected[1]), std::abs(z[1] - expected[2])), 10 * this->Epsilon());
  EXPECT_LE(std::min(std::abs(z[2] - expected[1]), std::abs(z[2] - expected[2])), 10 * this->Epsilon());
  EXPECT_LE(std::abs(z[1] + z[2]), 20 * this->Epsilon());
}

TYPED_TEST(Quartic, DoubleRootsAreLeftWhereTheSlopeVanishes) {
  // (z² - 4)²: α² = 4γ, S = 0, and f' = 0 at each start value.
  const Four z = Roots<TypeParam>({1.0, 0.0, -8.0, 0.0, 16.0});
  const Four expected = {2.0, 2.0, -2.0, -2.0};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(z[i], expected[i]) << i;
}

TYPED_TEST(Quartic, VanishingPTakesTheCubeRootOfQ) {
  // z⁴ + 8 z: α = γ = 0, so P = 0 and Q = -β²/8 = -8. Roots 1 ± i√3, 0, -2.
  const Four z = Roots<TypeParam>({1.0, 0.0, 0.0, 8.0, 0.0});
  const double root3 = 1.7320508075688772;
  const Four expected = {Double(1, root3), Double(1, -root3), 0.0, -2.0};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_LE(std::abs(z[i] - expected[i]), 20 * this->Epsilon()) << i;
}

TYPED_TEST(Quartic, RealCubeRootOfAPositiveNumber) {
  const Cplx<TypeParam> root = quartic::CubeRoot(Cplx<TypeParam>(TypeParam(27.0)));
  EXPECT_LE(std::abs(ToDouble<TypeParam>(root) - 3.0), 10 * this->Epsilon());
  EXPECT_EQ(static_cast<double>(root.imag()), 0.0);
}

TYPED_TEST(Quartic, PrincipalCubeRootElsewhere) {
  // -8 = 8 exp(iπ): the principal root is 2 exp(iπ/3) = 1 + i√3, not -2.
  const Cplx<TypeParam> root = quartic::CubeRoot(Cplx<TypeParam>(TypeParam(-8.0)));
  EXPECT_LE(std::abs(ToDouble<TypeParam>(root) - Double(1, 1.7320508075688772)), 10 * this->Epsilon());
}

TYPED_TEST(Quartic, LeadingZeroGivesNoNumber) {
  const Four z = Roots<TypeParam>({0.0, 1.0, 2.0, 3.0, 4.0});
  for (const Double& root : z) EXPECT_FALSE(std::isfinite(root.real()) && std::isfinite(root.imag()));
}

TYPED_TEST(Quartic, RandomQuarticsAgreeWithMultiPrecision) {
  std::mt19937 random(20240501);
  std::normal_distribution<double> normal;
  for (int trial = 0; trial < 300; ++trial) {
    Five a;
    // Rounded to float, so that all number types solve the same quartic.
    for (Double& x : a) x = {static_cast<float>(normal(random)), static_cast<float>(normal(random))};
    const Four z = Roots<TypeParam>(a);
    const Four reference = Roots<CNumber>(a);
    ExpectOrder(z);
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_LE(std::abs(z[i] - reference[i]), RootTolerance(a, reference[i], this->Epsilon()))
          << "trial " << trial << " root " << i;
    }
  }
}

TEST(QuarticMultiPrecision, ResidualsOfRandomQuarticsVanish) {
  std::mt19937 random(7);
  std::normal_distribution<double> normal;
  for (int trial = 0; trial < 100; ++trial) {
    Cplx<CNumber> a[5], z[4];
    for (auto& x : a) x = FromDouble<CNumber>({normal(random), normal(random)});
    SolveModes<CNumber>(a[0], a[1], a[2], a[3], a[4], z);
    for (const auto& root : z) {
      const Cplx<CNumber> f = (((a[0] * root + a[1]) * root + a[2]) * root + a[3]) * root + a[4];
      EXPECT_LT(static_cast<double>(abs(f)), 1e-55) << "trial " << trial;
    }
    // Vieta: no root is found twice.
    const Cplx<CNumber> sum = z[0] + z[1] + z[2] + z[3] + a[1] / a[0];
    EXPECT_LT(static_cast<double>(abs(sum)), 1e-55) << "trial " << trial;
  }
}

TEST(QuarticOrder, DoesNotDependOnThePath) {
  // The same roots through the biquadratic path and, moved by 1e-9, through Ferrari's.
  const Four z = {Double(0.3, 0.02), Double(-0.3, -0.02), Double(0.29, 0.05), Double(-0.29, -0.05)};
  const Four sorted = {z[2], z[0], z[1], z[3]};
  Four moved = z;
  for (Double& root : moved) root += 1e-9;
  const Four biquadratic = Roots<double>(Expand(z));
  const Four ferrari = Roots<double>(Expand(moved));
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(std::abs(biquadratic[i] - sorted[i]), 0, 1e-13) << i;
    EXPECT_NEAR(std::abs(ferrari[i] - sorted[i]), 0, 2e-9) << i;
  }
}

TEST(QuarticTinyBeta, KeepsBothRootsOfAPair) {
  // ±0.3(1 + 1e-3), ±0.3(1 - 1e-3), each moved so that β is of the size of one rounding error, as for a
  // magnetisation in the surface. The principal cube root alone gives their means.
  const Four z = {Double(0.3003, 0.002), Double(0.2997, 0.003), Double(-0.2997, -0.003),
                  Double(-0.3003, -0.002)};
  for (const Double shift : {Double(6e-17, 0), Double(-6e-17, 2e-17), Double(0, 5e-17)}) {
    Five a = Expand(z);
    a[3] += shift;
    const Four found = Roots<double>(a);
    EXPECT_NEAR(std::abs(found[0] - z[1]), 0, 1e-11);
    EXPECT_NEAR(std::abs(found[1] - z[0]), 0, 1e-11);
    EXPECT_NEAR(std::abs(found[2] - z[3]), 0, 1e-11);
    EXPECT_NEAR(std::abs(found[3] - z[2]), 0, 1e-11);
  }
}

}  // namespace
}  // namespace tolvik::engine
