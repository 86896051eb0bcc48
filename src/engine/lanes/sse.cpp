// SPDX-License-Identifier: GPL-2.0-or-later
// Kernels for x86-64-v2: SSE 4.2. No code of this source may run on a processor that lacks the set, not even
// by the linker's choice among copies: it has no standard containers, and every type argument of its
// templates is local to it (scripts/check-weak-symbols).
#if defined(__x86_64__)
#include "engine/lanes/function_kernel.h"
#include "engine/lanes/kernels.h"
#include "engine/lanes/matrix_kernel.h"
#include "engine/lanes/parratt_adjoint.h"
#include "engine/lanes/parratt_kernel.h"

namespace tolvik::engine::lanes {
namespace {

struct Double {
  using Batch = xsimd::batch<double, xsimd::sse4_2>;
  static constexpr bool fused = false;
  static constexpr bool estimates = false;
};

struct Float {
  using Batch = xsimd::batch<float, xsimd::sse4_2>;
  static constexpr bool fused = false;
  static constexpr bool estimates = false;
};

}  // namespace

const Kernels kSseKernels = {"sse",
                             ParrattKernelOf<Float>::Run,
                             ParrattKernelOf<Double>::Run,
                             MatrixWalk<Double>::Run,
                             ParrattAdjoint<Double>::Kernel(),
                             FunctionBlock<Float>::Run,
                             FunctionBlock<Double>::Run};

}  // namespace tolvik::engine::lanes
#endif
