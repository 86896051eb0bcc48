// SPDX-License-Identifier: GPL-2.0-or-later
// Random stacks and angles for comparisons of number types, lanes and algorithms: ordinary ones and unusual
// ones.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "engine/curve/intensity.h"
#include "optics/angles.h"
#include "tolvik/state.h"

namespace tolvik::testing {

/// A stack, its angles and options, in double.
struct RandomCase {
  std::vector<engine::CLayer<double>> layers;
  std::vector<double> sines;
  double k0 = 0;
  engine::IntensityOptions<double> options;
};

/// Draws cases; the same seed gives the same cases.
class RandomCases {
 public:
  explicit RandomCases(std::uint64_t seed) : random_(seed) {}

  double Uniform(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }
  double Logarithmic(double low, double high) { return std::exp(Uniform(std::log(low), std::log(high))); }
  int Below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }
  bool OneIn(int n) { return Below(n) == 0; }

  /// Ordinary matter: smooth or rough, thin or thick, single or periodic, magnetic or not.
  RandomCase Ordinary(int angles) {
    RandomCase result;
    result.k0 = kTwoPi / Logarithmic(0.5, 30.0);
    const int entries = 2 + (OneIn(20) ? Below(60) : Below(6));
    for (int j = 0; j < entries; ++j) result.layers.push_back(Layer(result.k0));
    if (OneIn(3)) MakePeriodic(result.layers);
    if (!OneIn(4)) result.layers.back() = engine::CLayer<double>();
    for (int i = 0; i < angles; ++i) result.sines.push_back(Sine(result.k0));
    result.options.magnetic = OneIn(3);
    for (double& part : result.options.polarisation) part = OneIn(3) ? 0.0 : Uniform(-1, 1);
    return result;
  }

  /// A state without magnetism that float can follow: contrasts from 1e-7 to 1e-2, 0 to 200 Å thick, half of
  /// them smooth.
  CState Moderate(int most_layers) {
    CState state;
    state.layers.Clear();
    state.lambda = Logarithmic(0.7, 20);
    const double contrast = Logarithmic(1e-6, 1e-2);
    const bool rough = Uniform(0, 1) < 0.5;
    const int layers = 1 + Below(most_layers);
    for (int i = 0; i < layers; ++i) {
      CLayer layer;
      layer.layer_delta = contrast * Uniform(0.1, 1);
      layer.layer_beta = layer.layer_delta * Logarithmic(1e-3, 0.5);
      layer.layer_d = Uniform(0, 200);
      layer.layer_sigma = rough ? Uniform(0, 6) : 0;
      state.layers.Append(layer);
    }
    state.layers.Append(CLayer());
    return state;
  }

  /// For the matrix algorithms: tensors that follow the scalar indices on some entries.
  void GiveTensors(RandomCase& test) {
    test.options.algorithm = Algorithm::kMatrixOne + Below(2);
    test.options.magnetic = false;
    test.options.tolerance = OneIn(4) ? Logarithmic(1e-12, 1e-2) : 5e-5;
    test.options.transmission = OneIn(10);
    for (engine::CLayer<double>& layer : test.layers) {
      const std::complex<double> n(1.0 - layer.layer_delta, layer.layer_beta);
      layer.magnetic = OneIn(2);
      for (const int diagonal : {0, 4, 8}) layer.epsilon[diagonal] = n * n;
      if (OneIn(10)) layer.epsilon[Below(9)] += std::complex<double>(0, Logarithmic(1e-9, 1e-3));
    }
  }

  /// For the matrix algorithms: magnetisations in any direction, general and diagonal tensors, entries
  /// without any, seen from above or through the stack.
  void Magnetise(RandomCase& test) {
    test.options.algorithm = Algorithm::kMatrixOne + Below(2);
    test.options.magnetic = !OneIn(8);
    test.options.maggamma = Uniform(-180, 180);
    test.options.magphi = OneIn(6) ? 90.0 * Below(3) : Uniform(0, 180);
    test.options.tolerance = OneIn(4) ? Logarithmic(1e-12, 1e-3) : 5e-5;
    test.options.transmission = OneIn(4);
    for (engine::CLayer<double>& layer : test.layers) {
      const std::complex<double> n(1.0 - layer.layer_delta, layer.layer_beta);
      layer.magnetic = !OneIn(4);
      for (const int diagonal : {0, 4, 8}) layer.epsilon[diagonal] = n * n;
      if (OneIn(4)) {
        for (const int diagonal : {0, 4, 8}) layer.epsilon[diagonal] += Shift(layer.layer_delta);
      }
      if (OneIn(8)) continue;
      for (const int element : {1, 2, 5}) {
        const bool absent = OneIn(8);
        const std::complex<double> turn = absent ? 0.0 : Shift(Logarithmic(1e-6, 3e-3));
        const int mirrored = element == 5 ? 7 : 3 * element;
        layer.epsilon[element] = turn;
        layer.epsilon[mirrored] = OneIn(10) ? turn : -turn;  // strain, or a moment
      }
    }
  }

