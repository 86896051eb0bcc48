// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/number/cnumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "engine/number/complex.h"

namespace tolvik::engine {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

static_assert(Number<float> && Number<double> && Number<long double> && Number<CNumber>);

TEST(CNumber, ADoubleComesBackAsItWent) {
  std::vector<double> values = {0.0,  -0.0, 1.0, -1.0 / 3, 1e-310, 5e-324, 1.7976931348623157e308,
                                kInf, -kInf};
  std::mt19937_64 random(7);
  for (int i = 0; i < 1000; ++i) {
    const double mantissa = std::uniform_real_distribution<double>(-1, 1)(random);
    values.push_back(std::ldexp(mantissa, std::uniform_int_distribution<int>(-1000, 1000)(random)));
  }
  for (double x : values) {
    const auto back = static_cast<double>(CNumber(x));
    EXPECT_EQ(back, x);
    EXPECT_EQ(std::signbit(back), std::signbit(x));
  }
  EXPECT_TRUE(std::isnan(static_cast<double>(CNumber(kNan))));
}

TEST(CNumber, IsZeroFromNothing) {
  EXPECT_EQ(CNumber(), CNumber(0.0));
  EXPECT_FALSE(signbit(CNumber()));
}

TEST(CNumber, KeepsItsValueWhenCopiedMovedAndAssignedToItself) {
  CNumber a(0.1);
  const CNumber b(a);
  CNumber c(std::move(a));
  a = CNumber(7.0);
  EXPECT_EQ(b, CNumber(0.1));
  EXPECT_EQ(c, CNumber(0.1));
  EXPECT_EQ(a, CNumber(7.0));
  const CNumber& alias = c;
  c = alias;
  EXPECT_EQ(c, CNumber(0.1));
  c *= c;
  EXPECT_EQ(c, b * b);
}

// 2^-199 is the last bit of a number of 200 bits near 1; half of it rounds to even.
TEST(CNumber, HoldsTwoHundredBits) {
  const CNumber one(1.0);
  EXPECT_NE(one + CNumber(std::ldexp(1.0, -199)), one);
  EXPECT_EQ(one + CNumber(std::ldexp(1.0, -200)), one);
  EXPECT_NE(one - CNumber(std::ldexp(1.0, -200)), one);
}

TEST(CNumber, CalculatesWithDoublesAsWithItself) {
  const CNumber a(0.7);
  EXPECT_EQ(a + 0.3, a + CNumber(0.3));
  EXPECT_EQ(a - 0.3, a - CNumber(0.3));
  EXPECT_EQ(a * 0.3, a * CNumber(0.3));
  EXPECT_EQ(a / 0.3, a / CNumber(0.3));
  EXPECT_EQ(0.3 + a, CNumber(0.3) + a);
  EXPECT_EQ(0.3 - a, CNumber(0.3) - a);
  EXPECT_EQ(0.3 * a, CNumber(0.3) * a);
  EXPECT_EQ(0.3 / a, CNumber(0.3) / a);
  EXPECT_EQ(-a, CNumber(-0.7));
}

TEST(CNumber, ComparesAsIeeeNumbers) {
  const double values[] = {-kInf, -2.5, -0.0, 0.0, 1e-300, 2.5, kInf, kNan};
  for (double x : values) {
    for (double y : values) {
      const CNumber a(x), b(y);
      EXPECT_EQ(a == b, x == y) << x << " " << y;
      EXPECT_EQ(a != b, x != y) << x << " " << y;
      EXPECT_EQ(a < b, x < y) << x << " " << y;
      EXPECT_EQ(a <= b, x <= y) << x << " " << y;
      EXPECT_EQ(a > b, x > y) << x << " " << y;
      EXPECT_EQ(a >= b, x >= y) << x << " " << y;
      EXPECT_EQ(a == y, x == y) << x << " " << y;
      EXPECT_EQ(a != y, x != y) << x << " " << y;
      EXPECT_EQ(a < y, x < y) << x << " " << y;
      EXPECT_EQ(a <= y, x <= y) << x << " " << y;
      EXPECT_EQ(a > y, x > y) << x << " " << y;
      EXPECT_EQ(a >= y, x >= y) << x << " " << y;
    }
  }
}

// Identities that hold to the last of 200 bits, far beyond a double.
TEST(CNumber, FunctionsKeepTheirIdentities) {
  const CNumber tiny(std::ldexp(1.0, -195));
  for (double x : {0.1, 0.5, 0.9}) {
    const CNumber a(x);
    EXPECT_LT(abs(sqrt(a) * sqrt(a) - a), tiny);
    EXPECT_LT(abs(sin(a) * sin(a) + cos(a) * cos(a) - 1.0), tiny);
    EXPECT_LT(abs(exp(log(a)) - a), tiny);
    EXPECT_LT(abs(sin(asin(a)) - a), tiny);
    EXPECT_LT(abs(pow(a, CNumber(3.0)) - a * a * a), tiny);
    EXPECT_LT(abs(atan2(a, sqrt(1.0 - a * a)) - asin(a)), tiny);
    EXPECT_LT(abs(hypot(a, CNumber(1.0)) - sqrt(1.0 + a * a)), tiny);
    CNumber sine, cosine;
    SinCos(a, sine, cosine);
    EXPECT_EQ(sine, sin(a));
    EXPECT_EQ(cosine, cos(a));
  }
}

TEST(CNumber, FunctionsLeaveTheirRangeAsNan) {
  EXPECT_TRUE(isnan(sqrt(CNumber(-1.0))));
  EXPECT_TRUE(isnan(asin(CNumber(1.5))));
  EXPECT_TRUE(isnan(log(CNumber(-1.0))));
  EXPECT_TRUE(isinf(CNumber(1.0) / CNumber(0.0)));
  EXPECT_EQ(static_cast<double>(copysign(CNumber(2.0), CNumber(-0.0))), -2.0);
}

}  // namespace
}  // namespace tolvik::engine
