// SPDX-License-Identifier: GPL-2.0-or-later
// The data of one thread that evaluates an objective.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "analysis/curve_model.h"
#include "engine/curve/jacobian.h"
#include "tolvik/analysis/objective.h"

namespace tolvik::analysis {

/// The models of all measurements, each with a state of its own.
class ObjectiveWorker {
 public:
  /// Both must outlive the worker.
  ObjectiveWorker(const std::vector<PreparedMeasurement>& prepared, const std::vector<Parameter>& parameters);

  /// Residuals (N,) at x, NaN where they cannot be calculated, and the sums of them; log_prior is not set.
  void Evaluate(std::span<const double> x, std::span<double> residuals, RowValues& values);

  /// Residuals of one measurement, ResidualsOf(measurement) of them. False where they cannot be calculated.
  bool EvaluateOne(std::size_t measurement, std::span<const double> x, std::span<double> residuals,
                   RowValues& values);

  CurveModel& model(std::size_t measurement) { return *models_[measurement]; }
  engine::GradientWork& gradient_work() { return gradient_work_; }

 private:
  std::vector<std::unique_ptr<CurveModel>> models_;
  CArray<double> program_residuals_;
  engine::GradientWork gradient_work_;
};

/// Number of residuals of a measurement.
std::size_t ResidualsOf(const PreparedMeasurement& prepared);

/// Compares values of the model, curve 0 or 1, with the measurement; adds to values. slopes: d residual / d
/// model, may be empty.
void CompareCurve(const PreparedMeasurement& prepared, int curve, std::span<const double> model,
                  std::span<double> residuals, std::span<double> slopes, RowValues& values);

}  // namespace tolvik::analysis
