// SPDX-License-Identifier: GPL-2.0-or-later
// Intensities of a batch of angles, by the algorithm that the state names. This is the one place where the
// algorithms meet the curves.
#pragma once

#include <cstdint>
#include <exception>

#include "engine/algorithms/angle_batch.h"
#include "engine/algorithms/parratt.h"
#include "engine/lanes/by_lanes.h"
#include "engine/number/number.h"

namespace tolvik::engine {

/// How far a batch came.
struct BatchOutcome {
  std::int32_t done = 0;     ///< angles calculated, counted from the first
  std::exception_ptr error;  ///< what ended the batch before its last angle; null if nothing did
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
/// An exception ends the batch; the results before it stand. With an algorithm unknown all results are 0.
template <Number T>
BatchOutcome CalcIntensities(const AngleBatch<T>& batch, IntensityWork<T>& work);

}  // namespace tolvik::engine
