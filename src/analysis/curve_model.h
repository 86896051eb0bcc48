// SPDX-License-Identifier: GPL-2.0-or-later
// The model of one measurement at a point of the parameters. Each thread has its own.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "analysis/prepared.h"
#include "analysis/script_fault.h"
#include "fit/dataset_errors.h"
#include "tolvik/analysis/parameters.h"
#include "tolvik/state.h"

namespace tolvik::analysis {

/// Values of the quantities of a measurement.
struct QuantityValues {
  double scale, background, offset, beam_width, sample_length;
  bool operator==(const QuantityValues&) const = default;
};

/// Keeps the state of a measurement from one evaluation to the next; each begins from the same numbers, so
/// that a result does not depend on the evaluations before.
class CurveModel : private ScriptWatch {
 public:
  /// prepared and parameters must outlive the model; number: of the measurement.
  CurveModel(const PreparedMeasurement& prepared, std::span<const Parameter> parameters, std::size_t number);

  /// Sets the state to the parameters x: conditions, fit variables, quantities. Tables and script are left to
  /// the calculation.
  void Apply(std::span<const double> x);

  /// Apply and calculate. A code of ReturnCode; other than kSuccess the model has no values.
  std::int32_t Calculate(std::span<const double> x);

  /// Tables, script and profile after Apply, without a calculation. False when the script fails.
  bool SetStage(engine::Stage& stage);

  /// With Weights::kProgram: the error of the measurement after Calculate, and its residuals by point.
  double ProgramError(CArray<double>& residuals);

  /// One line about the latest code that was not kSuccess.
  std::string FaultText() const;

  /// The model at the points in use, of curve 0 or 1.
  std::span<const double> Values(int curve) const { return values_[curve]; }
  /// The curve before scale and background, of curve 0 or 1.
  std::span<const double> Bare(int curve) const { return bare_[curve]; }

  const CState& state() const { return state_; }
  CState& state() { return state_; }
  const CSolution& solution() const { return solution_; }
  const CDataset& measured() const { return measured_; }
  const QuantityValues& quantities() const { return quantities_; }
  const PreparedMeasurement& prepared() const { return prepared_; }
  /// q after the offset, without the shift of the dataset; for the state after Apply.
  std::span<const double> ShiftedQ() const { return {measured_.dataset_qz.data, prepared_.q.size()}; }
  /// sin θ of a point after the offset and the shift.
  double SineOf(std::size_t point) const;

  /// Whether nodes depend on the critical edges of the state.
  bool FollowsEdges() const { return rules_ != nullptr && rules_->FollowEdges(); }

  /// Nodes of all points for the present state; null for the samples of its resolution.
  const engine::PointRules* RulesFor(const CState& state) override;

 private:
  void ShiftPoints();
  double Wavevector(std::size_t point) const;
  bool IsOutOfReach(const CState& state, const engine::PointRules* rules) const;
  void TakeValues();
  std::span<const double> Column(int curve) const;

  const PreparedMeasurement& prepared_;
  std::span<const Parameter> parameters_;
  std::size_t number_;
  CState state_;
  CDataset measured_;
  CSolution solution_;
  std::unique_ptr<ResolutionRules> rules_;
  std::vector<double> shifted_;
  QuantityValues quantities_{};
  DatasetScale program_scale_;
  bool out_of_reach_ = false;
  std::int32_t code_ = 1;
  std::vector<double> values_[2], bare_[2];
};

}  // namespace tolvik::analysis
