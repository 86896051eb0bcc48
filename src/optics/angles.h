// SPDX-License-Identifier: GPL-2.0-or-later
// Numbers of angles.
#pragma once

#include <numbers>

namespace tolvik {

inline constexpr double kTwoPi = 2 * std::numbers::pi;
inline constexpr double kRadiansPerDegree = std::numbers::pi / 180;

}  // namespace tolvik
