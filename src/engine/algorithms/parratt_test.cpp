// SPDX-License-Identifier: GPL-2.0-or-later
#include <complex>
#include <limits>

#include "engine/algorithms/parratt.tpp"
#include "support/precisions.h"
#include "support/stacks.h"

namespace tolvik::engine {
namespace {

using testing::Epsilon;
using testing::MakeProfile;

constexpr double kSigmaFirst[8] = {1, 0, 0, 0, 0, 0, 1, 0};  // ray one sigma, ray two pi
constexpr double kK0 = 4.08;                                 // Å⁻¹, near λ 1.54 Å
using Reference = std::complex<long double>;

/// Three operations on one profile at one angle.
template <class T>
struct Recursion {
  Profile<T> profile;
  ParrattVectors<T> v;

  Recursion(std::initializer_list<testing::Slab> slabs, double theta, double sign)
      : profile(MakeProfile<T>(slabs)) {
    CalcWavevectors<T>(profile, v.kz, T(kK0), T(theta), T(sign));
    CalcFresnelCoefficients<T>(profile, v.kz, v.rpi, v.rsigma);
  }
  double Intensity(const double* polarisation, int ray) {
    return static_cast<double>(CalcParrattIntensity<T>(profile, v.kz, v.rpi, v.rsigma, polarisation, ray));
  }
};

template <class T>
void ExpectClose(const Cplx<T>& value, const Reference& expected, double tolerance) {
  EXPECT_NEAR(static_cast<double>(value.real()), static_cast<double>(expected.real()), tolerance);
  EXPECT_NEAR(static_cast<double>(value.imag()), static_cast<double>(expected.imag()), tolerance);
}

template <class T>
class Parratt : public ::testing::Test {};
TYPED_TEST_SUITE(Parratt, testing::Precisions, testing::PrecisionNames);

// Strong contrast, so that n² - cos²θ does not cancel and float can be compared closely.
constexpr testing::Slab kSubstrate{.delta = 0.3, .beta = 0.2};
constexpr testing::Slab kVacuum{};
constexpr double kTheta = 0.7;

Reference Wavevector(const Reference& n, long double theta) {
  const long double c = std::cos(theta);
  return static_cast<long double>(kK0) * std::sqrt(n * n - c * c);
}

TYPED_TEST(Parratt, WavevectorIsThatOfSnellsLaw) {
  using T = TypeParam;
  Recursion<T> r({kSubstrate, kVacuum}, kTheta, 0);
  const double tolerance = 8 * Epsilon<T>() * kK0;
  ExpectClose<T>(r.v.kz[0], Wavevector({0.7L, 0.2L}, kTheta), tolerance);
  ExpectClose<T>(r.v.kz[1], {kK0 * std::sin(0.7L), 0}, tolerance);  // vacuum: k0 sin θ
}

TYPED_TEST(Parratt, MagneticShiftHasOppositeSignsInDeltaAndBeta) {
  using T = TypeParam;
  const long double c = std::cos(static_cast<long double>(kTheta));
  for (double sign : {1.0, -1.0}) {
    Recursion<T> r({{.delta = 0.3, .beta = 0.2, .ddelta = 0.05, .dbeta = 0.03}, kVacuum}, kTheta, sign);
    ExpectClose<T>(r.profile[0].scalarindex, {0.7L + 0.05L * c * sign, 0.2L - 0.03L * c * sign},
                   4 * Epsilon<T>());
  }
}

TYPED_TEST(Parratt, WithoutSignTheMagneticConstantsHaveNoEffect) {
  using T = TypeParam;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  Recursion<T> bare({kSubstrate, kVacuum}, kTheta, 0);
  Recursion<T> magnetic({{.delta = 0.3, .beta = 0.2, .ddelta = nan, .dbeta = 1e300}, kVacuum}, kTheta, 0);
  EXPECT_EQ(bare.v.kz[0], magnetic.v.kz[0]);
  EXPECT_EQ(bare.Intensity(kSigmaFirst, 1), magnetic.Intensity(kSigmaFirst, 1));
}

TYPED_TEST(Parratt, SwappingTheSignChangesNothingWithoutMagneticConstants) {
  using T = TypeParam;
  Recursion<T> plus({kSubstrate, kVacuum}, kTheta, 1);
  Recursion<T> minus({kSubstrate, kVacuum}, kTheta, -1);
  EXPECT_EQ(plus.v.kz[0], minus.v.kz[0]);
  EXPECT_EQ(plus.Intensity(kSigmaFirst, 2), minus.Intensity(kSigmaFirst, 2));
}

// At normal incidence cos θ is 0 within rounding (π/2 itself is rounded).
TYPED_TEST(Parratt, SwappingTheSignChangesNothingAtNormalIncidence) {
  using T = TypeParam;
  const testing::Slab magnetic{.delta = 0.3, .beta = 0.2, .ddelta = 0.05, .dbeta = 0.03};
  const double normal = 1.5707963267948966;
  Recursion<T> plus({magnetic, kVacuum}, normal, 1);
  Recursion<T> minus({magnetic, kVacuum}, normal, -1);
  EXPECT_NEAR(plus.Intensity(kSigmaFirst, 1), minus.Intensity(kSigmaFirst, 1), 4 * Epsilon<T>());
}

// r = (a - b) / (a + b) and p = (N² a - M² b) / (N² a + M² b): upper minus lower over their sum.
TYPED_TEST(Parratt, FresnelCoefficientsAreUpperMinusLower) {
  using T = TypeParam;
  Recursion<T> r({kSubstrate, kVacuum}, kTheta, 0);
  const Reference n(0.7L, 0.2L);
  const Reference a = Wavevector(1, kTheta), b = Wavevector(n, kTheta);
  ExpectClose<T>(r.v.rsigma[0], (a - b) / (a + b), 16 * Epsilon<T>());
  ExpectClose<T>(r.v.rpi[0], (n * n * a - b) / (n * n * a + b), 16 * Epsilon<T>());
}

TYPED_TEST(Parratt, RoughnessMultipliesByTheFactorOfBothWavevectors) {
  using T = TypeParam;
  const double sigma = 0.3;
  Recursion<T> smooth({kSubstrate, kVacuum}, kTheta, 0);
  Recursion<T> rough({{.delta = 0.3, .beta = 0.2, .sigma = sigma}, kVacuum}, kTheta, 0);
  const Reference a = Wavevector(1, kTheta), b = Wavevector({0.7L, 0.2L}, kTheta);
  const Reference factor = std::exp(static_cast<long double>(-2 * sigma * sigma) * a * b);
  const auto times = [&](const Cplx<T>& r) {
    return factor * Reference(static_cast<long double>(static_cast<double>(r.real())),
                              static_cast<long double>(static_cast<double>(r.imag())));
  };
  ExpectClose<T>(rough.v.rsigma[0], times(smooth.v.rsigma[0]), 16 * Epsilon<T>());
  ExpectClose<T>(rough.v.rpi[0], times(smooth.v.rpi[0]), 16 * Epsilon<T>());
}

// With its roughness factor the product of these wavevectors would be infinite in float and double, and
// exp(-0 · ∞) NaN.
TYPED_TEST(Parratt, ASmoothInterfaceIsNotMultipliedAtAll) {
  using T = TypeParam;
  const double large = std::is_same_v<T, float> ? 1e30 : 1e200;
  Profile<T> profile = MakeProfile<T>({kVacuum, kVacuum});
  ParrattVectors<T> v;
  v.kz.Append(Cplx<T>(T(large)));
  v.kz.Append(Cplx<T>(T(3 * large)));
  CalcFresnelCoefficients<T>(profile, v.kz, v.rpi, v.rsigma);
  EXPECT_NEAR(static_cast<double>(real(v.rsigma[0])), 0.5, 2 * Epsilon<T>());
  EXPECT_NEAR(static_cast<double>(real(v.rpi[0])), 0.5, 2 * Epsilon<T>());
}

TYPED_TEST(Parratt, TwoEntriesReflectAsTheirOneInterface) {
  using T = TypeParam;
  Recursion<T> r({kSubstrate, {.thickness = 1e9}}, kTheta, 0);
  EXPECT_EQ(r.Intensity(kSigmaFirst, 1), static_cast<double>(norm(r.v.rsigma[0]) * T(1.0)));
  EXPECT_EQ(r.Intensity(kSigmaFirst, 2), static_cast<double>(norm(r.v.rpi[0]) * T(1.0)));
}

TYPED_TEST(Parratt, TheSharesOfSigmaAndPiAddAsIntensities) {
  using T = TypeParam;
  const double mixed[8] = {0.3, 0.4, 0, 2, 0, 0, 0, 0};  // |sigma|² = 0.25, |pi|² = 4
  Recursion<T> r({kSubstrate, {.thickness = 0.5, .delta = 0.1, .beta = 0.05}, kVacuum}, kTheta, 0);
  const double expected = 0.25 * r.Intensity(kSigmaFirst, 1) + 4 * r.Intensity(kSigmaFirst, 2);
  EXPECT_NEAR(r.Intensity(mixed, 1), expected, 8 * Epsilon<T>() * expected);
  EXPECT_EQ(r.Intensity(mixed, 2), 0.0);
  EXPECT_EQ(r.Intensity(mixed, 7), 0.0) << "any ray but 1 is the second";
}

// One film: (r1 + r0 E) / (1 + r1 r0 E) with E = exp(2 i kz d).
TYPED_TEST(Parratt, OneFilmInterferesAsTheRecursionSays) {
  using T = TypeParam;
  const double d = 0.8;
  Recursion<T> r({kSubstrate, {.thickness = d, .delta = 0.1, .beta = 0.05}, kVacuum}, kTheta, 0);
  const Reference a = Wavevector(1, kTheta), f = Wavevector({0.9L, 0.05L}, kTheta),
                  b = Wavevector({0.7L, 0.2L}, kTheta);
  const Reference E = std::exp(Reference(0, 2) * f * static_cast<long double>(d));
  const Reference r0 = (f - b) / (f + b), r1 = (a - f) / (a + f);
  const Reference Y = (r1 + r0 * E) / (1.0L + r1 * r0 * E);
  EXPECT_NEAR(r.Intensity(kSigmaFirst, 1), static_cast<double>(std::norm(Y)), 64 * Epsilon<T>());
}

// Thicknesses of substrate and ambient have no effect, nor has the roughness of the ambient.
TYPED_TEST(Parratt, TheOutermostThicknessesAreNotRead) {
  using T = TypeParam;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const testing::Slab film{.thickness = 0.5, .delta = 0.1, .beta = 0.05};
  Recursion<T> clean({kSubstrate, film, kVacuum}, kTheta, 0);
  Recursion<T> odd({{.thickness = nan, .delta = 0.3, .beta = 0.2}, film, {.thickness = nan, .sigma = nan}},
                   kTheta, 0);
  EXPECT_EQ(clean.Intensity(kSigmaFirst, 1), odd.Intensity(kSigmaFirst, 1));
}

// q = 0 over vacuum: kz is exactly 0 in both entries.
TYPED_TEST(Parratt, AZeroWavevectorIsLiftedInDoubleAndLongDoubleOnly) {
  using T = TypeParam;
  Recursion<T> r({kVacuum, kVacuum}, 0, 0);
  const auto re = static_cast<double>(real(r.v.kz[0]));
  EXPECT_EQ(static_cast<double>(imag(r.v.kz[0])), 0.0);
  if (std::is_same_v<T, double> || std::is_same_v<T, long double>) {
    EXPECT_EQ(re, 1e-100);
    EXPECT_EQ(r.Intensity(kSigmaFirst, 1), 0.0);
  } else {
    EXPECT_EQ(re, 0.0);
    EXPECT_TRUE(std::isnan(r.Intensity(kSigmaFirst, 1)));  // 0 / 0
  }
}

// Below the critical angle without absorption kz is purely imaginary; the imaginary part stays.
TYPED_TEST(Parratt, LiftingKeepsTheImaginaryPart) {
  using T = TypeParam;
  Recursion<T> r({{.delta = 0.3}, kVacuum}, 0.1, 0);
  const long double c = std::cos(0.1L);
  EXPECT_NEAR(static_cast<double>(imag(r.v.kz[0])), static_cast<double>(kK0 * std::sqrt(c * c - 0.49L)),
              16 * Epsilon<T>());
  EXPECT_EQ(static_cast<double>(real(r.v.kz[0])), NumberTraits<T>::lifts_zero_kz ? 1e-100 : 0.0);
}

TYPED_TEST(Parratt, NonFiniteValuesTravelIntoTheResult) {
  using T = TypeParam;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  Recursion<T> r({kSubstrate, {.thickness = nan, .delta = 0.1}, kVacuum}, kTheta, 0);
  EXPECT_TRUE(std::isnan(r.Intensity(kSigmaFirst, 1)));
}

TYPED_TEST(Parratt, FewerThanTwoEntriesReflectNothing) {
  using T = TypeParam;
  Recursion<T> none({}, kTheta, 1);
  Recursion<T> one({kSubstrate}, kTheta, 1);
  EXPECT_EQ(none.Intensity(kSigmaFirst, 1), 0.0);
  EXPECT_EQ(one.Intensity(kSigmaFirst, 1), 0.0);
}

TYPED_TEST(Parratt, VectorsOfTheRightSizeAreUsedAgain) {
  using T = TypeParam;
  Profile<T> profile = MakeProfile<T>({kSubstrate, kVacuum, kVacuum});
  ParrattVectors<T> v;
  CalcWavevectors<T>(profile, v.kz, T(kK0), T(0.1), T(0.0));
  CalcFresnelCoefficients<T>(profile, v.kz, v.rpi, v.rsigma);
  const auto* kz = v.kz.data;
  const auto* rpi = v.rpi.data;
  CalcWavevectors<T>(profile, v.kz, T(kK0), T(0.2), T(0.0));
  CalcFresnelCoefficients<T>(profile, v.kz, v.rpi, v.rsigma);
  EXPECT_EQ(v.kz.data, kz);
  EXPECT_EQ(v.rpi.data, rpi);
  EXPECT_EQ(v.rsigma.size, 2);
}

}  // namespace
}  // namespace tolvik::engine
