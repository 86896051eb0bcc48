// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/number/matrix4.h"

#include <gtest/gtest.h>

#include <random>

#include "engine/number/cnumber.h"
#include "engine/number/complex.h"

namespace tolvik::engine {
namespace {

template <class T>
Matrix4<T> RandomMatrix(unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  Matrix4<T> result;
  for (auto& row : result.element) {
    for (auto& element : row) {
      const double real = uniform(random);
      element = FromDouble<T>({real, uniform(random)});
    }
  }
  return result;
}

template <class T>
double DistanceFromIdentity(const Matrix4<T>& m) {
  double largest = 0;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      const Cplx<T> difference = m(r, c) - Cplx<T>(T(r == c ? 1.0 : 0.0));
      largest = std::max(largest, static_cast<double>(abs(difference)));
    }
  }
  return largest;
}

template <class T>
class MatrixFour : public ::testing::Test {
 public:
  static double Epsilon() { return std::is_same_v<T, float> ? 1.2e-7 : 2.3e-16; }
};
using NumberTypes = ::testing::Types<float, double, long double, CNumber>;
TYPED_TEST_SUITE(MatrixFour, NumberTypes);

TYPED_TEST(MatrixFour, StartsAtZero) {
  const Matrix4<TypeParam> m;
  for (const auto& row : m.element) {
    for (const auto& element : row) EXPECT_EQ(static_cast<double>(abs(element)), 0.0);
  }
}

TYPED_TEST(MatrixFour, InverseTimesMatrixIsIdentityFromBothSides) {
  for (unsigned seed = 1; seed <= 50; ++seed) {
    const Matrix4<TypeParam> m = RandomMatrix<TypeParam>(seed);
    const Matrix4<TypeParam> inverse = Inverse(m);
    // The worst of these matrices has a condition number near 40.
    EXPECT_LT(DistanceFromIdentity(m * inverse), 2000 * this->Epsilon()) << "seed " << seed;
    EXPECT_LT(DistanceFromIdentity(inverse * m), 2000 * this->Epsilon()) << "seed " << seed;
  }
}

TYPED_TEST(MatrixFour, ProductIsRowsAgainstColumns) {
  Matrix4<TypeParam> a, b;
  a(1, 2) = Cplx<TypeParam>(TypeParam(2.0));
  a(1, 3) = Cplx<TypeParam>(TypeParam(0.0), TypeParam(1.0));
  b(2, 0) = Cplx<TypeParam>(TypeParam(3.0));
  b(3, 0) = Cplx<TypeParam>(TypeParam(0.0), TypeParam(4.0));
  const Matrix4<TypeParam> product = a * b;
  EXPECT_EQ(static_cast<double>(product(1, 0).real()), 2.0);  // 2·3 + i·4i
  EXPECT_EQ(static_cast<double>(abs((b * a)(1, 0))), 0.0);
}

TEST(MatrixFourSingular, GivesValuesThatAreNotFinite) {
  Matrix4<double> m = RandomMatrix<double>(3);
  for (int c = 0; c < 4; ++c) m(2, c) = 0;
  const Matrix4<double> inverse = Inverse(m);
  EXPECT_FALSE(std::isfinite(std::abs(inverse(0, 2))));
}

}  // namespace
}  // namespace tolvik::engine
