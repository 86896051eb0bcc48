// SPDX-License-Identifier: GPL-2.0-or-later
// Refusal of curves that no memory could hold.
#pragma once

#include <cstdint>

namespace tolvik {

/// Throws std::length_error when a curve cannot have that many points, and std::bad_alloc when the arrays of
/// that many doubles are more than the memory of the machine. An operating system may promise such memory all
/// the same and end the process once it is used.
void CheckCurveFits(std::int64_t points, std::int64_t arrays);

}  // namespace tolvik
