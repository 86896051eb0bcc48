// SPDX-License-Identifier: GPL-2.0-or-later
// A batch of angles, by lanes where possible.
#pragma once

#include <concepts>

#include "engine/algorithms/angle_batch.h"
#include "engine/lanes/matrix.h"
#include "engine/lanes/parratt.h"

namespace tolvik::engine::lanes {

/// Number types that have lanes. The others use the plain path.
template <class T>
concept HasLanes = std::same_as<T, float> || std::same_as<T, double>;

/// Work space, kept from batch to batch.
template <class T>
struct LanesWork {};

template <>
struct LanesWork<float> {
  ParrattLanes<float> parratt;
};

template <>
struct LanesWork<double> {
  ParrattLanes<double> parratt;
  MatrixLanes matrix;
};

/// The angles that lanes leave to the plain path.
enum class LanesLeave {
  kNothing,
  kNotFinite,  ///< each angle with an intensity that is not finite: lanes decide nothing about overflow,
               ///< division by zero and NaN
  kAll         ///< the whole batch
};

/// Intensities of a batch, as CalcIntensities (engine/curve/intensity.h) describes.
template <HasLanes T>
LanesLeave CalcByLanes(const AngleBatch<T>& batch, LanesWork<T>& work);

}  // namespace tolvik::engine::lanes
