// SPDX-License-Identifier: GPL-2.0-or-later
// quartic.tpp is included by precision/*.cpp and tests only.
//
// z⁴ + A z³ + B z² + C z + E = 0      the monic quartic
// x⁴ + α x² + β x + γ = 0             the depressed one, z = x - A/4
// y                                   root of the resolvent cubic, with P and Q its depressed coefficients
// W² = α + 2y                         splits the quartic into two quadratics; S1, S2 their discriminants
//
// Any root of the resolvent serves in exact arithmetic. Here the one with the largest |α + 2y| is taken: a
// magnetisation in the surface makes β tiny but not 0, the principal cube root then leaves only rounding
// noise in W, both roots of a pair come out as their mean, and no polishing parts them again.
#pragma once

#include "engine/quartic.h"
#include "engine/select.h"

namespace tolvik::engine {
namespace quartic {

template <class T>
struct MonicQuartic {
  Cplx<T> A, B, C, E;

  Cplx<T> Value(const Cplx<T>& z) const { return (((z + A) * z + B) * z + C) * z + E; }
  Cplx<T> Slope(const Cplx<T>& z) const { return ((T(4.0) * z + T(3.0) * A) * z + T(2.0) * B) * z + C; }
};

template <class T>
auto IsZero(const Cplx<T>& z) {
  return z.real() == T(0.0) && z.imag() == T(0.0);
}

template <class T>
Cplx<T> CubeRoot(const Cplx<T>& z) {
  return Either(
      z.imag() == T(0.0) && z.real() > T(0.0),
      [&] { return Cplx<T>(pow(z.real(), T(1.0) / T(3.0)), T(0.0)); },
      [&] { return Cplx<T>(exp(log(z) / T(3.0))); });
}

// α + 2y of the resolvent root that belongs to the cube root U; p3 = P/3.
template <class T>
Cplx<T> SquareOfW(const Cplx<T>& alpha, const Cplx<T>& p3, const Cplx<T>& U) {
  const Cplx<T> y = Either(
      IsZero<T>(p3), [&] { return Cplx<T>(T(-5.0) / T(6.0) * alpha - U); },
      [&] { return Cplx<T>(p3 / U - U - T(5.0) / T(6.0) * alpha); });
  return alpha + T(2.0) * y;
}

// The largest α + 2y over the three roots of the resolvent cubic.
template <class T>
Cplx<T> LargestSquareOfW(const Cplx<T>& alpha, const Cplx<T>& beta, const Cplx<T>& gamma) {
  const Cplx<T> P = -(alpha * alpha) / T(12.0) - gamma;
  const Cplx<T> Q = -(alpha * alpha * alpha) / T(108.0) + alpha * gamma / T(3.0) - beta * beta / T(8.0);
  const Cplx<T> p3 = P / T(3.0);
  const Cplx<T> half_q = Q / T(2.0);
  const Cplx<T> R = Either(
      IsZero<T>(P), [&] { return Q; },
      [&] {
        // Both signs of the square root lead to the same three y; the larger sum does not cancel.
        const Cplx<T> root = sqrt(half_q * half_q + p3 * p3 * p3);
        const Cplx<T> plus = half_q + root;
        const Cplx<T> minus = half_q - root;
        return Select(abs(minus) > abs(plus), minus, plus);
      });

  const T half_sqrt3 = sqrt(T(3.0)) / T(2.0);
  Cplx<T> U = CubeRoot<T>(R);
  Cplx<T> best = SquareOfW<T>(alpha, p3, U);
  for (int turn = 1; turn < 3; ++turn) {
    U = U * Cplx<T>(T(-0.5), half_sqrt3);
    const Cplx<T> next = SquareOfW<T>(alpha, p3, U);
    best = Select(abs(next) > abs(best), next, best);
  }
  return best;
}

template <class T>
struct FourRoots {
  Cplx<T> z[4];
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

// Ten Newton steps, each kept only where it does not increase |f|. A step that moves nothing repeats for
// ever, so the loop may end there with the same result.
template <class T>
void PolishRoot(const MonicQuartic<T>& quartic, Cplx<T>& z) {
  Cplx<T> f = quartic.Value(z);
  for (int round = 0; round < 10; ++round) {
    const Cplx<T> slope = quartic.Slope(z);
    const Cplx<T> next = z - f / slope;
    const Cplx<T> f_next = quartic.Value(next);
    const auto stays = abs(slope) < T(1e-13) || abs(f_next) > abs(f);
    const auto settled = stays || next == z;
    z = Select(stays, z, next);
    f = Select(stays, f, f_next);
    if (AllOf(settled)) return;
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

}  // namespace quartic

template <class T>
void SolveModes(const Cplx<T>& a4, const Cplx<T>& a3, const Cplx<T>& a2, const Cplx<T>& a1, const Cplx<T>& a0,
                Cplx<T> (&roots)[4]) {
  const Cplx<T> A = a3 / a4, B = a2 / a4, C = a1 / a4, E = a0 / a4;
  const Cplx<T> A2 = A * A;
  const Cplx<T> alpha = B - T(0.375) * A2;
  const Cplx<T> beta = A2 * A / T(8.0) - A * B / T(2.0) + C;
  const Cplx<T> gamma = T(-3.0) * A2 * A2 / T(256.0) + A2 * B / T(16.0) - A * C / T(4.0) + E;
  const Cplx<T> shift = -A / T(4.0);

  const auto start = Either(
      quartic::IsZero<T>(beta), [&] { return quartic::SolveBiquadratic<T>(shift, alpha, gamma); },
      [&] { return quartic::SolveFerrari<T>(shift, alpha, beta, gamma); });
  const quartic::MonicQuartic<T> monic{A, B, C, E};
  for (int i = 0; i < 4; ++i) {
    roots[i] = start.z[i];
    quartic::PolishRoot<T>(monic, roots[i]);
  }
  quartic::SortRoots<T>(roots);
}

}  // namespace tolvik::engine
