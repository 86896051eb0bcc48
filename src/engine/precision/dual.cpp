// SPDX-License-Identifier: GPL-2.0-or-later
// The templates over dual numbers. In long double: at grazing angles n² - cos²θ loses up to ten digits, too
// many for derivatives in double.
#include "engine/curve/dual_gradient.tpp"

namespace tolvik::engine {

void CalcDualRows(const GradientTask& task, int ray, std::span<const std::int32_t> nodes, double* rows) {
  CalcDualRowsBy<8, long double>(task, ray, nodes, rows);
}

}  // namespace tolvik::engine
