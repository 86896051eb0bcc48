// SPDX-License-Identifier: GPL-2.0-or-later
// The functions that a front end calls, by these names, in the program or in libtolvik.so.
//
// The caller owns every CState and CSolution that it passes in.
#pragma once

#include <cstdint>

#include "tolvik/dataset.h"
#include "tolvik/state.h"

#if defined(__GNUC__)
#define TOLVIK_EXPORT __attribute__((visibility("default")))
#else
#define TOLVIK_EXPORT
#endif

extern "C" {

/// One reflectivity curve on the grid solution->dataset_qz; writes dataset_R0 (after the resolution) and
/// sizes dataset_Rp. The state's optical constants and whatever its script touches change in place. Returns 1
/// on success and after a silent stop at a point out of reach, 2 for a point out of reach on the fast path
/// (|qz / (2 k0)| >= 1).
TOLVIK_EXPORT std::int32_t CalcReflectivityDLL(tolvik::CSolution* solution, tolvik::CState* state);

}  // extern "C"
