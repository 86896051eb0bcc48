// SPDX-License-Identifier: GPL-2.0-or-later
// A film measured with error bars, for tests of the analysis.
#pragma once

#include <cmath>
#include <random>
#include <vector>

#include "support/film.h"
#include "tolvik/analysis/measurement.h"

namespace tolvik::testing {

/// Uniform and normal numbers that are the same with every standard library.
class Noise {
 public:
  explicit Noise(std::uint32_t seed) : generator_(seed) {}
  double Uniform() { return (static_cast<double>(generator_()) + 0.5) / 4294967296.0; }
  double Normal() {
    const double radius = std::sqrt(-2 * std::log(Uniform()));
    return radius * std::cos(6.283185307179586 * Uniform());
  }
  /// Counts of a mean: by products of uniform numbers, or as a rounded normal number where there are many.
  double Poisson(double mean) {
    if (mean > 500) return std::floor(std::max(0.0, mean + std::sqrt(mean) * Normal()) + 0.5);
    double product = Uniform(), limit = std::exp(-mean);
    int count = 0;
    for (; product > limit; ++count) product *= Uniform();
    return count;
  }

 private:
  std::mt19937 generator_;
};

/// q from first to last, Å⁻¹.
inline std::vector<double> Grid(int points, double first, double last) {
  std::vector<double> q;
  for (int i = 0; i < points; ++i) q.push_back(first + (last - first) * i / (points - 1));
  return q;
}

/// The film of MakeFilm with variables for thickness and roughness of its metal and delta of its oxide.
inline CState MakeFreeFilm() {
  CState state = MakeFilm();
  Vary(state, FitKind::kThickness, 1, 60, 0.1, 30, 90);
  Vary(state, FitKind::kSigma, 1, 5, 0.1, 0, 20);
  Vary(state, FitKind::kDelta, 2, 1.2e-5, 1e-7, 1e-6, 4e-5);
  return state;
}

/// The reflectivity of a state at q, without resolution.
inline std::vector<double> CurveOf(const CState& given, const std::vector<double>& q) {
  CState state = given;
  CSolution curve;
  for (const double each : q) curve.dataset_qz.Append(each);
  CalcReflectivityDLL(&curve, &state);
  return {curve.dataset_R0.begin(), curve.dataset_R0.end()};
}

/// The exact curve of a state with error bars of the given share.
inline analysis::Measurement MakeMeasurement(const CState& state, int points, double share) {
  analysis::Measurement measurement;
  measurement.q = Grid(points, 0.02, 0.3);
  measurement.R = CurveOf(state, measurement.q);
  for (const double r : measurement.R) measurement.dR.push_back(share * r);
  return measurement;
}

}  // namespace tolvik::testing
