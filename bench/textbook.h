// SPDX-License-Identifier: GPL-2.0-or-later
// The Parratt recursion as in a textbook: std::complex<double>, one angle after the other, both
// polarisations. The reference of all benchmarks of curves.
#pragma once

#include <cmath>
#include <complex>
#include <vector>

namespace tolvik::bench {

struct TextbookLayer {
  std::complex<double> n;
  double d = 0;
  double sigma = 0;  ///< of the interface above
};

struct TextbookResult {
  double sigma = 0;
  double pi = 0;
};

/// layers from the substrate to the ambient; kz is work space of the same size.
inline TextbookResult TextbookParratt(const std::vector<TextbookLayer>& layers, double k0, double theta,
                                      std::vector<std::complex<double>>& kz) {
  using Complex = std::complex<double>;
  const double c = std::cos(theta);
  for (std::size_t j = 0; j < layers.size(); ++j) kz[j] = k0 * std::sqrt(layers[j].n * layers[j].n - c * c);
  Complex x, y;
  for (std::size_t j = 0; j + 1 < layers.size(); ++j) {
    const Complex a = kz[j + 1], b = kz[j];
    const Complex na = layers[j + 1].n, nb = layers[j].n;
    Complex rs = (a - b) / (a + b);
    Complex rp = (nb * nb * a - na * na * b) / (nb * nb * a + na * na * b);
    const double sigma = layers[j].sigma;
    if (sigma != 0) {
      const Complex damping = std::exp(-2.0 * sigma * sigma * a * b);
      rs *= damping;
      rp *= damping;
    }
    if (j == 0) {
      x = rp;
      y = rs;
      continue;
    }
    const Complex phase = std::exp(Complex(0, 2) * b * layers[j].d);
    x = (rp + x * phase) / (1.0 + rp * x * phase);
    y = (rs + y * phase) / (1.0 + rs * y * phase);
  }
  return {std::norm(y), std::norm(x)};
}

}  // namespace tolvik::bench
