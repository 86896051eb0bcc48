// SPDX-License-Identifier: GPL-2.0-or-later
// The stacks of the speed table and how they enter the engine.
#pragma once

#include <cmath>
#include <vector>

#include "engine/profile/layer.h"

namespace tolvik::bench {

inline constexpr double kK0 = 6.283185307179586 / 1.54;  // Å⁻¹

struct Slab {
  double delta, beta, d, sigma;
};

// Slabs from the substrate up; vacuum above.
using Stack = std::vector<Slab>;

inline Stack Graded(int layers, double d, double sigma) {
  Stack stack = {{7.6e-6, 1.7e-7, 0, sigma}};
  for (int i = 0; i < layers; ++i) {
    const double depth = static_cast<double>(i) / layers;
    stack.push_back(
        {(i % 2 == 0 ? 2.9e-5 : 8e-6) * (1 - 0.3 * depth), 2e-6 * (1 + depth), d + i % 7 * d / 20, sigma});
  }
  stack.push_back({0, 0, 0, 0});
  return stack;
}

inline Stack Periodic(int periods) {
  Stack stack = {{7.6e-6, 1.7e-7, 0, 3}};
  for (int i = 0; i < periods; ++i) {
    stack.push_back({2.9e-5, 2e-6, 25, 3});
    stack.push_back({8e-6, 5e-7, 35, 3});
  }
  stack.push_back({0, 0, 0, 0});
  return stack;
}

// qz from 0.001 to 0.6 Å⁻¹ at λ 1.54 Å.
template <class T>
std::vector<T> Sines(int angles) {
  std::vector<T> sines;
  for (int i = 0; i < angles; ++i)
    sines.push_back(static_cast<T>((0.001 + 0.599 * i / (angles - 1)) / (2 * kK0)));
  return sines;
}

enum class Magnetism { kNone, kTensor, kFirstOrder };

// A moment in a general direction, as a unit vector and as the angles of the first-order algorithm, degrees.
inline constexpr double kMoment[3] = {0.48, 0.6, 0.64};
inline constexpr double kMagGamma = 51.34;
inline constexpr double kMagPhi = 50.2;
// Magnetic part of the optical constants over the whole.
inline constexpr double kMagneticShare = 0.3;

template <class T>
void Magnetise(engine::CLayer<T>& entry, Magnetism magnetism) {
  using Complex = engine::Cplx<T>;
  const T ddelta = T(kMagneticShare) * entry.layer_delta, dbeta = T(kMagneticShare) * entry.layer_beta;
  const Complex iq = Complex(-dbeta, ddelta);
  entry.magnetic = magnetism == Magnetism::kTensor;
  entry.epsilon[1] = iq * T(kMoment[2]);
  entry.epsilon[3] = -entry.epsilon[1];
  entry.epsilon[6] = iq * T(kMoment[1]);
  entry.epsilon[2] = -entry.epsilon[6];
  entry.epsilon[5] = iq * T(kMoment[0]);
  entry.epsilon[7] = -entry.epsilon[5];
  entry.layer_ddelta = ddelta;
  entry.layer_dbeta = dbeta;
}

template <class T>
engine::Profile<T> ProfileOf(const Stack& stack, Magnetism magnetism) {
  engine::Profile<T> profile;
  for (const Slab& slab : stack) {
    engine::CLayer<T> entry;
    entry.layer_d = T(slab.d);
    entry.layer_delta = T(slab.delta);
    entry.layer_beta = T(slab.beta);
    entry.layer_sigma = T(slab.sigma);
    const engine::Cplx<T> n = engine::RefractiveIndex(entry);
    for (const int diagonal : {0, 4, 8}) entry.epsilon[diagonal] = n * n;
    if (magnetism != Magnetism::kNone && slab.delta != 0) Magnetise(entry, magnetism);
    profile.Append(entry);
  }
  return profile;
}

}  // namespace tolvik::bench
