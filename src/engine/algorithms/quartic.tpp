// SPDX-License-Identifier: GPL-2.0-or-later
// z⁴ + A z³ + B z² + C z + E = 0      the monic quartic
// x⁴ + α x² + β x + γ = 0             the depressed one, z = x - A/4
// y                                   root of the resolvent cubic, with P and Q its depressed coefficients
// W² = α + 2y                         splits the quartic into two quadratics; S1, S2 their discriminants
//
// In exact arithmetic any root of the resolvent serves. Here the one with the largest |α + 2y| is taken: a
// magnetisation in the surface makes β tiny but not 0, the principal cube root then leaves only rounding
// noise in W, both roots of a pair result as their mean, and no polishing splits them again.
#pragma once

#include "engine/algorithms/quartic.h"
#include "engine/number/select.h"

namespace tolvik::engine {
namespace quartic {

template <class T>
struct MonicQuartic {
  Cplx<T> A, B, C, E;
  Cplx<T> A3 = T(3.0) * A, B2 = T(2.0) * B;

  Cplx<T> Value(const Cplx<T>& z) const { return MulAdd(MulAdd(MulAdd(Cplx<T>(z + A), z, B), z, C), z, E); }
  Cplx<T> Slope(const Cplx<T>& z) const { return MulAdd(MulAdd(Cplx<T>(T(4.0) * z + A3), z, B2), z, C); }
};

template <class T>
auto IsZero(const Cplx<T>& z) {
  return z.real() == T(0.0) && z.imag() == T(0.0);
}

// A cube root of z. Any of the three serves; a number type may overload a faster one.
template <class C>
C CubeRoot(const C& z) {
  using T = typename C::value_type;
  if (z.imag() == T(0.0) && z.real() > T(0.0)) return C(pow(z.real(), T(1.0) / T(3.0)), T(0.0));
  return C(exp(log(z) / T(3.0)));
}

// α + 2y of the resolvent root y = V - U - 5α/6.
template <class T>
Cplx<T> SquareOfW(const Cplx<T>& alpha, const Cplx<T>& U, const Cplx<T>& V) {
  const Cplx<T> y = V - U - T(5.0) / T(6.0) * alpha;
  return alpha + T(2.0) * y;
}

// The largest α + 2y over the three roots of the resolvent cubic.
template <class T>
Cplx<T> LargestSquareOfW(const Cplx<T>& alpha, const Cplx<T>& beta, const Cplx<T>& gamma) {
  const T third = T(1.0) / T(3.0);
  const Cplx<T> P = (T(-1.0) / T(12.0)) * (alpha * alpha) - gamma;
  const Cplx<T> Q =
      (T(-1.0) / T(108.0)) * (alpha * alpha * alpha) + third * (alpha * gamma) - T(0.125) * (beta * beta);
  const Cplx<T> p3 = third * P;
  const Cplx<T> half_q = T(0.5) * Q;
  const Cplx<T> R = Either(
      IsZero<T>(P), [&] { return Q; },
      [&] {
        // Both signs of the square root lead to the same three y; the larger sum does not cancel.
        const Cplx<T> root = sqrt(half_q * half_q + p3 * p3 * p3);
        const Cplx<T> plus = half_q + root;
        const Cplx<T> minus = half_q - root;
        return Select(IsLonger(minus, plus), minus, plus);
      });

  const T half_sqrt3 = sqrt(T(3.0)) / T(2.0);
  Cplx<T> U = CubeRoot(R);
  Cplx<T> V = Either(
      IsZero<T>(p3), [&] { return Cplx<T>(); }, [&] { return Cplx<T>(p3 / U); });
  Cplx<T> best = SquareOfW<T>(alpha, U, V);
  for (int turn = 1; turn < 3; ++turn) {
    U = U * Cplx<T>(T(-0.5), half_sqrt3);
    V = V * Cplx<T>(T(-0.5), -half_sqrt3);
    const Cplx<T> next = SquareOfW<T>(alpha, U, V);
    best = Select(IsLonger(next, best), next, best);
  }
  return best;
}

template <class T>
struct FourRoots {
  Cplx<T> z[4];

