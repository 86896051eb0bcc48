// SPDX-License-Identifier: GPL-2.0-or-later
// The functions that a front end calls, by these names, in the program or in libtolvik.so.
//
// The caller owns every CState and CSolution that it passes in. Calculations change both in place. The
// getters of a fit and an evolution return pointers into objects that live to the end of the process: a new
// fit or evolution replaces the current one, and the old object stays allocated.
//
// A fit: FitNewDLL, then any number of FitIterateDLL, reading FitGetLastErrorDLL, FitGetFitStateDLL and
// FitGetFitDataDLL between the steps. An evolution: EvolutionNewDLL, then EvolutionIterateDLL. Neither stops
// by itself. The functions return numbers of ReturnCode. They must not be called from two threads at once;
// the server of StartWebserver works on its own copy.
#pragma once

#include <cstdint>

#include "tolvik/dataset.h"
#include "tolvik/return_code.h"
#include "tolvik/state.h"

#if defined(__GNUC__)
#define TOLVIK_EXPORT __attribute__((visibility("default")))
#else
#define TOLVIK_EXPORT
#endif

namespace tolvik {
class CMultiFit;   ///< fit/multi_fit.h; opaque here
class CEvolution;  ///< fit/evolution.h; opaque here
}  // namespace tolvik

extern "C" {

/// Makes a fit from a deep copy of the state: variables, bounds, measurements, seed evo_random. Returns 0.
/// When memory is short there is no fit afterwards.
TOLVIK_EXPORT std::int32_t FitNewDLL(tolvik::CState* state);

/// One step of the fit by its fitalgorithm (FitAlgorithm); any other value, or no fit, does nothing. Returns
/// 0. An exception of a calculation reaches the caller.
TOLVIK_EXPORT std::int32_t FitIterateDLL(void);

/// *out = the fit's own state, which shows the model of the last evaluation; *out stays when there is no fit.
/// Returns 0.
TOLVIK_EXPORT std::int32_t FitGetFitStateDLL(tolvik::CState** out);

/// *out = the curve that the fit calculated last, null when there is no fit. Returns 0.
TOLVIK_EXPORT std::int32_t FitGetFitDataDLL(tolvik::CSolution** out);

/// *out = the fit, null when there is none. Returns 0.
TOLVIK_EXPORT std::int32_t FitGetFitDLL(tolvik::CMultiFit** out);

/// Error of the fit's last evaluation. Call FitNewDLL first; NaN when there is no fit.
TOLVIK_EXPORT double FitGetLastErrorDLL(void);

/// Makes an evolution of evo_population individuals between the bounds of the variables of the state, which
/// is copied. Returns 1. When memory is short there is no evolution afterwards.
TOLVIK_EXPORT std::int32_t EvolutionNewDLL(tolvik::CState* state);

/// One generation; prints "Calculate %i" for each individual to standard output. Call EvolutionNewDLL first;
/// does nothing without an evolution. Returns 1. An exception of a calculation reaches the caller, with the
/// generation half done.
TOLVIK_EXPORT std::int32_t EvolutionIterateDLL(void);

/// *out = the evolution, null when there is none. Returns 1.
TOLVIK_EXPORT std::int32_t EvolutionGetEvolutionDLL(tolvik::CEvolution** out);

/// Runs the script of the state once on it, unless disablescript is not 0. Returns 1, even when the script
/// fails.
TOLVIK_EXPORT std::int32_t StartScriptDLL(tolvik::CState* state);

/// Prints a summary of the state to standard output and shows a copy of it on the page of a server on TCP
/// port 8080, which the first call starts in a thread of its own; later calls pass a new model to it. Returns
/// 0.
TOLVIK_EXPORT std::int32_t StartWebserver(tolvik::CState* state);

/// One reflectivity curve on the grid solution->dataset_qz; writes dataset_R0 (after the resolution) and
/// sizes dataset_Rp. The state's optical constants and everything that its script writes change in place.
/// Returns 1 on success and after a silent stop at a point out of reach, 2 for a point out of reach on the
/// fast path (|qz / (2 k0)| >= 1).
TOLVIK_EXPORT std::int32_t CalcReflectivityDLL(tolvik::CSolution* solution, tolvik::CState* state);

/// Reflectivity at the pairs of solution->dataset_qz and dataset_eng, which the caller sizes alike; writes
/// dataset_R0. Runs in the caller's thread and changes the caller's state: lambda ends at the last energy,
/// and the changes by the script and the optical tables stay. A point whose tables do not reach its energy
/// keeps its value. Returns 1; 2 at a point out of reach (|qz / (2 k0)| >= 1); 5 at an exception in a
/// calculation. After 2 and 5 the later points keep their values.
TOLVIK_EXPORT std::int32_t CalcEScanDLL(tolvik::CSolution* solution, tolvik::CState* state);

/// The same on all processors, each with a copy of the state, so the caller's state does not change. The
/// caller sizes dataset_R0 like dataset_qz. Each point is a scan of its own: the script starts again at each,
/// averaging has no effect, and a failure at one point does not affect the others. The result does not depend
/// on the number of threads. The solution must not be used meanwhile. Always returns 1.
TOLVIK_EXPORT std::int32_t CalcEScanParallelDLL(tolvik::CSolution* solution, tolvik::CState* state);

/// Two curves on the grid solution->dataset_qz at the state's energy: dataset_Rp for ray one and dataset_Rm
/// for ray two of the state, and their asymmetry dataset_A; sizes dataset_R0, too. The state changes as by
/// CalcReflectivityDLL. Returns 1; 2 at a point out of reach (qz / (2 k0) > 1; >= 1 with fastresolution); 5
/// at an exception in a calculation. After 2 and 5 the finishing step has not been done.
TOLVIK_EXPORT std::int32_t CalcAsymmetryDLL(tolvik::CSolution* solution, tolvik::CState* state);

/// The same two curves at the pairs of dataset_qz and dataset_eng, in the caller's thread and on the caller's
/// state as CalcEScanDLL. Codes as CalcAsymmetryDLL.
TOLVIK_EXPORT std::int32_t CalcDicEScanDLL(tolvik::CSolution* solution, tolvik::CState* state);

}  // extern "C"
