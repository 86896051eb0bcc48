// SPDX-License-Identifier: GPL-2.0-or-later
// Refuses curves that cannot fit into memory.
#pragma once

#include <cstdint>

namespace tolvik {

/// Throws std::length_error when a curve cannot have that many points, and std::bad_alloc when the arrays of
/// that many doubles exceed the memory of the machine: an operating system may promise such memory and end
/// the process once it is used.
void CheckCurveFits(std::int64_t points, std::int64_t arrays);

}  // namespace tolvik
