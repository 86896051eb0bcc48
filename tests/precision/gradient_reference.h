// SPDX-License-Identifier: GPL-2.0-or-later
// Derivatives of a reflectivity by central differences of 200 bits, from an independent recursion: the
// textbook one with k = k0 sqrt(n² - 1 + s²), which shares no line with the engine.
#pragma once

#include <vector>

#include "engine/curve/jacobian.h"
#include "engine/number/cnumber.h"
#include "engine/number/complex.h"
#include "support/random_stacks.h"

namespace tolvik::testing {

using engine::ProfileField;

inline constexpr ProfileField kAllFields[] = {
    ProfileField::kDelta,
    ProfileField::kBeta,
    ProfileField::kThickness,
    ProfileField::kRoughness,
    ProfileField::kMagneticDelta,
    ProfileField::kMagneticBeta,
    ProfileField::kRoughnessSquared,
};

/// A derivative, and 2 |r| |dr/dp| summed over both polarisations with their shares: its size without the
/// cancellation between the phases of amplitude and slope, the scale of its rounding errors.
struct ReferenceSlope {
  double derivative = 0;
  double modulus = 0;
};

class ReferenceStack {
 public:
  using T = engine::CNumber;
  using Z = engine::Complex<T>;

  ReferenceStack(const RandomCase& test, int ray) : test_(test), ray_(ray), k0_(test.k0) {
    for (const engine::CLayer<double>& layer : test.layers) {
      const T sigma(layer.layer_sigma);
      entries_.push_back({T(layer.layer_delta), T(layer.layer_beta), T(layer.layer_d), sigma * sigma,
                          T(layer.layer_ddelta), T(layer.layer_dbeta)});
    }
  }

  double Intensity(double sine) const {
    const Amplitudes a = Reflect(T(sine));
    return static_cast<double>(norm(a.sigma) * Share(0) + norm(a.pi) * Share(2));
  }

  ReferenceSlope Slope(double sine, std::size_t entry, ProfileField field) {
    const bool rough = field == ProfileField::kRoughness;
    const ReferenceSlope slope =
        Difference(Number(entry, rough ? ProfileField::kRoughnessSquared : field), T(sine));
    const double factor = rough ? 2 * test_.layers[entry].layer_sigma : 1;  // dσ²/dσ
    return {slope.derivative * factor, slope.modulus * std::abs(factor)};
  }

  /// By the sine of the angle.
  ReferenceSlope SlopeOfSine(double sine) {
    T s(sine);
    return Difference(s, s);
  }

 private:
  struct Entry {
    T delta, beta, d, sigma2, ddelta, dbeta;
  };
  struct Amplitudes {
    Z sigma, pi;
  };

  T& Number(std::size_t entry, ProfileField field) {
    Entry& e = entries_[entry];
    switch (field) {
      case ProfileField::kDelta:
        return e.delta;
      case ProfileField::kBeta:
        return e.beta;
      case ProfileField::kThickness:
        return e.d;
      case ProfileField::kMagneticDelta:
        return e.ddelta;
      case ProfileField::kMagneticBeta:
        return e.dbeta;
      default:
        return e.sigma2;
    }
  }

  ReferenceSlope Difference(T& x, const T& sine) {
    const T before = x, step(1e-25);
    x = before + step;
    const Amplitudes up = Reflect(sine);
    x = before - step;
    const Amplitudes down = Reflect(sine);
    x = before;
    const T half(0.5), twice = step + step;
    const auto parts = [&](const Z& a, const Z& b, const T& share, ReferenceSlope& sum) {
      sum.derivative += static_cast<double>((norm(a) - norm(b)) / twice * share);
      sum.modulus += static_cast<double>(abs((a + b) * half) * abs((a - b) / step) * share);
    };
    ReferenceSlope result;
    parts(up.sigma, down.sigma, Share(0), result);
    parts(up.pi, down.pi, Share(2), result);
    return result;
  }

  T Share(int part) const {
    const double* ray = test_.options.polarisation + 4 * (ray_ - 1) + part;
    return T(ray[0]) * T(ray[0]) + T(ray[1]) * T(ray[1]);
  }

  // In the upper half of the plane, continued beyond the real axis where that is a cut of the square root.
  static Z Root(const Z& z) {
    if (real(z) > T(0.0)) return sqrt(z);
    return Z(T(0.0), T(1.0)) * sqrt(-z);
  }

  Amplitudes Reflect(const T& s) const {
    const T one(1.0), cosine = sqrt(one - s * s);
    const T shift = test_.options.magnetic ? (ray_ == 1 ? cosine : -cosine) : T(0.0);
    Amplitudes a;
    Z below_k, below_n2;
    for (std::size_t j = 0; j < entries_.size(); ++j) {
      const Entry& e = entries_[j];
      const Z less(e.ddelta * shift - e.delta, e.beta - e.dbeta * shift);  // n - 1
      const Z chi = less * (less + T(2.0));
      const Z n2 = chi + one, k = k0_ * Root(chi + s * s);
      if (j > 0) {
        const Entry& under = entries_[j - 1];
        const Z F = exp(T(-2.0) * under.sigma2 * (below_k * k));
        const Z E = j > 1 ? exp(Z(T(0.0), T(2.0)) * below_k * under.d) : Z();
        a.sigma = Add((k - below_k) / (k + below_k) * F, a.sigma * E);
        a.pi = Add((below_n2 * k - n2 * below_k) / (below_n2 * k + n2 * below_k) * F, a.pi * E);
      }
      below_k = k;
      below_n2 = n2;
    }
    return a;
  }

  static Z Add(const Z& r, const Z& below) { return (r + below) / (T(1.0) + r * below); }

  const RandomCase& test_;
  int ray_;
  T k0_;
  std::vector<Entry> entries_;
};

}  // namespace tolvik::testing
