// SPDX-License-Identifier: GPL-2.0-or-later
// Intensities of a batch of angles, by the algorithm of the state: the only connection between the algorithms
// and the curves.
#pragma once

#include <cstdint>
#include <exception>

#include "engine/algorithms/angle_batch.h"
#include "engine/algorithms/parratt.h"
#include "engine/lanes/by_lanes.h"
#include "engine/number/number.h"

namespace tolvik::engine {

/// The outcome of a batch.
struct BatchOutcome {
  std::int32_t done = 0;     ///< angles calculated, counted from the first
  std::exception_ptr error;  ///< the exception that ended the batch before its last angle, or null
};

/// Work space of CalcIntensities, kept from batch to batch.
template <class T>
struct IntensityWork {
  ParrattVectors<T> parratt;
  lanes::LanesWork<T> lanes;
};

/// Intensities of a batch, angle by angle in their order.
/// first gets ray one. second gets ray two, and algorithm 0 takes the opposite sense of the magnetic shift
/// there; with null it is left out. The intensities of an angle do not depend on its neighbours.
/// An exception ends the batch; the results before it are valid. With an unknown algorithm all results are 0.
template <Number T>
BatchOutcome CalcIntensities(const AngleBatch<T>& batch, IntensityWork<T>& work);

}  // namespace tolvik::engine
