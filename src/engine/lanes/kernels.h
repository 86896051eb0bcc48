// SPDX-License-Identifier: GPL-2.0-or-later
// The kernels of the instruction sets and the choice among them.
//
// Lanes calculate several angles as one number (register.h). Each instruction set has one source that is
// compiled for it alone; no code of such a source runs on a processor that lacks the set. Results do not
// depend on the number of angles, their order or their place in a block.
#pragma once

#include "engine/lanes/matrix_stack.h"
#include "engine/lanes/parratt_stack.h"
#include "engine/lanes/parratt_sweep.h"

namespace tolvik::engine::lanes {

/// The functions of functions.h at count numbers, for their tests. Results: arrays of the same length.
template <class Scalar>
struct FunctionValues {
  Scalar *exp, *sine, *cosine, *root, *inverse_root, *quotient;
};
template <class Scalar>
using FunctionKernel = void (*)(const Scalar* x, std::int32_t count, const FunctionValues<Scalar>& values);

/// Entry points of one instruction set.
struct Kernels {
  const char* name;
  ParrattKernel<float> parratt_float;
  ParrattKernel<double> parratt_double;
  MatrixKernel matrix;
  ParrattSweepKernel parratt_sweep;
  FunctionKernel<float> functions_float;
  FunctionKernel<double> functions_double;
};

// Only for processors that have the set; ChosenKernels below checks that.
extern const Kernels kSseKernels;     ///< x86-64-v2, two doubles
extern const Kernels kAvx2Kernels;    ///< x86-64-v3, four doubles
extern const Kernels kAvx512Kernels;  ///< x86-64-v4, eight doubles
extern const Kernels kNeonKernels;    ///< aarch64, two doubles

enum class LaneSet { kPlain, kSse, kAvx2, kAvx512, kNeon };

inline constexpr LaneSet kAllLaneSets[] = {LaneSet::kPlain, LaneSet::kSse, LaneSet::kAvx2, LaneSet::kAvx512,
                                           LaneSet::kNeon};

/// "plain", "sse", "avx2", "avx512" or "neon".
const char* NameOf(LaneSet set);

/// Whether this processor and its system can run the set; always true for kPlain.
bool IsSupported(LaneSet set);

/// Kernels in use; null for the plain path. The first call reads the environment variable TOLVIK_LANES
/// (plain, sse, avx2, avx512, neon); without it, or with any other text, the widest set of the processor is
/// used. A set that it lacks gives the plain path.
const Kernels* ChosenKernels();

/// The kernels of a set; null where the processor lacks it.
const Kernels* KernelsOf(LaneSet set);

/// Selects another set, for tests and benchmarks; kPlain where the processor lacks it. Curves in progress may
/// use either.
void ChooseLanes(LaneSet set);

}  // namespace tolvik::engine::lanes
