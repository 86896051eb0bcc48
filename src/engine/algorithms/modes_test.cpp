// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/algorithms/modes.tpp"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "engine/number/cnumber.h"
#include "engine/number/complex.h"
#include "support/berreman.h"

namespace tolvik::engine {
namespace {

using Double = std::complex<double>;
constexpr double kTolerance = 5e-05;

struct TensorOf {
  Tensor<double> e = {};
  TensorOf(Double xx, Double yy, Double zz) {
    e[0] = xx;
    e[4] = yy;
    e[8] = zz;
  }
};

template <class T>
struct ModesOf {
  Matrix4<T> P, D;
  Cplx<T> kappa[4] = {};
};

testing::Tensor3 ToTensor3(const Tensor<double>& e) {
  testing::Tensor3 result;
  for (std::size_t i = 0; i < 9; ++i) result[i / 3][i % 3] = testing::Complex(e[i].real(), e[i].imag());
  return result;
}

// Each row of D must be an eigenvector of Berreman's matrix with its kappa as eigenvalue.
template <class T>
double WorstModeResidual(const ModesOf<T>& modes, const Tensor<double>& e, double theta) {
  const testing::Square delta =
      testing::BerremanMatrix(ToTensor3(e), std::cos(static_cast<long double>(theta)));
  double worst = 0;
  for (int r = 0; r < 4; ++r) {
    const auto convert = [](const Cplx<T>& z) {
      return testing::Complex(static_cast<double>(z.real()), static_cast<double>(z.imag()));
    };
    testing::Vector field;
    for (int k = 0; k < 4; ++k) field[static_cast<std::size_t>(k)] = convert(modes.D(r, k));
    const testing::Vector image = testing::Multiply(delta, field);
    for (std::size_t k = 0; k < 4; ++k) {
      worst = std::max(worst, static_cast<double>(std::abs(image[k] - convert(modes.kappa[r]) * field[k])));
    }
  }
  return worst;
}

TEST(ClassifyTensor, EqualDiagonalIsIsotropic) {
  TensorOf t(0.9, 0.9, 0.9);
  t.e[1] = Double(4e-05, 0);
  EXPECT_EQ(ClassifyTensor<double>(kTolerance, t.e), kIsotropic);
  EXPECT_EQ(kIsotropic, 0);
}

TEST(ClassifyTensor, EachOffDiagonalElementAtTheToleranceIsAnisotropic) {
  for (std::size_t i : {1u, 2u, 3u, 5u, 6u, 7u}) {
    TensorOf t(0.9, 0.9, 0.9);
    t.e[i] = Double(0, kTolerance);
    EXPECT_EQ(ClassifyTensor<double>(kTolerance, t.e), 1) << i;
    t.e[i] = Double(0, std::nextafter(kTolerance, 0));
    EXPECT_EQ(ClassifyTensor<double>(kTolerance, t.e), 0) << i;
  }
}

TEST(ClassifyTensor, EachDiagonalDifferenceAtTheToleranceIsTetragonal) {
  const double half = 0.5;  // so that half + tolerance - half is exactly the tolerance
  const double tolerance = std::ldexp(1.0, -14);
  for (const auto& [xx, yy, zz] :
       {std::array{half + tolerance, half, half}, std::array{half, half + tolerance, half},
        std::array{half, half, half + tolerance}}) {
    EXPECT_EQ(ClassifyTensor<double>(tolerance, TensorOf(xx, yy, zz).e), 2);
    EXPECT_EQ(ClassifyTensor<double>(std::nextafter(tolerance, 1), TensorOf(xx, yy, zz).e), 0);
  }
}

TEST(ClassifyTensor, ValuesThatAreNotNumbersDoNotVanish) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  TensorOf t(0.9, 0.9, 0.9);
  t.e[2] = nan;
  EXPECT_EQ(ClassifyTensor<double>(kTolerance, t.e), 1);
  EXPECT_EQ(ClassifyTensor<double>(kTolerance, TensorOf(nan, 0.9, 0.9).e), 2);
}

template <class T>
class Modes : public ::testing::Test {
 public:
  static double Epsilon() { return std::is_same_v<T, float> ? 1.2e-7 : 2.3e-16; }
};
using NumberTypes = ::testing::Types<float, double, long double, CNumber>;
TYPED_TEST_SUITE(Modes, NumberTypes);

TYPED_TEST(Modes, IsotropicModesSolveMaxwell) {
  using T = TypeParam;
  ModesOf<T> m;
  const Double n(0.98, 0.02);
  const double theta = 0.37109375;  // a float
  CalcIsotropicMatrices<T>(m.P, m.D, m.kappa, T(theta), T(0.4), T(20.0), FromDouble<T>(n));
  EXPECT_LT(WorstModeResidual(m, TensorOf(n * n, n * n, n * n).e, theta), 20 * this->Epsilon());
  // n² = cos²θ + kappa², and P = exp(-i k0 d kappa) of the downward pair.
  const Double w = std::sqrt(n * n - std::cos(theta) * std::cos(theta));
  const Double e = std::exp(Double(0, -8) * w);
  for (int r = 0; r < 4; ++r) {
    const Double kappa(static_cast<double>(m.kappa[r].real()), static_cast<double>(m.kappa[r].imag()));
    const Double p(static_cast<double>(m.P(r, r).real()), static_cast<double>(m.P(r, r).imag()));
    EXPECT_LT(std::abs(kappa - (r < 2 ? w : -w)), 20 * this->Epsilon());
    EXPECT_LT(std::abs(p - (r < 2 ? e : 1.0 / e)), 200 * this->Epsilon());
  }
}

TYPED_TEST(Modes, IsotropicZeroThicknessLeavesP) {
  using T = TypeParam;
  ModesOf<T> m;
  m.P(0, 3) = Cplx<T>(T(7.0));
  CalcIsotropicMatrices<T>(m.P, m.D, m.kappa, T(0.3), T(0.4), T(0.0), Cplx<T>(T(0.9)));
  EXPECT_EQ(static_cast<double>(m.P(0, 3).real()), 7.0);
  EXPECT_EQ(static_cast<double>(abs(m.P(0, 0))), 0.0);
  CalcIsotropicMatrices<T>(m.P, m.D, m.kappa, T(0.3), T(0.4), T(1.0), Cplx<T>(T(0.9)));
  EXPECT_EQ(static_cast<double>(abs(m.P(0, 3))), 0.0);
}

TYPED_TEST(Modes, SmallAnglesAndNoAngleCountAsTheBound) {
  using T = TypeParam;
  ModesOf<T> bound, small, none;
  const Cplx<T> n = FromDouble<T>({0.99, 0.01});
  CalcIsotropicMatrices<T>(bound.P, bound.D, bound.kappa, T(1e-4), T(0.4), T(3.0), n);
  CalcIsotropicMatrices<T>(small.P, small.D, small.kappa, T(0.0), T(0.4), T(3.0), n);
  CalcIsotropicMatrices<T>(none.P, none.D, none.kappa, T(0.0) / T(0.0), T(0.4), T(3.0), n);
  EXPECT_TRUE(small.kappa[0] == bound.kappa[0]);
  EXPECT_TRUE(none.kappa[0] == bound.kappa[0]);
}

TYPED_TEST(Modes, TetragonalModesSolveMaxwellInTheirOrder) {
  using T = TypeParam;
  const TensorOf t(Double(0.96875, 0.0625), Double(0.9375, 0.03125), Double(0.984375, 0.0625));
  Tensor<T> e;
  for (int i = 0; i < 9; ++i) e[i] = FromDouble<T>(t.e[i]);
  ModesOf<T> m;
  m.P(1, 2) = Cplx<T>(T(3.0));
  const double theta = 0.37109375;
  CalcTetragonalMatrices<T>(m.P, m.D, m.kappa, T(theta), T(0.4), T(0.0), e);
  EXPECT_LT(WorstModeResidual(m, t.e, theta), 20 * this->Epsilon());
  EXPECT_TRUE(m.kappa[1] == -m.kappa[0]);
  EXPECT_TRUE(m.kappa[3] == -m.kappa[2]);
  EXPECT_GT(static_cast<double>(m.kappa[0].real()), 0);
  EXPECT_GT(static_cast<double>(m.kappa[2].real()), 0);
  // P is set to the identity at d = 0.
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) EXPECT_EQ(static_cast<double>(abs(m.P(r, c))), r == c ? 1.0 : 0.0);
  }
}

