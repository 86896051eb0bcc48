// SPDX-License-Identifier: GPL-2.0-or-later
// Intensities of one profile at a batch of angles, by the algorithm that the state names.
//
// This is the one place where the algorithms meet the curves: what walks many angles at once goes in here.
#pragma once

#include <cstdint>
#include <exception>

#include "engine/algorithms/options.h"
#include "engine/algorithms/parratt.h"
#include "engine/lanes/batch.h"
#include "engine/number/number.h"
#include "engine/profile/layer.h"

namespace tolvik::engine {

/// How far a batch came.
struct BatchOutcome {
  std::int32_t done = 0;     ///< samples calculated, counted from the first
  std::exception_ptr error;  ///< what ended the batch before its last sample; null if nothing did
};

/// Work space of CalcIntensities, kept over a curve.
template <class T>
struct IntensityWork {
  ParrattVectors<T> parratt;
  lanes::BatchWork<T> lanes;
};

/// Intensities of a profile at count angles, given as s = sin θ with 0 <= s <= 1, in their order.
/// first gets ray one. second gets ray two, and algorithm 0 takes the opposite sense of the magnetic shift
/// there; with null it is left out. The results of a sample do not depend on its neighbours.
/// An exception ends the batch; the results before it stand. With an algorithm unknown all results are 0.
template <Number T>
BatchOutcome CalcIntensities(Profile<T>& profile, const T& k0, const IntensityOptions<T>& options,
                             std::int32_t count, const T* s, T* first, T* second, IntensityWork<T>& work);

}  // namespace tolvik::engine
