// SPDX-License-Identifier: GPL-2.0-or-later
// Our complex pair against std::complex<double>, the reference for branch cuts, signed zeros and infinities.
#include "engine/number/complex.h"

#include <gtest/gtest.h>

#include <complex>
#include <limits>
#include <random>
#include <vector>

#include "engine/number/cnumber.h"

namespace tolvik::engine {
namespace {

using Ours = Complex<CNumber>;
using Theirs = std::complex<double>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

Ours Make(const Theirs& z) {
  return {CNumber(z.real()), CNumber(z.imag())};
}

void ExpectPart(double ours, double theirs, double tolerance) {
  if (std::isnan(theirs)) {
    EXPECT_TRUE(std::isnan(ours)) << ours;
  } else if (std::isinf(theirs) || theirs == 0) {
    EXPECT_EQ(ours, theirs);
    EXPECT_EQ(std::signbit(ours), std::signbit(theirs));
  } else {
    EXPECT_NEAR(ours, theirs, tolerance);
  }
}

// The platform's complex functions err by a few units in the last place of the modulus.
void ExpectSame(const Ours& ours, const Theirs& theirs) {
  const double modulus = std::isfinite(std::abs(theirs)) ? std::abs(theirs) : 1.0;
  const double tolerance = 8 * std::numeric_limits<double>::epsilon() * modulus;
  ExpectPart(static_cast<double>(ours.real()), theirs.real(), tolerance);
  ExpectPart(static_cast<double>(ours.imag()), theirs.imag(), tolerance);
}

std::vector<Theirs> SpecialNumbers() {
  const double parts[] = {0.0, -0.0, 1.0, -1.0, 0.5, -2.0, kInf, -kInf, kNan};
  std::vector<Theirs> numbers;
  for (double x : parts) {
    for (double y : parts) numbers.emplace_back(x, y);
  }
  return numbers;
}

std::vector<Theirs> RandomNumbers() {
  constexpr unsigned kSeed = 20;
  std::mt19937_64 random(kSeed);
  std::uniform_real_distribution<double> part(-3, 3);
  std::vector<Theirs> numbers;
  for (int i = 0; i < 2000; ++i) numbers.emplace_back(part(random), part(random));
  return numbers;
}

std::vector<Theirs> AllNumbers() {
  std::vector<Theirs> numbers = SpecialNumbers();
  for (const Theirs& z : RandomNumbers()) numbers.push_back(z);
  return numbers;
}

TEST(Complex, SquareRootTakesThePrincipalBranch) {
  for (const Theirs& z : AllNumbers()) {
    SCOPED_TRACE(::testing::Message() << z);
    ExpectSame(sqrt(Make(z)), std::sqrt(z));
  }
}

// A negative real number with an imaginary part of -0 lies below the cut.
TEST(Complex, SquareRootTellsTheSidesOfTheCutBySignBit) {
  EXPECT_EQ(sqrt(Make({-4, 0.0})), Make({0, 2}));
  EXPECT_EQ(sqrt(Make({-4, -0.0})), Make({0, -2}));
  EXPECT_EQ(arg(Make({-4, -0.0})), -arg(Make({-4, 0.0})));
}

TEST(Complex, LogarithmTakesThePrincipalBranch) {
  for (const Theirs& z : AllNumbers()) {
    SCOPED_TRACE(::testing::Message() << z);
    const Theirs theirs = std::log(z);
    const Ours ours = log(Make(z));
    ExpectPart(static_cast<double>(ours.real()), theirs.real(), 2e-15);
    ExpectPart(static_cast<double>(ours.imag()), theirs.imag(), 2e-15);
  }
}

TEST(Complex, ExponentialAgrees) {
  for (const Theirs& z : AllNumbers()) {
    SCOPED_TRACE(::testing::Message() << z);
    ExpectSame(exp(Make(z)), std::exp(z));
  }
}

TEST(Complex, ModulusIsTheHypotenuse) {
  for (const Theirs& z : AllNumbers()) {
    SCOPED_TRACE(::testing::Message() << z);
    ExpectPart(static_cast<double>(abs(Make(z))), std::abs(z), 1e-15);
    ExpectPart(static_cast<double>(norm(Make(z))), std::norm(z), 1e-14);
  }
}

TEST(Complex, ProductsAndQuotientsAgree) {
  const std::vector<Theirs> numbers = SpecialNumbers();
  for (const Theirs& a : numbers) {
    for (const Theirs& b : numbers) {
      SCOPED_TRACE(::testing::Message() << a << b);
      ExpectSame(Make(a) * Make(b), a * b);
      ExpectSame(Make(a) / Make(b), a / b);
      ExpectSame(Make(a) + Make(b), a + b);
      ExpectSame(Make(a) - Make(b), a - b);
    }
  }
  const std::vector<Theirs> random = RandomNumbers();
  for (std::size_t i = 1; i < random.size(); ++i) {
    const Theirs& a = random[i - 1];
    const Theirs& b = random[i];
    SCOPED_TRACE(::testing::Message() << a << b);
    ExpectSame(Make(a) * Make(b), a * b);
    ExpectSame(Make(a) / Make(b), a / b);
  }
}

TEST(Complex, ARealOperandActsOnItsPartOnly) {
  for (const Theirs& z : SpecialNumbers()) {
    for (double x : {0.0, -0.0, 2.0, -3.0, kInf, kNan}) {
      SCOPED_TRACE(::testing::Message() << z << " " << x);
      ExpectSame(Make(z) + CNumber(x), z + x);
      ExpectSame(Make(z) - CNumber(x), z - x);
      ExpectSame(Make(z) * CNumber(x), z * x);
      ExpectSame(Make(z) / CNumber(x), z / x);
      ExpectSame(CNumber(x) + Make(z), x + z);
      ExpectSame(CNumber(x) - Make(z), x - z);
      ExpectSame(CNumber(x) * Make(z), x * z);
      ExpectSame(CNumber(x) / Make(z), x / z);
    }
  }
}

}  // namespace
}  // namespace tolvik::engine