  template <class Mask>
  friend FourRoots Select(const Mask& mask, const FourRoots& a, const FourRoots& b) {
    return {{Select(mask, a.z[0], b.z[0]), Select(mask, a.z[1], b.z[1]), Select(mask, a.z[2], b.z[2]),
             Select(mask, a.z[3], b.z[3])}};
  }
};

template <class T>
FourRoots<T> SolveBiquadratic(const Cplx<T>& shift, const Cplx<T>& alpha, const Cplx<T>& gamma) {
  const Cplx<T> S = sqrt(alpha * alpha - T(4.0) * gamma);
  const Cplx<T> u1 = sqrt((S - alpha) / T(2.0));
  const Cplx<T> u2 = sqrt((-alpha - S) / T(2.0));
  return {{shift + u1, shift + u2, shift - u1, shift - u2}};
}

template <class T>
FourRoots<T> SolveFerrari(const Cplx<T>& shift, const Cplx<T>& alpha, const Cplx<T>& beta,
                          const Cplx<T>& gamma) {
  const Cplx<T> w2 = LargestSquareOfW<T>(alpha, beta, gamma);
  const Cplx<T> W = sqrt(w2);
  const Cplx<T> middle = T(2.0) * alpha + w2;  // 3α + 2y
  const Cplx<T> split = T(2.0) * beta / W;
  const Cplx<T> S1 = sqrt(split - middle);
  const Cplx<T> S2 = sqrt(-split - middle);
  return {{(S1 - W) / T(2.0) + shift, (S2 + W) / T(2.0) + shift, (-S1 - W) / T(2.0) + shift,
           (W - S2) / T(2.0) + shift}};
}

// Ten rounds of Newton steps, each step kept only where it does not increase |f|. A root that a step did not
// move stays there. Lanes stop earlier: once |f| is down to the rounding error of f, whose terms are as large
// as the product E of the roots, or is near that and stops falling; further steps would only exchange one
// rounding error for another.
template <class T>
void PolishRoots(const MonicQuartic<T>& quartic, Cplx<T> (&z)[4]) {
  constexpr double rounding = NumberTraits<T>::rounding_of_quartic;
  const T least = T(rounding * rounding) * norm(quartic.E);
  const T nearly = T(1e4) * least;
  const auto is_rounding = [&](const Cplx<T>& value) { return norm(value) < least; };
  Cplx<T> f[4] = {quartic.Value(z[0]), quartic.Value(z[1]), quartic.Value(z[2]), quartic.Value(z[3])};
  decltype(is_rounding(f[0])) settled[4] = {is_rounding(f[0]), is_rounding(f[1]), is_rounding(f[2]),
                                            is_rounding(f[3])};
  for (int round = 0; round < 10; ++round) {
    if (AllOf(settled[0] && settled[1] && settled[2] && settled[3])) return;
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
      const Cplx<T> slope = quartic.Slope(z[i]);
      const Cplx<T> next = z[i] - f[i] / slope;
      const Cplx<T> f_next = quartic.Value(next);
      const T size = norm(f_next);
      const auto stays = settled[i] || IsShorterThan(slope, T(1e-13)) || IsLonger(f_next, f[i]);
      settled[i] =
          stays || next == z[i] || is_rounding(f_next) || (size < nearly && T(4.0) * size > norm(f[i]));
      z[i] = Select(stays, z[i], next);
      f[i] = Select(stays, f[i], f_next);
    }
  }
}

// Downward waves first: three bubble passes by falling real part, then each pair by falling imaginary part.
template <class T>
void SortRoots(Cplx<T> (&z)[4]) {
  for (int pass = 0; pass < 3; ++pass) {
    for (int i = 0; i < 3; ++i) SwapIf(z[i].real() < z[i + 1].real(), z[i], z[i + 1]);
  }
  for (int i : {0, 2}) SwapIf(z[i].imag() < z[i + 1].imag(), z[i], z[i + 1]);
}

template <class T>
MonicQuartic<T> MonicOf(const Cplx<T>& a4, const Cplx<T>& a3, const Cplx<T>& a2, const Cplx<T>& a1,
                        const Cplx<T>& a0) {
  return {a3 / a4, a2 / a4, a1 / a4, a0 / a4};
}

// The roots in closed form.
template <class T>
FourRoots<T> StartOf(const MonicQuartic<T>& monic) {
  const Cplx<T>&A = monic.A, &B = monic.B, &C = monic.C;
  const Cplx<T> A2 = A * A;
  const Cplx<T> alpha = B - T(0.375) * A2;
  const Cplx<T> beta = A2 * A / T(8.0) - A * B / T(2.0) + C;
  const Cplx<T> gamma = T(-3.0) * A2 * A2 / T(256.0) + A2 * B / T(16.0) - A * C / T(4.0) + monic.E;
  const Cplx<T> shift = -A / T(4.0);
  return Either(
      IsZero<T>(beta), [&] { return SolveBiquadratic<T>(shift, alpha, gamma); },
      [&] { return SolveFerrari<T>(shift, alpha, beta, gamma); });
}

template <class T>
void Refine(const MonicQuartic<T>& monic, const FourRoots<T>& start, Cplx<T> (&roots)[4]) {
  for (int i = 0; i < 4; ++i) roots[i] = start.z[i];
  PolishRoots<T>(monic, roots);
  SortRoots<T>(roots);
}

template <class T>
void Solve(const MonicQuartic<T>& monic, Cplx<T> (&roots)[4]) {
  Refine<T>(monic, StartOf<T>(monic), roots);
}

}  // namespace quartic

template <class T>
void SolveModes(const Cplx<T>& a4, const Cplx<T>& a3, const Cplx<T>& a2, const Cplx<T>& a1, const Cplx<T>& a0,
                Cplx<T> (&roots)[4]) {
  quartic::Solve<T>(quartic::MonicOf<T>(a4, a3, a2, a1, a0), roots);
}

}  // namespace tolvik::engine
