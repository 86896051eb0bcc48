// SPDX-License-Identifier: GPL-2.0-or-later
// An independent 4×4 solution for the tests: Berreman's Δ matrix (J. Opt. Soc. Am. 62, 502 (1972)) and its
// matrix exponential. No modes, no quartic, no closed inverse; long double throughout.
//
// Axes: x perpendicular to the plane of incidence, y in the surface along the beam, z into the sample, time
// exp(-iωt). The field vector is (ex, ey, hx, hy), and d/dz of it is i k0 Δ times it.
#pragma once

#include <array>
#include <cmath>
#include <complex>
#include <utility>
#include <vector>

namespace tolvik::testing {

using Real = long double;
using Complex = std::complex<Real>;
using Vector = std::array<Complex, 4>;
using Square = std::array<Vector, 4>;                   // rows
using Tensor3 = std::array<std::array<Complex, 3>, 3>;  // dielectric tensor

inline Square Multiply(const Square& a, const Square& b) {
  Square result{};
  for (std::size_t r = 0; r < 4; ++r) {
    for (std::size_t c = 0; c < 4; ++c) {
      for (std::size_t k = 0; k < 4; ++k) result[r][c] += a[r][k] * b[k][c];
    }
  }
  return result;
}

inline Vector Multiply(const Square& a, const Vector& v) {
  Vector result{};
  for (std::size_t r = 0; r < 4; ++r) {
    for (std::size_t k = 0; k < 4; ++k) result[r] += a[r][k] * v[k];
  }
  return result;
}

/// Solves a x = b for several right sides by elimination with pivoting; b comes back as x.
template <std::size_t Sides>
void Solve(Square a, std::array<Vector, Sides>& b) {
  for (std::size_t k = 0; k < 4; ++k) {
    std::size_t pivot = k;
    for (std::size_t r = k + 1; r < 4; ++r) {
      if (std::abs(a[r][k]) > std::abs(a[pivot][k])) pivot = r;
    }
    std::swap(a[k], a[pivot]);
    for (Vector& side : b) std::swap(side[k], side[pivot]);
    for (std::size_t r = 0; r < 4; ++r) {
      if (r == k) continue;
      const Complex factor = a[r][k] / a[k][k];
      for (std::size_t c = k; c < 4; ++c) a[r][c] -= factor * a[k][c];
      for (Vector& side : b) side[r] -= factor * side[k];
    }
  }
  for (std::size_t k = 0; k < 4; ++k) {
    for (Vector& side : b) side[k] /= a[k][k];
  }
}

/// Berreman's matrix of a tensor at the in-surface wavevector c = cos θ, in units of k0.
inline Square BerremanMatrix(const Tensor3& e, Real c) {
  // ez from the z row of curl H: -c hx = -(ezx ex + ezy ey + ezz ez).
  const Vector ez = {-e[2][0] / e[2][2], -e[2][1] / e[2][2], c / e[2][2], 0};
  Square delta{};
  delta[0][3] = 1;
  for (std::size_t k = 0; k < 4; ++k) {
    delta[1][k] = c * ez[k];
    delta[2][k] = -e[1][2] * ez[k];
    delta[3][k] = e[0][2] * ez[k];
  }
  delta[1][2] -= 1;
  delta[2][0] -= e[1][0];
  delta[2][1] -= e[1][1];
  delta[3][0] += e[0][0] - c * c;
  delta[3][1] += e[0][1];
  return delta;
}

/// exp(a) by scaling, a Taylor series of 30 terms, and squaring.
inline Square Exponential(Square a) {
  Real size = 0;
  for (const Vector& row : a) {
    for (const Complex& element : row) size = std::max(size, std::abs(element));
  }
  int squarings = 0;
  for (; size > 0.05L; size /= 2) ++squarings;
  for (Vector& row : a) {
    for (Complex& element : row) element = std::ldexp(1.0L, -squarings) * element;
  }
  Square sum{}, term{};
  for (std::size_t i = 0; i < 4; ++i) sum[i][i] = term[i][i] = 1;
  for (int n = 1; n <= 30; ++n) {
    term = Multiply(term, a);
    for (std::size_t r = 0; r < 4; ++r) {
      for (std::size_t c = 0; c < 4; ++c) sum[r][c] += (term[r][c] /= Real(n));
    }
  }
  for (; squarings > 0; --squarings) sum = Multiply(sum, sum);
  return sum;
}

struct BerremanLayer {
  Tensor3 epsilon;
  Real d;
};

/// Two field vectors that span the waves running down in an absorbing half space: the image of (1 -
/// sign(iΔ))/2, with the matrix sign by Newton's iteration (Roberts, Int. J. Control 32, 677 (1980)).
inline std::array<Vector, 2> DownwardFields(const Tensor3& epsilon, Real c) {
  Square x = BerremanMatrix(epsilon, c);
  for (Vector& row : x) {
    for (Complex& element : row) element *= Complex(0, 1);
  }
  for (int step = 0; step < 100; ++step) {
    std::array<Vector, 4> inverse{};
    for (std::size_t i = 0; i < 4; ++i) inverse[i][i] = 1;
    Solve(x, inverse);  // columns of the inverse
    for (std::size_t r = 0; r < 4; ++r) {
      for (std::size_t k = 0; k < 4; ++k) x[r][k] = (x[r][k] + inverse[k][r]) / 2.0L;
    }
  }
  std::array<Vector, 2> fields = {Vector{1, 0.3L, 0.2L, 0.7L}, Vector{0.1L, 1, -0.6L, 0.4L}};
  for (Vector& field : fields) {
    const Vector image = Multiply(x, field);
    for (std::size_t k = 0; k < 4; ++k) field[k] = (field[k] - image[k]) / 2.0L;
  }
  return fields;
}

struct BerremanAmplitudes {
  Complex ss, ps, sp, pp;  // reflected amplitudes, [out][in]: ps is pi out of sigma in
};

/// Reflected amplitudes of layers (from the top down) on a substrate, under vacuum, at grazing angle theta.
/// Reference fields: sigma (1, 0, 0, ±sin θ), pi (0, ±sin θ, -1, 0), + downward.
inline BerremanAmplitudes SolveBerreman(const std::vector<BerremanLayer>& layers, const Tensor3& substrate,
                                        Real k0, Real theta) {
  const Real c = std::cos(theta), w = std::sin(theta);
  std::array<Vector, 2> below = DownwardFields(substrate, c);
  for (auto layer = layers.rbegin(); layer != layers.rend(); ++layer) {
    Square a = BerremanMatrix(layer->epsilon, c);
    for (Vector& row : a) {
      for (Complex& element : row) element *= Complex(0, -k0 * layer->d);
    }
    const Square up = Exponential(a);
    for (Vector& field : below) field = Multiply(up, field);
  }
  // t0 below0 + t1 below1 - rs (sigma up) - rp (pi up) = incident wave
  const Vector sigma_up = {1, 0, 0, -w}, pi_up = {0, -w, -1, 0};
  Square system{};
  for (std::size_t r = 0; r < 4; ++r) system[r] = {below[0][r], below[1][r], -sigma_up[r], -pi_up[r]};
  std::array<Vector, 2> sides = {Vector{1, 0, 0, w}, Vector{0, w, -1, 0}};
  Solve(system, sides);
  return {sides[0][2], sides[0][3], sides[1][2], sides[1][3]};
}

/// Intensity of a ray with parts sigma and pi, summed over both outgoing polarisations.
inline Real RayIntensity(const BerremanAmplitudes& r, Complex sigma, Complex pi) {
  return std::norm(r.ss * sigma + r.sp * pi) + std::norm(r.ps * sigma + r.pp * pi);
}

}  // namespace tolvik::testing
