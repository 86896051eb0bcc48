// SPDX-License-Identifier: GPL-2.0-or-later
// Levenberg-Marquardt on the residuals of a fit, by the library levmar of M. I. A. Lourakis: the method of
// K. Levenberg, Q. Appl. Math. 2, 164 (1944), and D. W. Marquardt, SIAM J. Appl. Math. 11, 431 (1963), in a
// box.
//
// levmar gets the residuals as model values and zeros as measurements. Its result vector is not used: after a
// run the model is that of the last evaluation, which may be a rejected trial or a point of the difference
// Jacobian.
#include <algorithm>
#include <cmath>
#include <vector>

#include "fit/chi_square_fit.h"
#include "fit/levmar_call.h"

namespace tolvik {

// The callback of levmar finds its fit here.
CChiSquareFit* currentfit = nullptr;

namespace {

constexpr int kIterations = 100;
constexpr int kShortIterations = 10;
constexpr double kInitialMu = 1e-3;
constexpr double kGradientStop = 1e-15;
constexpr double kParameterStop = 1e-15;
constexpr double kErrorStop = 1e-20;
constexpr double kDifferenceStep = 1e-6;

void LevmarResiduals(double* p, double* hx, int m, int k, void* /*adata*/) {
  CChiSquareFit& fit = *currentfit;
  std::copy_n(p, std::min(m, fit.parameters.size), fit.parameters.begin());
  // levmar moves its own points into the box, but not those of the difference Jacobian.
  fit.ClampParameters(fit.parameters);
  fit.lasterror = fit.CalcError(fit.fitvariables);
  std::copy_n(fit.residuals.begin(), std::min(k, fit.residuals.size), hx);
}

}  // namespace

void CChiSquareFit::LevenbergStep() {
  RunLevenberg(kIterations);
}

void CChiSquareFit::LevenbergShortStep() {
  RunLevenberg(kShortIterations);
}

void CChiSquareFit::RunLevenberg(int iterations) {
  const auto m = static_cast<std::size_t>(parameters.size);
  std::vector<double> p(parameters.begin(), parameters.end());
  std::vector<double> lower(m), upper(m), covariance(m * m);
  std::vector<double> zeros(static_cast<std::size_t>(residuals.size));
  for (std::size_t i = 0; i < m; ++i) {
    lower[i] = fitvariables.data[i].fit_lower_boundary;
    upper[i] = fitvariables.data[i].fit_upper_boundary;
  }
  currentfit = this;
  double options[] = {kInitialMu, kGradientStop, kParameterStop, kErrorStop, kDifferenceStep};
  double info[10] = {};
  // levmar reports its failures by messages of its own; the step then does nothing more.
  fit::CallLevmar(LevmarResiduals, p.data(), zeros.data(), parameters.size, residuals.size, lower.data(),
                  upper.data(), iterations, options, info, nullptr, covariance.data(), nullptr);
  for (std::size_t i = 0; i < m; ++i) fitvariables.data[i].fit_sigma = std::sqrt(covariance[i * m + i]);
}

}  // namespace tolvik
