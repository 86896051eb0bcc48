// SPDX-License-Identifier: GPL-2.0-or-later
// One intensity of one profile, by each algorithm, and the same by the independent solution.
#pragma once

#include <complex>

#include "engine/algorithms/matrix_one.tpp"
#include "engine/algorithms/matrix_two.tpp"
#include "engine/algorithms/parratt.tpp"
#include "support/berreman.h"

namespace tolvik::testing {

/// Sigma and pi part of a ray.
struct Ray {
  std::complex<double> sigma, pi;
};
inline const Ray kSigma = {1, 0};
inline const Ray kPi = {0, 1};
inline const Ray kLeft = {std::sqrt(0.5), {0, std::sqrt(0.5)}};
inline const Ray kRight = {std::sqrt(0.5), {0, -std::sqrt(0.5)}};
inline const Ray kAllRays[] = {kSigma, kPi, kLeft, kRight, {{0.3, 0.4}, {-0.5, 0.2}}};

/// By the tensor algorithm; off-diagonal elements above 1e-14 count.
template <class T>
double TensorIntensity(const engine::Profile<T>& profile, double k0, double theta, const Ray& ray,
                       bool transmission = false) {
  const double rays[8] = {ray.sigma.real(), ray.sigma.imag(), ray.pi.real(), ray.pi.imag(), 0, 0, 1, 0};
  T first, second;
  engine::CalcMatrixOne<T>({profile, transmission}, T(theta), T(0.0), T(0.0), T(k0), true, second, first,
                           rays, T(1e-14));
  return static_cast<double>(first);
}

/// By the first-order algorithm; gamma and phi in degrees.
inline double FirstOrderIntensity(const engine::Profile<double>& profile, double k0, double theta,
                                  const Ray& ray, double gamma, double phi) {
  const double rays[8] = {ray.sigma.real(), ray.sigma.imag(), ray.pi.real(), ray.pi.imag(), 0, 0, 1, 0};
  double first, second;
  engine::CalcMatrixTwo<double>({profile, false}, theta, gamma, phi, k0, true, second, first, rays);
  return first;
}

/// By the recursion, without magnetism.
inline double RecursionIntensity(engine::Profile<double> profile, double k0, double theta, const Ray& ray) {
  const double rays[8] = {ray.sigma.real(), ray.sigma.imag(), ray.pi.real(), ray.pi.imag(), 0, 0, 1, 0};
  CArray<std::complex<double>> kz, rpi, rsigma;
  engine::CalcWavevectors<double>(profile, kz, k0, theta, 0.0);
  engine::CalcFresnelCoefficients<double>(profile, kz, rpi, rsigma);
  return engine::CalcParrattIntensity<double>(profile, kz, rpi, rsigma, rays, 1);
}

/// The tensor that the tensor algorithm uses for an entry.
inline Tensor3 TensorOfEntry(const engine::CLayer<double>& entry) {
  Tensor3 e{};
  const Complex n(1.0L - static_cast<Real>(entry.layer_delta), entry.layer_beta);
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t c = 0; c < 3; ++c) {
      const std::complex<double>& z = entry.epsilon[3 * r + c];
      if (entry.magnetic != 0) {
        e[r][c] = Complex(z.real(), z.imag());
      } else if (r == c) {
        e[r][c] = n * n;
      }
    }
  }
  return e;
}

/// Reflected intensity by the independent solution, without roughness, under vacuum.
inline double IndependentIntensity(const engine::Profile<double>& profile, double k0, double theta,
                                   const Ray& ray) {
  std::vector<BerremanLayer> layers;
  for (std::int32_t i = profile.size - 2; i >= 1; --i) {
    layers.push_back({TensorOfEntry(profile[i]), profile[i].layer_d});
  }
  const BerremanAmplitudes r = SolveBerreman(layers, TensorOfEntry(profile[0]), k0, theta);
  return static_cast<double>(
      RayIntensity(r, Complex(ray.sigma.real(), ray.sigma.imag()), Complex(ray.pi.real(), ray.pi.imag())));
}

}  // namespace tolvik::testing
