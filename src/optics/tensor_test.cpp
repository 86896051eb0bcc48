// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/tensor.h"

#include <gtest/gtest.h>

#include <complex>

namespace tolvik {
namespace {

using Complex = std::complex<double>;
constexpr Complex kI(0, 1);

CLayer MagneticLayer() {
  CLayer layer;
  layer.layer_delta = 2e-3;
  layer.layer_beta = 3e-3;
  layer.layer_ddelta = 4e-4;
  layer.layer_dbeta = 5e-4;
  return layer;
}

void ExpectComplex(Complex found, Complex expected, const char* what) {
  EXPECT_NEAR(found.real(), expected.real(), 1e-16) << what;
  EXPECT_NEAR(found.imag(), expected.imag(), 1e-16) << what;
}

// The strength of an off-diagonal element in closed form: 2i n² m with n = 1 - delta + i beta and the
// magnetic part m = deltam - i betam.
Complex Strength(const CLayer& layer) {
  const Complex n(1 - layer.layer_delta, layer.layer_beta);
  return 2.0 * kI * n * n * Complex(layer.layer_ddelta, -layer.layer_dbeta);
}

TEST(EpsilonTensor, DiagonalIsTheSquareOfTheIndex) {
  CLayer layer = MagneticLayer();
  BuildEpsilonTensor(layer, 30, 60, 0);
  const Complex n(1 - layer.layer_delta, layer.layer_beta);
  for (int i = 0; i < 3; ++i) ExpectComplex(layer.Epsilon(i, i), n * n, "diagonal");
  EXPECT_EQ(layer.magnetic, 0);
}

TEST(EpsilonTensor, WithoutMagnetisationNothingIsOffTheDiagonal) {
  CLayer layer = MagneticLayer();
  for (auto& element : layer.epsilon) element = {7, 7};
  BuildEpsilonTensor(layer, 30, 60, 0);
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) {
      if (row == column && row < 3) continue;
      EXPECT_EQ(layer.Epsilon(row, column), Complex(0, 0)) << row << column;
    }
  }
}

TEST(EpsilonTensor, PolarMagnetisationCouplesXAndY) {
  CLayer layer = MagneticLayer();
  BuildEpsilonTensor(layer, 0, 0, 2);
  EXPECT_EQ(layer.magnetic, 1);
  const Complex strength = Strength(layer);
  ExpectComplex(layer.Epsilon(0, 1), -strength, "xy");
  ExpectComplex(layer.Epsilon(1, 0), strength, "yx");
  for (auto [row, column] : {std::pair(0, 2), {2, 0}, {1, 2}, {2, 1}}) {
    ExpectComplex(layer.Epsilon(row, column), 0, "in-plane elements");
  }
}

TEST(EpsilonTensor, GammaAndPhiTurnTheMagnetisation) {
  CLayer layer = MagneticLayer();
  const double gamma = 30, phi = 60;  // sin 30° = cos 60° = 1/2
  BuildEpsilonTensor(layer, gamma, phi, 1);
  const Complex strength = Strength(layer);
  const double root3 = 1.7320508075688772;
  ExpectComplex(layer.Epsilon(0, 1), -0.5 * strength, "xy: -cos phi");
  ExpectComplex(layer.Epsilon(0, 2), root3 / 4 * strength, "xz: sin phi sin gamma");
  ExpectComplex(layer.Epsilon(1, 2), 0.75 * strength, "yz: sin phi cos gamma");
}

TEST(EpsilonTensor, OffDiagonalElementsAreAntisymmetric) {
  CLayer layer = MagneticLayer();
  BuildEpsilonTensor(layer, -77, 123, -1);
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < row; ++column) {
      EXPECT_EQ(layer.Epsilon(row, column), -layer.Epsilon(column, row)) << row << column;
      EXPECT_NE(layer.Epsilon(row, column), Complex(0, 0)) << row << column;
    }
  }
}

TEST(EpsilonTensor, AllLayersTakeTheDirectionOfTheState) {
  CState state;
  state.layers[0] = MagneticLayer();
  state.layers[1].layer_delta = 1e-3;
  state.maggamma = 90;
  state.magphi = 90;
  state.magnetizationmode = MagnetizationMode::kGaussFunctions;
  BuildAllEpsilonTensors(state);
  ExpectComplex(state.layers[0].Epsilon(0, 2), Strength(state.layers[0]), "xz");
  EXPECT_EQ(state.layers[1].magnetic, 1);
  ExpectComplex(state.layers[1].Epsilon(2, 2), {0.999 * 0.999, 0}, "second layer");
}

}  // namespace
}  // namespace tolvik
