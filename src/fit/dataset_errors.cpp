// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/dataset_errors.h"

#include <algorithm>
#include <limits>

#include "fit/error_functions.h"
#include "optics/energy.h"
#include "tolvik/tolvik.h"

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

void TakeConditions(CState& state, std::int32_t index) {
  const CDataset& dataset = state.datasets[index];
  state.ray1sigmare = dataset.datasetray1sigmare;
  state.ray1sigmaim = dataset.datasetray1sigmaim;
  state.ray1pire = dataset.datasetray1pire;
  state.ray1piim = dataset.datasetray1piim;
  state.ray2sigmare = dataset.datasetray2sigmare;
  state.ray2sigmaim = dataset.datasetray2sigmaim;
  state.ray2pire = dataset.datasetray2pire;
  state.ray2piim = dataset.datasetray2piim;
  state.resolution = dataset.datasetresolution;
  state.lambda = LambdaFromEnergy(dataset.datasetenergy);
  state.activedatasetindex = index;
}

void FillColumn(const CSolution& solution, CArray<double>& column, double value) {
  const std::int32_t points = solution.dataset_qz.size;
  if (column.size == points) {
    std::fill(column.begin(), column.end(), value);
  } else {
    column.Assign(points, value);
  }
}

void FillBothRays(CSolution& solution, double asymmetry) {
  FillColumn(solution, solution.dataset_R0, 1.0);
  FillColumn(solution, solution.dataset_Rp, 1.0);
  FillColumn(solution, solution.dataset_Rm, 1.0);
  FillColumn(solution, solution.dataset_A, asymmetry);
}

// One dataset of an evaluation; measured is the stored dataset or its moving average.
class DatasetComparison {
 public:
  DatasetComparison(CState& state, CSolution& solution, CArray<double>& residuals, const CDataset& measured,
                    std::int32_t index)
      : state_(state), solution_(solution), residuals_(residuals), measured_(measured), index_(index) {}

  double Run() {
    switch (state_.fitasymmetry) {
      case FitAsymmetry::kReflectivity:
        return CompareReflectivity();
      case FitAsymmetry::kAsymmetry:
        CalculateAsymmetry();
        return AsymmetryError(measured_.dataset_A.size);
      case FitAsymmetry::kBothRays:
        CalculateAsymmetry();
        return PairError(measured_.dataset_Rp.size);
      case FitAsymmetry::kEnergyScan:
        return CompareEnergyScan();
      case FitAsymmetry::kBothRaysOverEnergy:
        CalculateDichroicScan();
        return PairError(measured_.dataset_qz.size);
      case FitAsymmetry::kAsymmetryOverEnergy:
        CalculateDichroicScan();
        return AsymmetryError(measured_.dataset_qz.size);
      default:
        return 0;
    }
  }

 private:
  CDataset& Stored() { return state_.datasets[index_]; }

  double CompareReflectivity() {
    FillColumn(solution_, solution_.dataset_R0, 1.0);
    FillColumn(solution_, solution_.dataset_Rp, 1.0);
    CalcReflectivityDLL(&solution_, &state_);
    if (state_.fiterrorfunction == FitErrorFunction::kRelativeLog) {
      return CalcRelativeLogError(solution_, measured_, state_.fitqzmin, state_.fitqzmax, multiplicator_,
                                  translator_);
    }
    if (state_.fiterrorfunction == FitErrorFunction::kScaledLog) {
      const double error = CalcScaledLogError(solution_, measured_, residuals_, state_.fitqzmin,
                                              state_.fitqzmax, multiplicator_, translator_);
      Stored().datasetmultiplicator = multiplicator_;
      return error;
    }
    return LogError();
  }
  double CompareEnergyScan() {
    FillColumn(solution_, solution_.dataset_R0, 1.0);
    CalcEScanParallelDLL(&solution_, &state_);
    return LogError();
  }
  void CalculateAsymmetry() {
    FillBothRays(solution_, 1.0);
    CalcAsymmetryDLL(&solution_, &state_);
  }
  void CalculateDichroicScan() {
    FillBothRays(solution_, 0.0);
    CalcDicEScanDLL(&solution_, &state_);
  }
  double LogError() {
    return CalcLogError(solution_, measured_, residuals_, state_.fitqzmin, state_.fitqzmax, multiplicator_,
                        translator_);
  }
  double AsymmetryError(std::int32_t count) {
    return CalcAsymmetryError(solution_, measured_, residuals_, state_.fitqzmin, state_.fitqzmax, count);
  }
  double PairError(std::int32_t count) {
    return CalcPairLogError(solution_, measured_, residuals_, state_.fitqzmin, state_.fitqzmax,
                            multiplicator_, translator_, count);
  }

  CState& state_;
  CSolution& solution_;
  CArray<double>& residuals_;
  const CDataset& measured_;
  std::int32_t index_;
  // The values stored at the beginning of the comparison, not those of the copy: a variable may have written
  // them.
  double multiplicator_ = Stored().datasetmultiplicator;
  double translator_ = Stored().datasettranslator;
};

}  // namespace

void AverageDataset(CDataset& dataset, std::int32_t width) {
  const std::int32_t points = dataset.dataset_qz.size;
  for (CArray<double>* column :
       {&dataset.dataset_R0, &dataset.dataset_Rp, &dataset.dataset_Rm, &dataset.dataset_A}) {
    AverageColumn(*column, points, width);
  }
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
    solution = *measured;
    for (double& q : solution.dataset_qz) q += measured->datasetqztranslation;
    total += DatasetComparison(state, solution, residuals, *measured, d).Run();
  }
  return total;
}

}  // namespace tolvik
