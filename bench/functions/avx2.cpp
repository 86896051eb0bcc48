// SPDX-License-Identifier: GPL-2.0-or-later
#include "bench/functions/routines.h"
#include "engine/simd/functions.h"

namespace tolvik::bench {

namespace {

struct Double {
  using Batch = xsimd::batch<double, xsimd::fma3<xsimd::avx2>>;
  static constexpr bool fused = true;
  static constexpr bool estimates = false;
  TOLVIK_INLINE static Batch MulAdd(Batch a, Batch b, Batch c) { return _mm256_fmadd_pd(a, b, c); }
  TOLVIK_INLINE static Batch NegMulAdd(Batch a, Batch b, Batch c) { return _mm256_fnmadd_pd(a, b, c); }
  TOLVIK_INLINE static Batch MulSub(Batch a, Batch b, Batch c) { return _mm256_fmsub_pd(a, b, c); }
};
using L = engine::lanes::Lanes<Double>;

void OurExponential(const double* x, double* y, int count) {
  for (int i = 0; i < count; i += L::size) engine::lanes::Exp(L::Load(x + i)).Store(y + i);
}

void LibraryExponential(const double* x, double* y, int count) {
  for (int i = 0; i < count; i += L::size) L(xsimd::exp(Double::Batch::load_aligned(x + i))).Store(y + i);
}

void OurSineAndCosine(const double* x, double* y, int count) {
  for (int i = 0; i < count; i += L::size) {
    L sine, cosine;
    engine::lanes::SinCos(L::Load(x + i), sine, cosine);
    sine.Store(y + i);
    cosine.Store(y + count + i);
  }
}

void LibrarySineAndCosine(const double* x, double* y, int count) {
  for (int i = 0; i < count; i += L::size) {
    const auto both = xsimd::sincos(Double::Batch::load_aligned(x + i));
    L(both.first).Store(y + i);
    L(both.second).Store(y + count + i);
  }
}

}  // namespace

const Routine kOurExponential = OurExponential, kLibraryExponential = LibraryExponential,
              kOurSineAndCosine = OurSineAndCosine, kLibrarySineAndCosine = LibrarySineAndCosine;

}  // namespace tolvik::bench
