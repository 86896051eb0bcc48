// SPDX-License-Identifier: GPL-2.0-or-later
// Which points of a measurement take part, and why the others do not.
#pragma once

#include <cstdint>
#include <vector>

#include "tolvik/analysis/measurement.h"
#include "tolvik/analysis/report.h"

namespace tolvik::analysis {

/// What Screen asks of a point.
struct ScreenRules {
  double window_min, window_max;  ///< closed, Å⁻¹
  double reach;                   ///< 2 k0, Å⁻¹; of an energy scan unspecified
  double half_width;              ///< of the resolution, Å⁻¹, where dq takes no part
  bool needs_errors;              ///< dR takes part
  bool needs_widths;              ///< dq takes part
  bool logarithmic;               ///< values must be positive
};

/// Indices of the points that take part, in order.
std::vector<std::int32_t> Screen(const Measurement& measurement, const ScreenRules& rules, PointCount& count);

}  // namespace tolvik::analysis
