// SPDX-License-Identifier: GPL-2.0-or-later
// Roots of the complex quartic whose solutions are the normal wavevectors of an anisotropic slab.
#pragma once

#include "engine/number/number.h"

namespace tolvik::engine {

/// The four roots of a4 z⁴ + a3 z³ + a2 z² + a1 z + a0 by the method of Ferrari (Cardano, Ars magna, 1545),
/// each polished by up to ten Newton steps.
///
/// Order: falling real part, then positions 0 and 1, and positions 2 and 3, each by falling imaginary part.
/// Never fails; a4 = 0 gives NaN.
template <class T>
void SolveModes(const Cplx<T>& a4, const Cplx<T>& a3, const Cplx<T>& a2, const Cplx<T>& a1, const Cplx<T>& a0,
                Cplx<T> (&roots)[4]);

}  // namespace tolvik::engine