TYPED_TEST(Modes, GeneralModesSolveMaxwell) {
  using T = TypeParam;
  std::mt19937 random(11);
  std::uniform_real_distribution<double> uniform(-0.1, 0.1);
  for (int trial = 0; trial < 50; ++trial) {
    TensorOf t(1, 1, 1);
    for (auto& element : t.e) {
      const float real = static_cast<float>(uniform(random));
      element += Double(real, static_cast<float>(uniform(random)));
    }
    for (int i : {0, 4, 8}) t.e[i] = Double(t.e[i].real(), std::abs(t.e[i].imag()));
    Tensor<T> e;
    for (int i = 0; i < 9; ++i) e[i] = FromDouble<T>(t.e[i]);
    ModesOf<T> m;
    const double theta = 0.4375;
    CalcGeneralMatrices<T>({m.P, m.D, m.kappa}, T(theta), T(0.4), T(0.0), e);
    EXPECT_LT(WorstModeResidual(m, t.e, theta), 5000 * this->Epsilon()) << "trial " << trial;
    EXPECT_GT(static_cast<double>(m.kappa[1].real()), 0);
    EXPECT_LT(static_cast<double>(m.kappa[2].real()), 0);
    for (int r = 0; r < 4; ++r) EXPECT_EQ(static_cast<double>(abs(m.P(r, r))), 1.0);
  }
}

