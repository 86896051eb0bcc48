// SPDX-License-Identifier: GPL-2.0-or-later
// The magnetic depth profile of a sliced stack.
#pragma once

#include "engine/profile/layer.h"
#include "tolvik/array.h"
#include "tolvik/layer.h"

namespace tolvik::engine {

/// Multiplies the magnetic constants of the slices by the gauss functions, in their order; stack is the
/// profile before slicing. A function multiplies the constants of a slice, and adds no moment to a slice
/// without. Functions bound to a layer that does not exist are ignored. Tensors do not change.
template <class T>
void ApplyGaussFunctions(const Profile<T>& stack, const CArray<CGaussFunction>& gaussfunctions,
                         Profile<T>& slices);

}  // namespace tolvik::engine
