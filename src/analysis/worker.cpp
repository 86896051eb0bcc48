// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/worker.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "analysis/residuals.h"
#include "tolvik/return_code.h"

namespace tolvik::analysis {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

void MarkFailed(RowValues& values, std::span<double> residuals, std::int32_t code, const std::string& fault) {
  std::ranges::fill(residuals, kNaN);
  values.chi_square = kInfinity;
  values.log_likelihood = -kInfinity;
  values.code = code;
  if (values.fault.empty()) values.fault = fault;
}

}  // namespace

std::size_t ResidualsOf(const PreparedMeasurement& prepared) {
  const bool program = prepared.rules.weights == Weights::kProgram;
  return prepared.q.size() * static_cast<std::size_t>(program ? 1 : prepared.curves());
}

void CompareCurve(const PreparedMeasurement& prepared, int curve, std::span<const double> model,
                  std::span<double> residuals, std::span<double> slopes, RowValues& values) {
  const std::vector<double>& y = prepared.y[curve];
  const std::vector<double>& error = prepared.error[curve];
  const auto compare = [&](auto residual_of) {
    for (std::size_t i = 0; i < model.size(); ++i) {
      const Residual residual = residual_of(i);
      residuals[i] = residual.value;
      if (!slopes.empty()) slopes[i] = residual.slope;
      values.chi_square += residual.value * residual.value;
      values.log_likelihood += residual.log_likelihood;
    }
  };
  if (prepared.rules.weights == Weights::kLog) {
    compare([&](std::size_t i) { return LogResidual(y[i], model[i]); });
  } else if (error.empty()) {
    compare([&](std::size_t i) { return PoissonResidual(y[i], model[i]); });
  } else {
    compare([&](std::size_t i) { return NormalResidual(y[i], model[i], error[i]); });
  }
}

ObjectiveWorker::ObjectiveWorker(const std::vector<PreparedMeasurement>& prepared,
                                 const std::vector<Parameter>& parameters) {
  for (std::size_t i = 0; i < prepared.size(); ++i) {
    models_.push_back(std::make_unique<CurveModel>(prepared[i], parameters, i));
  }
}

bool ObjectiveWorker::EvaluateOne(std::size_t measurement, std::span<const double> x,
                                  std::span<double> residuals, RowValues& values) {
  CurveModel& model = *models_[measurement];
  const PreparedMeasurement& prepared = model.prepared();
  const std::int32_t code = model.Calculate(x);
  if (code != ReturnCode::kSuccess) {
    MarkFailed(values, residuals, code, model.FaultText());
    return false;
  }
  RowValues own;
  if (prepared.rules.weights == Weights::kProgram) {
    program_residuals_.Assign(static_cast<std::int32_t>(residuals.size()), 0.0);
    own.chi_square = model.ProgramError(program_residuals_);
    own.log_likelihood = -0.5 * own.chi_square;
    std::ranges::copy(program_residuals_, residuals.begin());
  } else {
    for (int curve = 0; curve < prepared.curves(); ++curve) {
      const std::span<const double> modelled = model.Values(curve);
      CompareCurve(prepared, curve, modelled,
                   residuals.subspan(modelled.size() * static_cast<std::size_t>(curve)), {}, own);
    }
  }
  if (std::isnan(own.chi_square)) {
    MarkFailed(values, residuals, ReturnCode::kUnknownError, model.FaultText());
    return false;
  }
  values.chi_square += own.chi_square;
  values.log_likelihood += own.log_likelihood;
  return true;
}

void ObjectiveWorker::Evaluate(std::span<const double> x, std::span<double> residuals, RowValues& values) {
  std::size_t begin = 0;
  bool all = true;
  for (std::size_t i = 0; i < models_.size(); ++i) {
    const std::size_t count = ResidualsOf(models_[i]->prepared());
    all = EvaluateOne(i, x, residuals.subspan(begin, count), values) && all;
    begin += count;
  }
  if (!all) MarkFailed(values, residuals, values.code, values.fault);
}

}  // namespace tolvik::analysis
