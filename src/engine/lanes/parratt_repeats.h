// SPDX-License-Identifier: GPL-2.0-or-later
// Finds equal entries of a stack: a periodic stack need not be calculated entry by entry.
#pragma once

#include <span>

#include "engine/lanes/parratt_stack.h"

namespace tolvik::engine::lanes {

/// Numbers the different waves, passages and interfaces of a stack, from 0 in the order of the stack. Returns
/// whether the stack repeats itself often enough for ParrattShared to be faster; if not, the numbers are
/// unspecified.
template <class T>
bool NumberEqualEntries(std::span<ParrattEntry<T>> entries);

}  // namespace tolvik::engine::lanes
