// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/error_functions.h"

#include "fit/curve_points.h"

namespace tolvik {
namespace {

// The measured value on the scale of the calculated curve, L(m).
struct Scale {
  double multiplicator;
  double translator;
  double Value(double measured) const { return multiplicator * (measured + translator); }
  long double Log(double measured) const { return Log10(Value(measured)); }
};

}  // namespace

double CalcLogError(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                    double fitqzmin, double fitqzmax, double multiplicator, double translator) {
  const FitWindow window{fitqzmin, fitqzmax};
  const Scale scale{multiplicator, translator};
  const CArray<double>& m = dataset.dataset_R0;
  const CArray<double>& c = solution.dataset_R0;
  MeanOfSquares mean;
  for (std::int32_t i = 0; i < dataset.dataset_qz.size; ++i) {
    if (!window.Holds(dataset.dataset_qz, i) || !ArePositive(m, c, i)) continue;
    const long double difference = Log10Ratio(scale.Value(m[i]), c[i]);
    mean.Add(difference * difference);
    StoreResidual(residuals, i, difference);
  }
  return mean.Value();
}

double CalcScaledLogError(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                          double fitqzmin, double fitqzmax, double& multiplicator, double translator) {
  const FitWindow window{fitqzmin, fitqzmax};
  const CArray<double>& m = dataset.dataset_R0;
  const CArray<double>& c = solution.dataset_R0;
  long double sum = 0;
  std::int32_t count = 0;
  for (std::int32_t i = 0; i < dataset.dataset_qz.size; ++i) {
    if (!window.Holds(dataset.dataset_qz, i) || !ArePositive(m, c, i)) continue;
    sum += Log10Ratio(m[i], c[i]);
    ++count;
  }
  multiplicator = static_cast<double>(std::exp(sum / count));  // NaN without a point
  return CalcLogError(solution, dataset, residuals, fitqzmin, fitqzmax, multiplicator, translator);
}

double CalcRelativeLogError(const CSolution& solution, const CDataset& dataset, double fitqzmin,
                            double fitqzmax, double multiplicator, double translator) {
  const FitWindow window{fitqzmin, fitqzmax};
  const Scale scale{multiplicator, translator};
  const CArray<double>& m = dataset.dataset_R0;
  const CArray<double>& c = solution.dataset_R0;
  RelativeSquares relative;
  for (std::int32_t i = 0; i < dataset.dataset_qz.size; ++i) {
    if (!window.Holds(dataset.dataset_qz, i) || !ArePositive(m, c, i)) continue;
    relative.Add(scale.Log(m[i]), Log10(c[i]));
  }
  return relative.Value();
}

double CalcAsymmetryError(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                          double fitqzmin, double fitqzmax, std::int32_t count) {
  const FitWindow window{fitqzmin, fitqzmax};
  const CArray<double>& m = dataset.dataset_A;
  const CArray<double>& c = solution.dataset_A;
  MeanOfSquares mean;
  for (std::int32_t i = 0; i < count; ++i) {
    if (!window.Holds(dataset.dataset_qz, i) || !HaveBoth(m, c, i)) continue;
    const long double difference = static_cast<long double>(m[i]) - c[i];
    mean.Add(difference * difference);
    StoreResidual(residuals, i, difference);
  }
  return mean.Value();
}

double CalcPairLogError(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                        double fitqzmin, double fitqzmax, double multiplicator, double translator,
                        std::int32_t count) {
  const FitWindow window{fitqzmin, fitqzmax};
  const Scale scale{multiplicator, translator};
  MeanOfSquares mean;
  for (std::int32_t i = 0; i < count; ++i) {
    if (!window.Holds(dataset.dataset_qz, i) || !ArePositive(dataset.dataset_Rp, solution.dataset_Rp, i) ||
        !ArePositive(dataset.dataset_Rm, solution.dataset_Rm, i)) {
      continue;
    }
    const long double plus = Log10Ratio(scale.Value(dataset.dataset_Rp[i]), solution.dataset_Rp[i]);
    const long double minus = Log10Ratio(scale.Value(dataset.dataset_Rm[i]), solution.dataset_Rm[i]);
    mean.Add(plus * plus + minus * minus);
    StoreResidual(residuals, i, std::abs(plus) + std::abs(minus));
  }
  return mean.Value();
}

double CalcDevianceError(const CSolution& solution, const CDataset& dataset, double fitqzmin, double fitqzmax,
                         double multiplicator, double translator) {
  const FitWindow window{fitqzmin, fitqzmax};
  const Scale scale{multiplicator, translator};
  long double sum = 0;
  for (std::int32_t i = 0; i < dataset.dataset_qz.size; ++i) {
    if (!window.Holds(dataset.dataset_qz, i) || !ArePositive(dataset.dataset_R0, solution.dataset_R0, i))
      continue;
    const long double a = scale.Log(dataset.dataset_R0[i]);
    const long double b = Log10(solution.dataset_R0[i]);
    sum += b - a - b * Ln(b / a);
  }
  return static_cast<double>(2 * sum);
}

double CalcRelativePairLogError(const CSolution& solution, const CDataset& dataset, double fitqzmin,
                                double fitqzmax, double multiplicator, double translator,
                                std::int32_t count) {
  const FitWindow window{fitqzmin, fitqzmax};
  const Scale scale{multiplicator, translator};
  RelativeSquares relative;
  for (std::int32_t i = 0; i < count; ++i) {
    if (!window.Holds(dataset.dataset_qz, i) || !ArePositive(dataset.dataset_Rp, solution.dataset_Rp, i) ||
        !ArePositive(dataset.dataset_Rm, solution.dataset_Rm, i)) {
      continue;
    }
    relative.Add(scale.Log(dataset.dataset_Rp[i]), Log10(solution.dataset_Rp[i]));
    relative.Add(scale.Log(dataset.dataset_Rm[i]), Log10(solution.dataset_Rm[i]));
  }
  return relative.Value();
}

}  // namespace tolvik
