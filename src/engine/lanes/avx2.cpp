// SPDX-License-Identifier: GPL-2.0-or-later
// Kernels for x86-64-v3: AVX2 with fused multiplication. No code of this source may run on a processor that
// lacks the set, not even by the linker's choice among copies: it has no standard containers, and every type
// argument of its templates is local to it (scripts/check-weak-symbols).
#if defined(__x86_64__)
#include "engine/lanes/function_kernel.h"
#include "engine/lanes/kernels.h"
#include "engine/lanes/matrix_kernel.h"
#include "engine/lanes/parratt_adjoint.h"
#include "engine/lanes/parratt_kernel.h"

namespace tolvik::engine::lanes {
namespace {

struct Double {
  using Batch = xsimd::batch<double, xsimd::fma3<xsimd::avx2>>;
  static constexpr bool fused = true;
  static constexpr bool estimates = false;
  TOLVIK_INLINE static Batch MulAdd(Batch a, Batch b, Batch c) { return _mm256_fmadd_pd(a, b, c); }
  TOLVIK_INLINE static Batch NegMulAdd(Batch a, Batch b, Batch c) { return _mm256_fnmadd_pd(a, b, c); }
  TOLVIK_INLINE static Batch MulSub(Batch a, Batch b, Batch c) { return _mm256_fmsub_pd(a, b, c); }
};

struct Float {
  using Batch = xsimd::batch<float, xsimd::fma3<xsimd::avx2>>;
  static constexpr bool fused = true;
  static constexpr bool estimates = false;
  TOLVIK_INLINE static Batch MulAdd(Batch a, Batch b, Batch c) { return _mm256_fmadd_ps(a, b, c); }
  TOLVIK_INLINE static Batch NegMulAdd(Batch a, Batch b, Batch c) { return _mm256_fnmadd_ps(a, b, c); }
  TOLVIK_INLINE static Batch MulSub(Batch a, Batch b, Batch c) { return _mm256_fmsub_ps(a, b, c); }
};

}  // namespace

const Kernels kAvx2Kernels = {"avx2",
                              ParrattKernelOf<Float>::Run,
                              ParrattKernelOf<Double>::Run,
                              MatrixWalk<Double>::Run,
                              ParrattAdjoint<Double>::Kernel(),
                              FunctionBlock<Float>::Run,
                              FunctionBlock<Double>::Run};

}  // namespace tolvik::engine::lanes
#endif
