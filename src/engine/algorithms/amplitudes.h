// SPDX-License-Identifier: GPL-2.0-or-later
// From the transfer matrix of a whole stack to the intensity of a ray.
#pragma once

#include "engine/number/matrix4.h"

namespace tolvik::engine {

/// Intensity of one ray after a stack, summed over both outgoing polarisations.
///
/// M maps amplitudes in the substrate (row vector) to those in the ambient; the order of modes is sigma
/// down, pi down, sigma up, pi up. ray: sigma real, sigma imaginary, pi real, pi imaginary. transmission: the
/// amplitudes in the substrate instead of the reflected ones; they carry no flux factor.
template <class T>
T CalcRayIntensity(const Matrix4<T>& M, bool transmission, const double* ray);

}  // namespace tolvik::engine
