// SPDX-License-Identifier: GPL-2.0-or-later
// The templates over dual numbers. Eight directions fill the registers and cost half of a plain value more.
#include "engine/curve/dual_gradient.tpp"

namespace tolvik::engine {

void CalcDualRows(const GradientTask& task, int ray, std::span<const std::int32_t> nodes, double* rows) {
  CalcDualRowsBy<8>(task, ray, nodes, rows);
}

}  // namespace tolvik::engine