  /// An ordinary case with a few unusual numbers.
  RandomCase Odd(int angles) {
    RandomCase result = Ordinary(angles);
    MakeOdd(result);
    return result;
  }

  /// Replaces a few numbers of a case by unusual ones.
  void MakeOdd(RandomCase& result) {
    if (OneIn(10)) result.layers.resize(1 + static_cast<std::size_t>(Below(2)));
    for (int change = 1 + Below(3); change > 0; --change) {
      Spoil(result.layers[static_cast<std::size_t>(Below(static_cast<int>(result.layers.size())))]);
    }
    for (double& s : result.sines) {
      if (OneIn(3)) s = OddSine();
    }
    if (OneIn(15)) result.k0 = OneIn(2) ? OddNumber() : kTwoPi * OddNumber();
    if (OneIn(15)) result.options.polarisation[Below(8)] = OddNumber();
    if (OneIn(15)) (OneIn(2) ? result.options.maggamma : result.options.magphi) = OddNumber();
  }

 private:
  engine::CLayer<double> Layer(double k0) {
    engine::CLayer<double> layer;
    layer.layer_delta = Logarithmic(1e-7, 3e-3) * (OneIn(10) ? -1 : 1);
    layer.layer_beta = OneIn(8) ? 0.0 : Logarithmic(1e-10, 2e-3);
    layer.layer_d = Logarithmic(0.1, 3000.0);
    layer.layer_sigma = OneIn(3) ? 0.0 : Logarithmic(0.3, 30.0) / std::max(k0, 0.3);
    if (OneIn(2)) {
      layer.layer_ddelta = layer.layer_delta * Uniform(-0.5, 0.5);
      layer.layer_dbeta = layer.layer_beta * Uniform(-0.5, 0.5);
    }
    return layer;
  }

  static void MakePeriodic(std::vector<engine::CLayer<double>>& layers) {
    for (std::size_t j = 3; j + 1 < layers.size(); ++j) layers[j] = layers[j - 2];
  }

  // More angles where R changes most: around the critical angles.
  double Sine(double k0) {
    if (OneIn(4)) return Uniform(0.0, 1.0);
    return std::min(0.999, Logarithmic(1e-4, 1.5) / (2 * k0));
  }

  double OddSine() {
    static constexpr double kSines[] = {
        0.0,  -0.0, 5e-324, 1e-300, 1e-160, 1e-30,  1e-16, 1e-9,
        1e-8, 2e-8, 1e-7,   1e-5,   0.5,    0.9999, 1.0,   0.9999999999999999};
    return kSines[Below(static_cast<int>(std::size(kSines)))];
  }

  double OddNumber() {
    static constexpr double kInfinity = std::numeric_limits<double>::infinity();
    static constexpr double kNumbers[] = {
        0.0,   -0.0,   -1.0,      1.0,        -1e-5,
        1e-17, 1e-320, 1e-200,    1e10,       1e160,
        1e300, -1e160, kInfinity, -kInfinity, std::numeric_limits<double>::quiet_NaN()};
    return kNumbers[Below(static_cast<int>(std::size(kNumbers)))];
  }

  std::complex<double> Shift(double size) { return {size * Uniform(-0.5, 0.5), size * Uniform(0.0, 0.3)}; }

  void Spoil(engine::CLayer<double>& layer) {
    switch (Below(14)) {
      case 0:
        layer.layer_sigma = 1000.0;
        return;
      case 1:  // thick absorber
        layer.layer_d = Logarithmic(1e4, 1e8);
        layer.layer_beta = 1e-3;
        return;
      case 2:
        layer.layer_beta = OneIn(2) ? 0.0 : -0.0;
        return;
      case 3:
        layer.layer_beta = -Logarithmic(1e-10, 1e-2);
        return;
      case 4:
        layer.layer_delta = OneIn(2) ? -layer.layer_delta : Uniform(-2.0, 2.0);
        return;
      case 5:
        layer.layer_d = OneIn(2) ? 0.0 : -0.0;
        return;
      case 6:  // no contrast to vacuum, or none that a double holds
        layer.layer_delta = OneIn(2) ? 0.0 : 1e-17;
        layer.layer_beta = OneIn(2) ? 0.0 : 1e-17;
        return;
      case 7:
        layer.layer_sigma = -layer.layer_sigma;
        return;
      case 8:
        layer.layer_delta = OddNumber();
        return;
      case 9:
        layer.layer_beta = OddNumber();
        return;
      case 10:
        layer.layer_d = OddNumber();
        return;
      case 11:
        layer.layer_sigma = OddNumber();
        return;
      case 12:
        layer.layer_ddelta = OddNumber();
        return;
      default:
        layer.layer_dbeta = OddNumber();
    }
  }

  std::mt19937_64 random_;
};

}  // namespace tolvik::testing
