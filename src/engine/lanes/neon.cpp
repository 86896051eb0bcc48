// SPDX-License-Identifier: GPL-2.0-or-later
// Kernels for aarch64: NEON, which every processor of the architecture has.
#if defined(__aarch64__)
#include "engine/lanes/function_kernel.h"
#include "engine/lanes/kernels.h"
#include "engine/lanes/matrix_kernel.h"
#include "engine/lanes/parratt_kernel.h"

namespace tolvik::engine::lanes {
namespace {

struct Double {
  using Batch = xsimd::batch<double, xsimd::neon64>;
  static constexpr bool fused = true;
  static constexpr bool estimates = false;  // those of NEON have 8 bits, of which 53 take three steps
  TOLVIK_INLINE static Batch MulAdd(Batch a, Batch b, Batch c) { return vfmaq_f64(c, a, b); }
  TOLVIK_INLINE static Batch NegMulAdd(Batch a, Batch b, Batch c) { return vfmsq_f64(c, a, b); }
  TOLVIK_INLINE static Batch MulSub(Batch a, Batch b, Batch c) { return vfmaq_f64(vnegq_f64(c), a, b); }
};

struct Float {
  using Batch = xsimd::batch<float, xsimd::neon64>;
  static constexpr bool fused = true;
  static constexpr bool estimates = false;  // those of NEON have 8 bits, of which 53 take three steps
  TOLVIK_INLINE static Batch MulAdd(Batch a, Batch b, Batch c) { return vfmaq_f32(c, a, b); }
  TOLVIK_INLINE static Batch NegMulAdd(Batch a, Batch b, Batch c) { return vfmsq_f32(c, a, b); }
  TOLVIK_INLINE static Batch MulSub(Batch a, Batch b, Batch c) { return vfmaq_f32(vnegq_f32(c), a, b); }
  // xsimd 8 refines estimates, as processors without a divider need: its quotient is wrong by up to 1.9 units
  // of the last place.
  TOLVIK_INLINE static Batch Divide(Batch a, Batch b) { return vdivq_f32(a, b); }
  TOLVIK_INLINE static Batch SquareRoot(Batch a) { return vsqrtq_f32(a); }
};

}  // namespace

const Kernels kNeonKernels = {"neon",
                              ParrattKernelOf<Float>::Run,
                              ParrattKernelOf<Double>::Run,
                              MatrixWalk<Double>::Run,
                              FunctionBlock<Float>::Run,
                              FunctionBlock<Double>::Run};

}  // namespace tolvik::engine::lanes
#endif
