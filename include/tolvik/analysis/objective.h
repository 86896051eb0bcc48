// SPDX-License-Identifier: GPL-2.0-or-later
// The agreement of a state with its measurements, as a function of the free parameters.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "tolvik/analysis/covariance.h"
#include "tolvik/analysis/matrix.h"
#include "tolvik/analysis/measurement.h"
#include "tolvik/analysis/parameters.h"
#include "tolvik/analysis/report.h"
#include "tolvik/state.h"

namespace tolvik::analysis {

struct ObjectiveOptions {
  Weights weights = Weights::kErrors;
  Resolution resolution = Resolution::kState;
  double tolerance = 1e-4;   ///< of the nodes of Resolution::kPoints, relative to a dense quadrature
  std::int32_t threads = 0;  ///< for many points at once; 0: one per processor
  bool exact = true;         ///< Jacobians by exact derivatives where there are some, else by differences
};

/// The result at a point of the parameters. Where the model cannot be calculated (code other than
/// ReturnCode::kSuccess, or a NaN residual) chi_square is infinite, the logarithms are
/// -infinity.
struct RowValues {
  double chi_square = 0;
  double log_likelihood = 0;
  double log_prior = 0;
  std::int32_t code = 1;
  std::string fault;  ///< one line about a code other than ReturnCode::kSuccess

  double log_posterior() const;
};

/// Derivatives at a point.
struct Derivatives {
  std::vector<double> residuals;  ///< (N,)
  Matrix jacobian;                ///< (N, m): d residual / d parameter
  std::vector<bool> no_effect;    ///< (m,): the column is zero
  std::vector<bool> exact;        ///< of each measurement: by exact derivatives
};

/// The curve of one measurement at a point of the parameters.
struct ModelCurve {
  std::vector<std::int32_t> points;  ///< indices into the columns of the measurement
  std::vector<double> q;             ///< as measured, Å⁻¹
  std::vector<double> values[2];     ///< with scale and background; the second for kinds with two curves
};

class ObjectiveWorker;
struct PreparedMeasurement;

/// Compares a state with measurements. Points of the parameters are given one (m numbers) or many (k times m,
/// one after the other); results of many do not depend on the number of threads. A point need not lie in the
/// bounds, but its prior is then 0.
///
/// Calls from several threads wait for each other. Every evaluation begins from the given state, so it does
/// not depend on the ones before. N is the number of residuals: the points of all measurements in order,
/// first curve before second.
class Objective {
 public:
  /// Takes copies. Throws DataError for measurements and bounds that cannot be used, TablesError for missing
  /// tables, ScriptError for a script that fails where the parameters start.
  Objective(const CState& state, std::vector<Measurement> measurements, ObjectiveOptions options = {});
  ~Objective();
  Objective(const Objective&) = delete;
  Objective& operator=(const Objective&) = delete;

  const std::vector<Parameter>& parameters() const { return parameters_; }
  const std::vector<std::string>& warnings() const { return warnings_; }
  const ObjectiveOptions& options() const { return options_; }
  std::size_t measurement_count() const;
  const PointCount& points_of(std::size_t measurement) const;
  /// With Resolution::kPoints; not of energy scans.
  const ResolutionReport& nodes_of(std::size_t measurement) const;
  std::size_t parameter_count() const { return parameters_.size(); }  ///< m
  std::size_t residual_count() const { return residual_count_; }      ///< N
  std::vector<double> Start() const;                                  ///< (m,)

  /// Residuals of k points, (k, N); rows that cannot be calculated are NaN. values: (k,), may be null.
  Matrix Residuals(std::span<const double> x, std::vector<RowValues>* values = nullptr);

  /// All results except the residuals of k points, (k,). only_allowed: a point whose prior is 0 is not
  /// calculated, and its chi_square is infinite.
  std::vector<RowValues> Evaluate(std::span<const double> x, bool only_allowed = false);

  /// At one point. Throws ScriptError or CalculationError where the model cannot be calculated.
  std::vector<double> ResidualsAt(std::span<const double> x);
  Derivatives DerivativesAt(std::span<const double> x);
  ModelCurve ModelAt(std::span<const double> x, std::size_t measurement);
  /// Gradient of the logarithm of the posterior, (m,).
  std::vector<double> GradientAt(std::span<const double> x);

  /// Logarithm of the prior of one point.
  double LogPriorAt(std::span<const double> x) const;

  /// Errors and correlations at a minimum, from the exact Jacobian.
  Covariance CovarianceAt(std::span<const double> x);

  /// The state at a point: the fit variables written into it, also their fit_value; the conditions, the
  /// datasets and the values set by tables and script stay those of the given state.
  CState StateAt(std::span<const double> x) const;

 private:
  std::size_t CountRows(std::span<const double> x) const;
  void CheckOne(std::span<const double> x) const;
  void EvaluateStart();
  void MakeWorkers(std::size_t count);
  std::int32_t ThreadsFor(std::size_t rows) const;
  void RunRows(std::span<const double> x, bool only_allowed, Matrix* residuals,
               std::vector<RowValues>& values);

  CState state_;
  ObjectiveOptions options_;
  std::vector<std::string> warnings_;
  std::vector<Parameter> parameters_;
  std::vector<PreparedMeasurement> prepared_;
  std::size_t residual_count_ = 0;
  std::vector<std::unique_ptr<ObjectiveWorker>>
      workers_;         // one for each thread; the first serves single points
  double seconds_ = 0;  // of one evaluation
  std::mutex mutex_;
};

}  // namespace tolvik::analysis
