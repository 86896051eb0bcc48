// SPDX-License-Identifier: GPL-2.0-or-later
// One function over an array, by our polynomials or by those of the vector library.
#pragma once

namespace tolvik::bench {

/// y(x) for count numbers, a multiple of 4. Of sine and cosine, y holds all sines, then all cosines. Arrays
/// are aligned to 64 bytes.
using Routine = void (*)(const double* x, double* y, int count);

// Compiled for x86-64-v3: only for processors with AVX2 and fused multiplication.
extern const Routine kOurExponential, kLibraryExponential, kOurSineAndCosine, kLibrarySineAndCosine;

}  // namespace tolvik::bench
