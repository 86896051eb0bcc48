// SPDX-License-Identifier: GPL-2.0-or-later
#include "tolvik/analysis/objective.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

#include "analysis/differentiator.h"
#include "analysis/worker.h"
#include "engine/threads/worker_pool.h"
#include "fit/fit_variables.h"
#include "tolvik/analysis/errors.h"
#include "tolvik/return_code.h"

namespace tolvik::analysis {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
// Starting the threads of a batch costs about as much.
constexpr double kWorthThreads = 2e-4;

void ThrowFault(const RowValues& values) {
  if (values.code == ReturnCode::kSuccess) return;
  if (values.code == ReturnCode::kScriptCompilation || values.code == ReturnCode::kScriptExecution) {
    throw ScriptError(values.code, values.fault);
  }
  throw CalculationError(values.code, values.fault);
}

}  // namespace

double RowValues::log_posterior() const {
  // not a number where both are infinite otherwise
  return log_prior == -kInfinity ? -kInfinity : log_prior + log_likelihood;
}

Objective::Objective(const CState& state, std::vector<Measurement> measurements, ObjectiveOptions options)
    : state_(state), options_(options) {
  if (measurements.empty()) throw DataError("no measurement; give one, or activate a dataset of the state");
  const ComparisonRules rules{options.weights, options.resolution, options.tolerance};
  parameters_ = CollectParameters(state_, measurements, warnings_);
  for (const Parameter& parameter : parameters_) {  // the start moves into the bounds
    if (parameter.kind == ParameterKind::kVariable) {
      state_.fitvariables[parameter.index].fit_value = parameter.value;
    }
  }
  prepared_.reserve(measurements.size());
  for (std::size_t i = 0; i < measurements.size(); ++i) {
    prepared_.push_back(Prepare(state_, measurements[i], i, rules, warnings_));
    residual_count_ += ResidualsOf(prepared_.back());
  }
  if (residual_count_ == 0) {
    throw DataError("no point takes part; " + LabelOf(0) + ": " + prepared_[0].count.Text());
  }
  MakeWorkers(1);
  EvaluateStart();
}

Objective::~Objective() = default;

std::size_t Objective::measurement_count() const {
  return prepared_.size();
}

const PointCount& Objective::points_of(std::size_t measurement) const {
  return prepared_.at(measurement).count;
}

const ResolutionReport& Objective::nodes_of(std::size_t measurement) const {
  return prepared_.at(measurement).nodes;
}

