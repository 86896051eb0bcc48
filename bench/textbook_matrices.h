// SPDX-License-Identifier: GPL-2.0-or-later
// The two 4×4 algorithms as one writes them from the papers: the four modes of each slab, whole matrices, a
// general inverse, one roughness factor for each element, one angle after the other. With row vectors of
// amplitudes a, continuity at an interface reads a_up D_up = a_lo D_lo. The reference of all benchmarks of
// the matrix algorithms.
//
// J. Zak, E. R. Moog, C. Liu and S. D. Bader, J. Magn. Magn. Mater. 89, 107 (1990), and Phys. Rev. B 43, 6423
// (1991); reflection from the matrix of a stack: P. Yeh, Surf. Sci. 96, 41 (1980).
#pragma once

#include <vector>

#include "bench/textbook_matrix4.h"

namespace tolvik::bench {

struct TextbookSlab {
  Value n = 1;
  double d = 0;
  double sigma = 0;       ///< of the interface above
  bool magnetic = false;  ///< the tensor replaces n
  std::array<std::array<Value, 3>, 3> eps{};
  Value Q = 0;  ///< magnetic strength of the first-order algorithm
};

/// Rows of D are the fields (ex, ey, hx, hy) of the modes, the two that run down first; P takes amplitudes
/// from the lower face of the slab to the upper one; kappa are the normal wavevectors in units of k0.
struct TextbookModes {
  Matrix D{}, P{};
  Roots kappa{};
};

/// A dielectric tensor, solved exactly.
struct TextbookTensor {
  double k0;

  TextbookModes Modes(const TextbookSlab& slab, double c) const {
    TextbookModes m;
    if (slab.magnetic) {
      SetGeneral(m, slab.eps, c);
    } else {
      const Value q = std::sqrt(1.0 - c * c / (slab.n * slab.n)), w = slab.n * q;
      m.kappa = {w, w, -w, -w};
      m.D[0] = {1, 0, 0, w};
      m.D[1] = {0, q, -slab.n, 0};
      m.D[2] = {1, 0, 0, -w};
      m.D[3] = {0, -q, -slab.n, 0};
    }
    for (std::size_t r = 0; r < 4; ++r) m.P[r][r] = std::exp(Value(0, -1) * k0 * slab.d * m.kappa[r]);
    return m;
  }

  // A factor for each pair of an upper and a lower mode.
  void Roughen(Matrix& T, double sigma, const Roots& up, const Roots& lo) const {
    for (std::size_t r = 0; r < 4; ++r) {
      for (std::size_t k = 0; k < 4; ++k) {
        const Value difference = up[k] - lo[r];
        T[r][k] *= std::exp(-0.5 * sigma * sigma * k0 * k0 * difference * difference);
      }
    }
  }

 private:
  static void SetGeneral(TextbookModes& m, const std::array<std::array<Value, 3>, 3>& eps, double c) {
    const auto& [x, y, z] = eps;
    const auto& [xx, xy, xz] = x;
    const auto& [yx, yy, yz] = y;
    const auto& [zx, zy, zz] = z;
    const Value a = xx - c * c, b = zz - c * c;
    m.kappa = SolveQuartic(zz, c * (yz + zy), zx * xz + yz * zy - yy * b - a * zz,
                           c * (xz * yx + zx * xy - a * (yz + zy)),
                           zx * xy * yz + xz * yx * zy - a * yz * zy + yy * (a * b - zx * xz) - b * xy * yx);
    for (std::size_t r = 0; r < 4; ++r) {
      const Value u = c * m.kappa[r] + zy, h = a - m.kappa[r] * m.kappa[r];
      const Value e1 = xz * u - xy * b, e2 = h * b - xz * zx, e3 = xy * zx - h * u;
      const double length = std::sqrt(std::norm(e1) + std::norm(e2) + std::norm(e3));
      m.D[r] = {e1 / length, e2 / length, (c * e3 - m.kappa[r] * e2) / length, m.kappa[r] * e1 / length};
    }
  }
};

/// A scalar index and a magnetisation to first order, along gamma and phi, rad.
struct TextbookFirstOrder {
  double k0;
  double gamma = 0;
  double phi = 0;

  TextbookModes Modes(const TextbookSlab& slab, double c) const {
    TextbookModes m;
    const Value i(0, 1), n = slab.n, Q = slab.Q;
    const Value s = c / n, q = std::sqrt(1.0 - s * s), w = n * q;
    m.kappa = {w, w, -w, -w};

    const double g = std::sin(phi) * std::sin(gamma);
    const Value up = g * s + q * std::cos(phi), um = g * s - q * std::cos(phi);
    const Value W = i * Q * s * (std::cos(gamma) * std::sin(phi)), Z = i * s * Q / (2.0 * q);
    const Value vp = 0.5 * i * n * Q * up, vm = 0.5 * i * n * Q * um;
    m.D[0] = {1, (up * s - 2.0 * g) * Z, vp, w};
    m.D[1] = {0, q + W, -n, vp / q};
    m.D[2] = {1, -(um * s - 2.0 * g) * Z, vm, -w};
    m.D[3] = {0, W - q, -n, -vm / q};

    const Value turn = 0.5 * k0 * slab.d * n * Q / q, e = std::exp(-i * k0 * slab.d * w);
    m.P[0] = {e, -up * turn * e, 0, 0};
    m.P[1] = {up * turn * e, e, 0, 0};
    m.P[2] = {0, 0, 1.0 / e, um * turn / e};
    m.P[3] = {0, 0, -um * turn / e, 1.0 / e};
    return m;
  }

  // Waves that run the same way, and opposite ones.
  void Roughen(Matrix& T, double sigma, const Roots& up, const Roots& lo) const {
    const Value sum = up[0] + lo[0], difference = up[0] - lo[0];
    const Value along = std::exp(-0.5 * sigma * sigma * k0 * k0 * difference * difference);
    const Value opposite = std::exp(-0.5 * sigma * sigma * k0 * k0 * sum * sum);
    for (std::size_t r = 0; r < 4; ++r) {
      for (std::size_t k = 0; k < 4; ++k) T[r][k] *= (r < 2) == (k < 2) ? along : opposite;
    }
  }
};

/// Intensity that the stack, substrate first, reflects of the wave with the amplitudes sigma and pi at a
/// grazing angle theta, rad.
template <class Algorithm>
double TextbookReflectivity(const std::vector<TextbookSlab>& stack, const Algorithm& algorithm, double theta,
                            const Value& sigma, const Value& pi) {
  const double c = std::cos(theta);
  TextbookModes up = algorithm.Modes(stack.back(), c);
  Matrix M = Identity();
  for (std::size_t j = stack.size() - 1; j-- > 0;) {
    const TextbookModes lo = algorithm.Modes(stack[j], c);
    Matrix T = Multiply(lo.D, Invert(up.D));
    if (stack[j].sigma != 0) algorithm.Roughen(T, stack[j].sigma, up.kappa, lo.kappa);
    M = Multiply(T, M);
    if (j > 0) M = Multiply(lo.P, M);
    up = lo;
  }
  const Value delta = M[0][0] * M[1][1] - M[0][1] * M[1][0];
  const auto amplitude = [&](std::size_t k) {
    return ((M[1][1] * M[0][k] - M[0][1] * M[1][k]) * sigma + (M[0][0] * M[1][k] - M[1][0] * M[0][k]) * pi) /
           delta;
  };
  return std::norm(amplitude(2)) + std::norm(amplitude(3));
}

}  // namespace tolvik::bench
