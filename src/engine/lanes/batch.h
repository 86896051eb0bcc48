// SPDX-License-Identifier: GPL-2.0-or-later
// The batch of angles of a curve, by lanes where they can.
#pragma once

#include <concepts>
#include <cstdint>

#include "engine/lanes/matrix.h"
#include "engine/lanes/parratt.h"
#include "engine/profile/layer.h"

namespace tolvik::engine::lanes {

/// Number types that have lanes. The others keep the plain path.
template <class T>
concept HasLanes = std::same_as<T, float> || std::same_as<T, double>;

/// Work space, kept over a curve.
template <class T>
struct BatchWork {};

template <>
struct BatchWork<float> {
  ParrattLanes<float> parratt;
};

template <>
struct BatchWork<double> {
  ParrattLanes<double> parratt;
  MatrixLanes matrix;
};

/// What lanes leave to the plain path.
enum class LanesLeave {
  kNothing,
  kNotFinite,  ///< each angle with an intensity that is not finite: lanes decide nothing about overflow,
               ///< division by zero and NaN
  kAll         ///< the whole batch
};

/// Intensities of both rays, as CalcIntensities (engine/curve/intensity.h) describes; second may be null.
template <HasLanes T>
LanesLeave CalcByLanes(const Profile<T>& profile, T k0, const IntensityOptions<T>& options,
                       std::int32_t count, const T* s, T* first, T* second, BatchWork<T>& work);

}  // namespace tolvik::engine::lanes
