// SPDX-License-Identifier: GPL-2.0-or-later
// The rows of the derivatives: value and Jacobian against the value alone.
#pragma once

#include <functional>
#include <vector>

namespace tolvik::bench {

/// One stack at points of nine nodes each.
struct GradientRow {
  const char* name;
  const char* title;
  double steps;  ///< angles times interfaces
  std::function<void()> value;
  std::function<void()> gradient;  ///< value and Jacobian
};

std::vector<GradientRow> GradientRows();

}  // namespace tolvik::bench
