// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/tensor.h"

#include <cmath>

#include "optics/angles.h"

namespace tolvik {
namespace {

constexpr int kX = 0, kY = 1, kZ = 2;

// Writes an antisymmetric pair of off-diagonal elements.
void SetPair(CLayer& layer, int row, int column, double factor, double real, double imag) {
  layer.Epsilon(row, column) = {factor * real, factor * imag};
  layer.Epsilon(column, row) = {-factor * real, -factor * imag};
}

}  // namespace

void BuildEpsilonTensor(CLayer& layer, double gamma, double phi, std::int32_t magnetizationmode) {
  for (auto& element : layer.epsilon) element = 0;
  layer.magnetic = 0;
  const double n = 1 - layer.layer_delta;
  const double b = layer.layer_beta;
  const double real = n * n - b * b;
  const double imag = 2 * n * b;
  for (int i : {kX, kY, kZ}) layer.Epsilon(i, i) = {real, imag};
  if (magnetizationmode == MagnetizationMode::kNone) return;

  layer.magnetic = 1;
  const double g = gamma * kRadiansPerDegree;
  const double p = phi * kRadiansPerDegree;
  // v + iu = 2i n² (deltam - i betam): the magneto-optical strength of the tensor.
  const double x = layer.layer_ddelta;
  const double y = -layer.layer_dbeta;
  const double u = 2 * (real * x - imag * y);
  const double v = -2 * (imag * x + real * y);
  SetPair(layer, kX, kY, -std::cos(p), v, u);
  SetPair(layer, kX, kZ, std::sin(p) * std::sin(g), v, u);
  SetPair(layer, kY, kZ, std::cos(g) * std::sin(p), v, u);
}

void BuildAllEpsilonTensors(CState& state) {
  for (CLayer& layer : state.layers) {
    BuildEpsilonTensor(layer, state.maggamma, state.magphi, state.magnetizationmode);
  }
}

}  // namespace tolvik
