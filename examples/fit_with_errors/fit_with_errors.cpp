// SPDX-License-Identifier: GPL-2.0-or-later
// Fits a state to a measurement with error bars and a width of q for each point, and prints value ± error.
//
//   fit_with_errors STATE [DATA]
//
// DATA has four columns: q, R, dR, dq (Å⁻¹, standard deviations). Without it a measurement of the state is
// simulated: 10⁷ counts in the direct beam, a background of 2 counts, sigma of q 0.001 Å⁻¹; the fit then
// starts 1 % beside the truth, and has to find it again.
#include <tolvik/analysis/errors.h>
#include <tolvik/analysis/objective.h>
#include <tolvik/state_file.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <span>
#include <vector>

using namespace tolvik::analysis;

namespace {

Measurement Read(const char* file_name) {
  Measurement data;
  std::ifstream file(file_name);
  double q, r, dr, dq;
  while (file >> q >> r >> dr >> dq) {
    data.q.push_back(q);
    data.R.push_back(r);
    data.dR.push_back(dr);
    data.dq.push_back(dq);
  }
  return data;
}

Measurement Simulate(const tolvik::CState& state) {
  constexpr double kBeam = 1e7, kBackground = 2;
  Measurement data;
  for (int i = 0; i < 200; ++i) data.q.push_back(0.02 + 0.002 * i);
  data.R.assign(200, 1.0);
  data.dR.assign(200, 1.0);
  data.dq.assign(200, 1e-3);
  Objective exact(state, {data}, {.resolution = Resolution::kPoints});
  const ModelCurve curve = exact.ModelAt(exact.Start(), 0);  // of the points inside of the fit window
  std::mt19937 generator(1);
  for (std::size_t k = 0; k < curve.points.size(); ++k) {
    const double counts = std::poisson_distribution<int>(kBeam * curve.values[0][k] + kBackground)(generator);
    const auto i = static_cast<std::size_t>(curve.points[k]);
    data.R[i] = counts / kBeam;
    data.dR[i] = std::sqrt(std::max(counts, 1.0)) / kBeam;
  }
  return data;
}

// One step of Levenberg and Marquardt: (JᵀJ + damping D) step = -Jᵀr, by elimination.
std::vector<double> Step(const Derivatives& at, double damping) {
  const std::size_t m = at.jacobian.columns;
  Matrix a(m, m + 1);
  for (std::size_t n = 0; n < at.residuals.size(); ++n) {
    const auto row = at.jacobian.Row(n);
    for (std::size_t i = 0; i < m; ++i) {
      for (std::size_t j = 0; j < m; ++j) a(i, j) += row[i] * row[j];
      a(i, m) -= row[i] * at.residuals[n];
    }
  }
  for (std::size_t i = 0; i < m; ++i) a(i, i) *= 1 + damping;
  for (std::size_t k = 0; k < m; ++k) {
    for (std::size_t i = 0; i < m; ++i) {
      const double factor = i == k ? 0 : a(i, k) / a(k, k);
      for (std::size_t j = k; j <= m; ++j) a(i, j) -= factor * a(k, j);
    }
  }
  std::vector<double> step(m);
  for (std::size_t i = 0; i < m; ++i) step[i] = a(i, i) == 0 ? 0 : a(i, m) / a(i, i);
  return step;
}

std::vector<double> Fit(Objective& objective) {
  std::vector<double> x = objective.Start();
  double best = objective.Evaluate(x)[0].chi_square, damping = 1e-3;
  for (int i = 0; i < 100; ++i) {
    const std::vector<double> step = Step(objective.DerivativesAt(x), damping);
    std::vector<double> trial = x;
    for (std::size_t k = 0; k < x.size(); ++k) {
      const Bounds& bounds = objective.parameters()[k].bounds;
      trial[k] = std::clamp(x[k] + step[k], bounds.lower, bounds.upper);
    }
    const double error = objective.Evaluate(trial)[0].chi_square;
    damping = error < best ? damping / 10 : damping * 10;
    const bool done = std::abs(best - error) < 1e-9 * best;
    if (error < best) {
      best = error;
      x = trial;
    }
    if (done || damping > 1e12) break;
  }
  return x;
}

void Print(Objective& objective, const std::vector<double>& x) {
  const Covariance at = objective.CovarianceAt(x);
  for (std::size_t k = 0; k < x.size(); ++k) {
    const char* remark = at.at_bound[k]         ? "  at its bound"
                         : at.no_effect[k]      ? "  without effect"
                         : at.not_determined[k] ? "  not determined"
                                                : "";
    std::printf("%-24s %12.6g ± %.2g%s\n", objective.parameters()[k].name.c_str(), x[k], at.errors[k],
                remark);
  }
  std::printf("chi square %.1f, reduced %.3f; %s\n", at.chi_square, at.reduced,
              objective.points_of(0).Text().c_str());
}

int Run(const char* state_file, const char* data_file) {
  tolvik::CState state;
  if (!tolvik::LoadState(state, state_file)) {
    std::fprintf(stderr, "%s: cannot be read as a state file\n", state_file);
    return 1;
  }
  Measurement data = data_file != nullptr ? Read(data_file) : Simulate(state);
  data.scale.free = data.background.free = true;
  data.scale.bounds = {0.5, 2};
  data.background.bounds = {0, 1e-4};
  if (data_file == nullptr) {
    for (auto& variable : state.fitvariables) variable.fit_value *= 1.01;
  }
  Objective objective(state, {data}, {.resolution = Resolution::kPoints});
  for (const std::string& warning : objective.warnings()) std::fprintf(stderr, "%s\n", warning.c_str());
  Print(objective, Fit(objective));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fprintf(stderr, "usage: fit_with_errors STATE [DATA]\n");
    return 2;
  }
  try {
    return Run(argv[1], argc > 2 ? argv[2] : nullptr);
  } catch (const AnalysisError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