TEST(GeneralModes, IsotropicTensorGivesTheRowsOfTheIsotropicCase) {
  // Calculated here on purpose, a tensor n² has the isotropic wavevectors; its field vectors are those of the
  // pi waves up to a factor, or NaN, since the sigma vector of this formula vanishes.
  const Double n(0.97, 0.03);
  const TensorOf t(n * n, n * n, n * n);
  ModesOf<double> general, isotropic;
  CalcIsotropicMatrices<double>(isotropic.P, isotropic.D, isotropic.kappa, 0.4, 0.3, 10.0, n);
  CalcGeneralMatrices<double>({general.P, general.D, general.kappa}, 0.4, 0.3, 10.0, t.e);
  for (int r = 0; r < 4; ++r) {
    EXPECT_LT(std::abs(general.kappa[r] - isotropic.kappa[r]), 1e-7) << r;
    EXPECT_LT(std::abs(general.P(r, r) / isotropic.P(r, r) - 1.0), 1e-6) << r;
    if (!std::isfinite(std::abs(general.D(r, 1)))) continue;
    const int pi = r < 2 ? 1 : 3;
    const Double factor = general.D(r, 2) / isotropic.D(pi, 2);
    for (int c = 0; c < 4; ++c)
      EXPECT_LT(std::abs(general.D(r, c) - factor * isotropic.D(pi, c)), 1e-6) << r << c;
  }
}

TEST(GeneralModes, VectorsAreNormalised) {
  TensorOf t(Double(0.95, 0.02), Double(0.97, 0.01), Double(0.96, 0.03));
  t.e[1] = Double(0.01, 0.02);
  t.e[3] = -t.e[1];
  t.e[5] = Double(-0.02, 0.004);
  ModesOf<double> m;
  const double theta = 0.4, c = std::cos(theta);
  CalcGeneralMatrices<double>({m.P, m.D, m.kappa}, theta, 0.3, 10.0, t.e);
  for (int r = 0; r < 4; ++r) {
    const Double ez = (m.D(r, 2) + m.kappa[r] * m.D(r, 1)) / c;
    EXPECT_NEAR(std::norm(m.D(r, 0)) + std::norm(m.D(r, 1)) + std::norm(ez), 1.0, 1e-13);
  }
}

TEST(LayerMatrices, IsotropicClassTakesTheRootOfExxAndLeavesPAtZeroThickness) {
  TensorOf t(Double(0.9, 0.05), Double(0.90004, 0.05), Double(0.9, 0.05));
  ModesOf<double> m, expected;
  m.P(2, 1) = 5;
  CalcLayerMatrices<double>(m.P, m.D, m.kappa, 0.3, 0.4, 0.0, Double(0.5), t.e, kTolerance);
  CalcIsotropicMatrices<double>(expected.P, expected.D, expected.kappa, 0.3, 0.4, 0.0, std::sqrt(t.e[0]));
  EXPECT_EQ(m.kappa[0], expected.kappa[0]);
  EXPECT_EQ(m.D(1, 2), -std::sqrt(t.e[0]));
  EXPECT_EQ(m.P(2, 1), Double(5));
}

TEST(LayerMatrices, EachClassGoesItsWay) {
  TensorOf t(Double(0.9, 0.05), Double(0.95, 0.05), Double(0.9, 0.05));
  ModesOf<double> m;
  CalcLayerMatrices<double>(m.P, m.D, m.kappa, 0.3, 0.4, 2.0, Double(0.5), t.e, kTolerance);
  EXPECT_EQ(m.kappa[1], -m.kappa[0]);  // tetragonal order
  t.e[1] = 0.01;
  CalcLayerMatrices<double>(m.P, m.D, m.kappa, 0.3, 0.4, 2.0, Double(0.5), t.e, kTolerance);
  EXPECT_GT(m.kappa[1].real(), 0);  // general order
  EXPECT_NE(m.D(0, 1), Double(0));
}

}  // namespace
}  // namespace tolvik::engine
