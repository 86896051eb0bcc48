// SPDX-License-Identifier: GPL-2.0-or-later
// Selects the points of a measurement that are used, and counts the reasons against the others.
#pragma once

#include <cstdint>
#include <vector>

#include "tolvik/analysis/measurement.h"
#include "tolvik/analysis/report.h"

namespace tolvik::analysis {

/// The requirements of Screen on a point.
struct ScreenRules {
  double window_min, window_max;  ///< closed, Å⁻¹
  double reach;                   ///< 2 k0, Å⁻¹; of an energy scan unspecified
  double half_width;              ///< r of the resolution, Å⁻¹, where dq is not used
  bool needs_errors;              ///< dR is used
  bool needs_widths;              ///< dq is used
  bool logarithmic;               ///< values must be positive
};

/// Indices of the points in use, in order.
std::vector<std::int32_t> Screen(const Measurement& measurement, const ScreenRules& rules, PointCount& count);

}  // namespace tolvik::analysis
