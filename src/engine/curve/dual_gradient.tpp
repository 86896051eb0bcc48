// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <limits>

#include "engine/algorithms/parratt.tpp"
#include "engine/curve/dual_gradient.h"
#include "engine/curve/grazing.h"
#include "engine/number/dual_complex.h"

namespace tolvik::engine {

namespace dual_gradient_detail {

// Directions first .. first + W - 1 of a task: the parameters, and one past them the sine.
template <int W, class S>
class Directions {
  using T = Dual<W, S>;

 public:
  Directions(const GradientTask& task, int first) : task_(task), first_(first) {
    for (const CLayer<double>& layer : task.profile) profile_.Append(Convert(layer));
    for (const ChainTerm& term : task.chain.terms) {
      const int direction = term.parameter - first;
      if (direction >= 0 && direction < W) Seed(term, profile_[term.entry], direction);
    }
  }

  T Intensity(double sine, int ray) {
    T s(sine);
    const int direction = task_.chain.parameters - first_;
    if (direction >= 0 && direction < W) s.tangent[direction] = 1;
    const T sense(!task_.options.magnetic ? 0.0 : ray == 1 ? 1.0 : -1.0);
    CalcWavevectors<T>(profile_, vectors_.kz, T(task_.k0), GrazingAngle(s), sense);
    CalcFresnelCoefficients<T>(profile_, vectors_.kz, vectors_.rpi, vectors_.rsigma);
    return CalcParrattIntensity<T>(profile_, vectors_.kz, vectors_.rpi, vectors_.rsigma,
                                   task_.options.polarisation, ray);
  }

 private:
  static CLayer<T> Convert(const CLayer<double>& layer) {
    CLayer<T> entry;
    entry.layer_d = T(layer.layer_d);
    entry.layer_delta = T(layer.layer_delta);
    entry.layer_beta = T(layer.layer_beta);
    entry.layer_ddelta = T(layer.layer_ddelta);
    entry.layer_dbeta = T(layer.layer_dbeta);
    entry.layer_sigma = T(layer.layer_sigma);
    return entry;
  }

  static void Seed(const ChainTerm& term, CLayer<T>& entry, int direction) {
    switch (term.field) {
      case ProfileField::kDelta:
        entry.layer_delta.tangent[direction] += term.factor;
        return;
      case ProfileField::kBeta:
        entry.layer_beta.tangent[direction] += term.factor;
        return;
      case ProfileField::kThickness:
        entry.layer_d.tangent[direction] += term.factor;
        return;
      case ProfileField::kRoughness:
        if (IsRough(entry)) entry.layer_sigma.tangent[direction] += term.factor;
        return;
      case ProfileField::kRoughnessSquared:
        // A sigma whose square leaves the factor at 1 exactly, while its derivative by the square is seen.
        if (!IsRough(entry)) entry.layer_sigma.value = kNearlySmooth;
        entry.layer_sigma.tangent[direction] += S(term.factor) / (2 * entry.layer_sigma.value);
        return;
      case ProfileField::kMagneticDelta:
        entry.layer_ddelta.tangent[direction] += term.factor;
        return;
      case ProfileField::kMagneticBeta:
        entry.layer_dbeta.tangent[direction] += term.factor;
        return;
    }
  }

  static constexpr S kNearlySmooth = 0x1p-200;  // Å
  static bool IsRough(const CLayer<T>& entry) {
    return entry.layer_sigma.value != 0 && entry.layer_sigma.value != kNearlySmooth;
  }

  const GradientTask& task_;
  int first_;
  Profile<T> profile_;
  ParrattVectors<T> vectors_;
};

}  // namespace dual_gradient_detail

/// As CalcDualRows, W directions at a time, in the number type S.
template <int W, class S>
void CalcDualRowsBy(const GradientTask& task, int ray, std::span<const std::int32_t> nodes, double* rows) {
  const int directions = task.chain.parameters + 1;
  for (int first = 0; first < directions; first += W) {
    dual_gradient_detail::Directions<W, S> some(task, first);
    double* row = rows + first;
    for (const std::int32_t node : nodes) {
      const Dual<W, S> intensity = some.Intensity(task.nodes.sine[node], ray);
      for (int i = 0; i < W && first + i < directions; ++i)
        row[i] = static_cast<double>(intensity.tangent[i]);
      row += directions;
    }
  }
  // The wavevector of vacuum is the modulus of the sine, which has no derivative at 0.
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (task.nodes.sine[nodes[i]] != 0) continue;
    rows[(i + 1) * static_cast<std::size_t>(directions) - 1] = std::numeric_limits<double>::quiet_NaN();
  }
}

}  // namespace tolvik::engine
