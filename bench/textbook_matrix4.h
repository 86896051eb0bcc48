// SPDX-License-Identifier: GPL-2.0-or-later
// The tools of a textbook loop of 4×4 matrices: std::complex<double>, the product as a triple loop, the
// inverse by elimination with row pivots (Gauss and Jordan), the quartic in closed form.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>

namespace tolvik::bench {

using Value = std::complex<double>;
using Matrix = std::array<std::array<Value, 4>, 4>;
using Roots = std::array<Value, 4>;

inline Matrix Multiply(const Matrix& a, const Matrix& b) {
  Matrix result{};
  for (std::size_t r = 0; r < 4; ++r) {
    for (std::size_t c = 0; c < 4; ++c) {
      for (std::size_t k = 0; k < 4; ++k) result[r][c] += a[r][k] * b[k][c];
    }
  }
  return result;
}

inline Matrix Identity() {
  Matrix result{};
  for (std::size_t i = 0; i < 4; ++i) result[i][i] = 1;
  return result;
}

inline Matrix Invert(Matrix a) {
  Matrix inverse = Identity();
  for (std::size_t k = 0; k < 4; ++k) {
    std::size_t pivot = k;
    for (std::size_t r = k + 1; r < 4; ++r) pivot = std::norm(a[r][k]) > std::norm(a[pivot][k]) ? r : pivot;
    std::swap(a[k], a[pivot]);
    std::swap(inverse[k], inverse[pivot]);
    const Value scale = 1.0 / a[k][k];
    for (std::size_t c = 0; c < 4; ++c) a[k][c] *= scale, inverse[k][c] *= scale;
    for (std::size_t r = 0; r < 4; ++r) {
      if (r == k) continue;
      const Value factor = a[r][k];
      for (std::size_t c = 0; c < 4; ++c) {
        a[r][c] -= factor * a[k][c];
        inverse[r][c] -= factor * inverse[k][c];
      }
    }
  }
  return inverse;
}

/// The roots of a4 z⁴ + a3 z³ + a2 z² + a1 z + a0 by the method of Ferrari, each improved by up to ten Newton
/// steps; steps that increase the modulus of the polynomial are not taken. Sorted by falling real part.
inline Roots SolveQuartic(const Value& a4, const Value& a3, const Value& a2, const Value& a1,
                          const Value& a0) {
  const Value A = a3 / a4, B = a2 / a4, C = a1 / a4, E = a0 / a4;
  // x⁴ + p x² + q x + r = 0 with z = x - A/4.
  const Value A2 = A * A;
  const Value p = B - 0.375 * A2;
  const Value q = A2 * A / 8.0 - A * B / 2.0 + C;
  const Value r = -3.0 * A2 * A2 / 256.0 + A2 * B / 16.0 - A * C / 4.0 + E;

  // The resolvent m³ + p m² + (p²/4 - r) m - q²/8 = 0 by the formula of Cardano; of its roots the largest.
  const Value P = -p * p / 12.0 - r;
  const Value Q = -p * p * p / 108.0 + p * r / 3.0 - q * q / 8.0;
  const Value root = std::sqrt(Q * Q / 4.0 + P * P * P / 27.0);
  const Value plus = -Q / 2.0 + root, minus = -Q / 2.0 - root;
  Value u = std::pow(std::norm(plus) > std::norm(minus) ? plus : minus, 1.0 / 3.0);
  const Value turn(-0.5, 0.5 * std::sqrt(3.0));
  Value m = 0;
  for (int k = 0; k < 3; ++k, u *= turn) {
    const Value next = u - P / (3.0 * u) - p / 3.0;
    if (std::norm(next) > std::norm(m)) m = next;
  }

  const Value W = std::sqrt(2.0 * m);
  const Value upper = std::sqrt(-2.0 * (p + m + q / W)), lower = std::sqrt(-2.0 * (p + m - q / W));
  Roots z = {(W + upper) / 2.0, (W - upper) / 2.0, (lower - W) / 2.0, (-lower - W) / 2.0};
  const auto value = [&](const Value& x) { return (((x + A) * x + B) * x + C) * x + E; };
  for (Value& zero : z) {
    zero -= A / 4.0;
    Value f = value(zero);
    for (int round = 0; round < 10; ++round) {
      const Value slope = ((4.0 * zero + 3.0 * A) * zero + 2.0 * B) * zero + C;
      const Value next = zero - f / slope, f_next = value(next);
      if (std::abs(f_next) > std::abs(f)) continue;
      zero = next;
      f = f_next;
    }
  }
  std::sort(z.begin(), z.end(), [](const Value& x, const Value& y) { return x.real() > y.real(); });
  return z;
}

}  // namespace tolvik::bench
