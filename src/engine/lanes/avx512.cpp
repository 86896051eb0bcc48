// SPDX-License-Identifier: GPL-2.0-or-later
// Kernels for x86-64-v4: AVX-512. No code of this source may run on a processor that lacks the set, not even
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
  using Batch = xsimd::batch<double, xsimd::avx512bw>;
  static constexpr bool fused = true;
  static constexpr bool estimates = true;
  TOLVIK_INLINE static Batch MulAdd(Batch a, Batch b, Batch c) { return _mm512_fmadd_pd(a, b, c); }
  TOLVIK_INLINE static Batch NegMulAdd(Batch a, Batch b, Batch c) { return _mm512_fnmadd_pd(a, b, c); }
  TOLVIK_INLINE static Batch MulSub(Batch a, Batch b, Batch c) { return _mm512_fmsub_pd(a, b, c); }
  TOLVIK_INLINE static Batch EstimateInverseRoot(Batch x) { return _mm512_rsqrt14_pd(x); }
  TOLVIK_INLINE static Batch EstimateInverse(Batch x) { return _mm512_rcp14_pd(x); }
};

struct Float {
  using Batch = xsimd::batch<float, xsimd::avx512bw>;
  static constexpr bool fused = true;
  static constexpr bool estimates = true;
  TOLVIK_INLINE static Batch MulAdd(Batch a, Batch b, Batch c) { return _mm512_fmadd_ps(a, b, c); }
  TOLVIK_INLINE static Batch NegMulAdd(Batch a, Batch b, Batch c) { return _mm512_fnmadd_ps(a, b, c); }
  TOLVIK_INLINE static Batch MulSub(Batch a, Batch b, Batch c) { return _mm512_fmsub_ps(a, b, c); }
  TOLVIK_INLINE static Batch EstimateInverseRoot(Batch x) { return _mm512_rsqrt14_ps(x); }
  TOLVIK_INLINE static Batch EstimateInverse(Batch x) { return _mm512_rcp14_ps(x); }
};

}  // namespace

const Kernels kAvx512Kernels = {"avx512",
                                ParrattKernelOf<Float>::Run,
                                ParrattKernelOf<Double>::Run,
                                MatrixWalk<Double>::Run,
                                ParrattAdjoint<Double>::Kernel(),
                                FunctionBlock<Float>::Run,
                                FunctionBlock<Double>::Run};

}  // namespace tolvik::engine::lanes
#endif
