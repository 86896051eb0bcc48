// SPDX-License-Identifier: GPL-2.0-or-later
// Measures without a logarithmic scale of the measurement: extrema, linear distance, plain window.
#include <limits>

#include "fit/curve_points.h"
#include "fit/error_functions.h"

namespace tolvik {
namespace {

constexpr double kNoPartner = 1e99;

// Abscissae of the strict interior extrema of R0: maxima for sign 1, minima for sign -1.
CArray<double> FindExtrema(const CDataset& curve, double sign) {
  CArray<double> positions;
  const CArray<double>& r = curve.dataset_R0;
  for (std::int32_t i = 1; i + 1 < r.size && i < curve.dataset_qz.size; ++i) {
    if (sign * r[i] > sign * r[i - 1] && sign * r[i] > sign * r[i + 1]) positions.Append(curve.dataset_qz[i]);
  }
  return positions;
}

double SumOfNearestDistances(const CArray<double>& wanted, const CArray<double>& offered) {
  double sum = 0;
  for (const double q : wanted) {
    double nearest = kNoPartner;
    for (const double p : offered) {
      if (std::abs(p - q) < nearest) nearest = std::abs(p - q);
    }
    sum += nearest;
  }
  return sum;
}

// Mean of squares of difference(m, c) over the window; residuals by running position.
template <class Difference>
double MeanOverWindow(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                      const FitWindow& window, Difference difference) {
  MeanOfSquares mean;
  for (std::int32_t i = 0; i < dataset.dataset_qz.size; ++i) {
    if (!window.Holds(dataset.dataset_qz, i) || !HaveBoth(dataset.dataset_R0, solution.dataset_R0, i))
      continue;
    const long double value = difference(dataset.dataset_R0[i], solution.dataset_R0[i]);
    StoreResidual(residuals, mean.count, value);
    mean.Add(value * value);
  }
  return mean.Value();
}

}  // namespace

double CalcExtremaError(const CSolution& solution, const CDataset& dataset) {
  return SumOfNearestDistances(FindExtrema(dataset, 1), FindExtrema(solution, 1)) +
         SumOfNearestDistances(FindExtrema(dataset, -1), FindExtrema(solution, -1));
}

double CalcLinearError(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                       double fitqzmin, double fitqzmax, double multiplicator) {
  return MeanOverWindow(solution, dataset, residuals, {fitqzmin, fitqzmax},
                        [=](long double m, long double c) { return multiplicator * m - c; });
}

double CalcWindowLogError(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                          double fitqzmin, double fitqzmax, double multiplicator) {
  return MeanOverWindow(solution, dataset, residuals, {fitqzmin, fitqzmax},
                        [=](long double m, long double c) { return Log10(multiplicator * m) - Log10(c); });
}

double CalcRelativeAsymmetryError(const CSolution& solution, const CDataset& dataset, double fitqzmin,
                                  double fitqzmax) {
  const FitWindow window{fitqzmin, fitqzmax};
  RelativeSquares relative;
  for (std::int32_t i = 0; i < dataset.dataset_A.size; ++i) {
    if (!window.Holds(dataset.dataset_qz, i) || !HaveBoth(dataset.dataset_A, solution.dataset_A, i)) continue;
    relative.Add(dataset.dataset_A[i], solution.dataset_A[i]);
  }
  return relative.Value();
}

}  // namespace tolvik