// Also finds faults of scripts and tables, and the time of an evaluation.
void Objective::EvaluateStart() {
  const std::vector<double> start = Start();
  ResidualsAt(start);
  const auto begin = std::chrono::steady_clock::now();
  ResidualsAt(start);
  seconds_ = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void Objective::MakeWorkers(std::size_t count) {
  while (workers_.size() < count) {
    workers_.push_back(std::make_unique<ObjectiveWorker>(prepared_, parameters_));
  }
}

std::vector<double> Objective::Start() const {
  std::vector<double> start;
  for (const Parameter& parameter : parameters_) start.push_back(parameter.value);
  return start;
}

std::size_t Objective::CountRows(std::span<const double> x) const {
  const std::size_t m = parameters_.size();
  if (m == 0 && x.empty()) return 1;
  if (m == 0 || x.size() % m != 0) {
    throw DataError("a point has " + std::to_string(m) + " parameters, but " + std::to_string(x.size()) +
                    " numbers were given");
  }
  return x.size() / m;
}

void Objective::CheckOne(std::span<const double> x) const {
  if (x.size() == parameters_.size()) return;
  throw DataError("a point has " + std::to_string(parameters_.size()) + " parameters, but " +
                  std::to_string(x.size()) + " numbers were given");
}

double Objective::LogPriorAt(std::span<const double> x) const {
  CheckOne(x);
  double sum = 0;
  for (std::size_t k = 0; k < x.size(); ++k)
    sum += LogPrior(parameters_[k].prior, parameters_[k].bounds, x[k]);
  return sum;
}

std::int32_t Objective::ThreadsFor(std::size_t rows) const {
  if (rows < 2 || static_cast<double>(rows) * seconds_ < kWorthThreads) return 1;
  const auto tasks = static_cast<std::int32_t>(std::min<std::size_t>(rows, INT32_MAX));
  return engine::CountWorkers(tasks, options_.threads);
}

void Objective::RunRows(std::span<const double> x, bool only_allowed, Matrix* residuals,
                        std::vector<RowValues>& values) {
  const std::size_t rows = CountRows(x), m = parameters_.size();
  values.assign(rows, RowValues());
  const std::int32_t threads = ThreadsFor(rows);
  MakeWorkers(static_cast<std::size_t>(threads));
  std::vector<std::vector<double>> scratch(residuals == nullptr ? static_cast<std::size_t>(threads) : 0,
                                           std::vector<double>(residual_count_));
  const auto run = [&](std::int32_t task, std::int32_t worker) {
    const auto row = static_cast<std::size_t>(task);
    RowValues& own = values[row];
    const std::span<const double> point = x.subspan(row * m, m);
    own.log_prior = LogPriorAt(point);
    if (only_allowed && own.log_prior == -kInfinity) {
      own.chi_square = kInfinity;
      own.log_likelihood = -kInfinity;
      return;
    }
    const auto w = static_cast<std::size_t>(worker);
    workers_[w]->Evaluate(point, residuals != nullptr ? residuals->Row(row) : std::span<double>(scratch[w]),
                          own);
  };
  if (rows == 1) return run(0, 0);
  engine::RunTasks(static_cast<std::int32_t>(rows), run, threads);
}

Matrix Objective::Residuals(std::span<const double> x, std::vector<RowValues>* values) {
  const std::lock_guard lock(mutex_);
  Matrix residuals(CountRows(x), residual_count_);
  std::vector<RowValues> own;
  RunRows(x, false, &residuals, values != nullptr ? *values : own);
  return residuals;
}

std::vector<RowValues> Objective::Evaluate(std::span<const double> x, bool only_allowed) {
  const std::lock_guard lock(mutex_);
  std::vector<RowValues> values;
  RunRows(x, only_allowed, nullptr, values);
  return values;
}

std::vector<double> Objective::ResidualsAt(std::span<const double> x) {
  const std::lock_guard lock(mutex_);
  CheckOne(x);
  std::vector<double> residuals(residual_count_);
  RowValues values;
  workers_[0]->Evaluate(x, residuals, values);
  ThrowFault(values);
  return residuals;
}

Derivatives Objective::DerivativesAt(std::span<const double> x) {
  const std::lock_guard lock(mutex_);
  CheckOne(x);
  Derivatives result;
  result.residuals.assign(residual_count_, 0.0);
  result.jacobian = Matrix(residual_count_, parameters_.size());
  std::size_t begin = 0;
  for (std::size_t i = 0; i < prepared_.size(); ++i) {
    Differentiator differentiator(*workers_[0], parameters_, i);
    const std::size_t count = ResidualsOf(prepared_[i]);
    const RowBlock block{std::span(result.residuals).subspan(begin, count), result.jacobian, begin};
    RowValues values;
    const bool exact = options_.exact && differentiator.Exact(x, block, values);
    if (!exact) differentiator.ByDifferences(x, block, values);
    ThrowFault(values);
    result.exact.push_back(exact);
    begin += count;
  }
  for (std::size_t k = 0; k < parameters_.size(); ++k) {
    bool none = true;
    for (std::size_t i = 0; i < residual_count_ && none; ++i) none = result.jacobian(i, k) == 0;
    result.no_effect.push_back(none);
  }
  return result;
}

std::vector<double> Objective::GradientAt(std::span<const double> x) {
  const Derivatives at = DerivativesAt(x);
  std::vector<double> gradient(x.size(), 0.0);
  for (std::size_t i = 0; i < at.residuals.size(); ++i) {
    for (std::size_t k = 0; k < x.size(); ++k) gradient[k] -= at.residuals[i] * at.jacobian(i, k);
  }
  for (std::size_t k = 0; k < x.size(); ++k) gradient[k] += LogPriorSlope(parameters_[k].prior, x[k]);
  return gradient;
}

Covariance Objective::CovarianceAt(std::span<const double> x) {
  const Derivatives at = DerivativesAt(x);
  return CalcCovariance(at.jacobian, at.residuals, parameters_, x);
}

ModelCurve Objective::ModelAt(std::span<const double> x, std::size_t measurement) {
  const std::lock_guard lock(mutex_);
  CheckOne(x);
  if (measurement >= prepared_.size()) {
    throw DataError("there is no measurement " + std::to_string(measurement) + "; there are " +
                    std::to_string(prepared_.size()));
  }
  if (options_.weights == Weights::kProgram) {
    throw DataError("with the weights of the program the curve has no scale of its own; take other weights");
  }
  CurveModel& model = workers_[0]->model(measurement);
  RowValues values;
  values.code = model.Calculate(x);
  if (values.code != ReturnCode::kSuccess) values.fault = model.FaultText();
  ThrowFault(values);
  const PreparedMeasurement& prepared = prepared_[measurement];
  ModelCurve curve{prepared.points, prepared.q, {}};
  for (int k = 0; k < prepared.curves(); ++k) {
    const auto each = model.Values(k);
    curve.values[k].assign(each.begin(), each.end());
  }
  return curve;
}

CState Objective::StateAt(std::span<const double> x) const {
  CheckOne(x);
  CState state = state_;
  for (std::size_t k = 0; k < x.size(); ++k) {
    if (parameters_[k].kind == ParameterKind::kVariable) {
      state.fitvariables[parameters_[k].index].fit_value = x[k];
    }
  }
  ApplyFitVariables(state);
  return state;
}

}  // namespace tolvik::analysis
