// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/dataset_errors.h"

#include <algorithm>
#include <limits>

#include "fit/dataset_curve.h"
#include "fit/error_functions.h"

namespace tolvik {
namespace {

void AverageColumn(CArray<double>& column, std::int32_t points, std::int32_t width) {
  const CArray<double> source(column);
  const std::int64_t end = std::min(points, source.size);
  for (std::int64_t i = 0; i < end; ++i) {
    double& value = column[static_cast<std::int32_t>(i)];
    if (i < width) {
      value = std::numeric_limits<double>::quiet_NaN();
      continue;
    }
    const std::int64_t last = std::min(i + width, end - 1);
    double sum = 0;
    std::int64_t used = 0;
    for (std::int64_t k = i - width; k <= last; ++k, ++used) sum += source[static_cast<std::int32_t>(k)];
    value = sum * (1.0 / static_cast<double>(used));
  }
}

// One dataset of an evaluation; measured is the stored dataset or its moving average.
class DatasetComparison {
 public:
  DatasetComparison(CState& state, const CSolution& solution, CArray<double>& residuals,
                    const CDataset& measured, const DatasetScale& scale)
      : state_(state), solution_(solution), residuals_(residuals), measured_(measured), scale_(scale) {}

  double Run() {
    switch (state_.fitasymmetry) {
      case FitAsymmetry::kReflectivity:
        return ReflectivityError();
      case FitAsymmetry::kAsymmetry:
        return AsymmetryError(measured_.dataset_A.size);
      case FitAsymmetry::kBothRays:
        return PairError(measured_.dataset_Rp.size);
      case FitAsymmetry::kEnergyScan:
        return LogError();
      case FitAsymmetry::kBothRaysOverEnergy:
        return PairError(measured_.dataset_qz.size);
      case FitAsymmetry::kAsymmetryOverEnergy:
        return AsymmetryError(measured_.dataset_qz.size);
    }
    return 0;
  }

 private:
  double ReflectivityError() {
    if (state_.fiterrorfunction == FitErrorFunction::kRelativeLog) {
      return CalcRelativeLogError(solution_, measured_, state_.fitqzmin, state_.fitqzmax,
                                  scale_.multiplicator, scale_.translator);
    }
    if (state_.fiterrorfunction == FitErrorFunction::kScaledLog) {
      const double error = CalcScaledLogError(solution_, measured_, residuals_, state_.fitqzmin,
                                              state_.fitqzmax, scale_.multiplicator, scale_.translator);
      state_.datasets[state_.activedatasetindex].datasetmultiplicator = scale_.multiplicator;
      return error;
    }
    return LogError();
  }
  double LogError() {
    return CalcLogError(solution_, measured_, residuals_, state_.fitqzmin, state_.fitqzmax,
                        scale_.multiplicator, scale_.translator);
  }
  double AsymmetryError(std::int32_t count) {
    return CalcAsymmetryError(solution_, measured_, residuals_, state_.fitqzmin, state_.fitqzmax, count);
  }
  double PairError(std::int32_t count) {
    return CalcPairLogError(solution_, measured_, residuals_, state_.fitqzmin, state_.fitqzmax,
                            scale_.multiplicator, scale_.translator, count);
  }

  CState& state_;
  const CSolution& solution_;
  CArray<double>& residuals_;
  const CDataset& measured_;
  DatasetScale scale_;
};

}  // namespace

void AverageDataset(CDataset& dataset, std::int32_t width) {
  const std::int32_t points = dataset.dataset_qz.size;
  for (CArray<double>* column :
       {&dataset.dataset_R0, &dataset.dataset_Rp, &dataset.dataset_Rm, &dataset.dataset_A}) {
    AverageColumn(*column, points, width);
  }
}

double CalcDatasetError(CState& state, const CSolution& solution, CArray<double>& residuals,
                        const CDataset& measured, const DatasetScale& scale) {
  return DatasetComparison(state, solution, residuals, measured, scale).Run();
}

double SumDatasetErrors(CState& state, CSolution& solution, CArray<double>& residuals) {
  double total = 0;
  CDataset averaged;
  for (std::int32_t d = 0; d < state.datasets.size; ++d) {
    if (state.datasets[d].datasetactive == 0) continue;
    const CDataset* measured = &state.datasets[d];
    if (state.averaging != 0) {
      averaged = *measured;
      AverageDataset(averaged, state.averaging);
      measured = &averaged;
    }
    TakeConditions(state, d);
    // As stored before the curve is calculated, not the copy's: a variable may have written them.
    const DatasetScale scale = {state.datasets[d].datasetmultiplicator, state.datasets[d].datasettranslator};
    CalcDatasetCurve(state, solution, *measured, {});
    total += CalcDatasetError(state, solution, residuals, *measured, scale);
  }
  return total;
}

}  // namespace tolvik
