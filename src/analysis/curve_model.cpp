// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/curve_model.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "analysis/restore.h"
#include "fit/dataset_curve.h"
#include "fit/fit_variables.h"
#include "optics/energy.h"
#include "tolvik/return_code.h"

namespace tolvik::analysis {
namespace {

constexpr double kRadiansPerDegree = std::numbers::pi / 180;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double* FieldOf(QuantityValues& values, ParameterKind kind) {
  switch (kind) {
    case ParameterKind::kScale:
      return &values.scale;
    case ParameterKind::kBackground:
      return &values.background;
    case ParameterKind::kOffset:
      return &values.offset;
    case ParameterKind::kBeamWidth:
      return &values.beam_width;
    case ParameterKind::kSampleLength:
      return &values.sample_length;
    case ParameterKind::kVariable:
      break;
  }
  return nullptr;
}

QuantityValues StartOf(const Measurement& source) {
  return {source.scale.value, source.background.value, source.offset.value, source.footprint.beam_width.value,
          source.footprint.sample_length.value};
}

}  // namespace

CurveModel::CurveModel(const PreparedMeasurement& prepared, std::span<const Parameter> parameters,
                       std::size_t number)
    : prepared_(prepared),
      parameters_(parameters),
      number_(number),
      state_(prepared.state),
      measured_(prepared.state.datasets[prepared.dataset]),
      quantities_(StartOf(prepared.source)) {
  if (state_.averaging != 0) AverageDataset(measured_, state_.averaging);
  if (prepared.HasPlan()) rules_ = std::make_unique<ResolutionRules>(prepared.dq, prepared.plan);
  for (int curve = 0; curve < prepared.curves(); ++curve) {
    values_[curve].assign(prepared.q.size(), kNaN);
    bare_[curve].assign(prepared.q.size(), kNaN);
  }
}

void CurveModel::Apply(std::span<const double> x) {
  RestoreNumbers(prepared_.state, state_);
  TakeConditions(state_, prepared_.dataset);
  for (std::size_t k = 0; k < parameters_.size(); ++k) {
    const Parameter& parameter = parameters_[k];
    if (parameter.kind == ParameterKind::kVariable) {
      state_.fitvariables[parameter.index].fit_value = x[k];
    } else if (static_cast<std::size_t>(parameter.index) == number_) {
      *FieldOf(quantities_, parameter.kind) = x[k];
    }
  }
  ApplyFitVariables(state_);
  measured_.datasetqztranslation = state_.datasets[prepared_.dataset].datasetqztranslation;
  ShiftPoints();
}

double CurveModel::Wavevector(std::size_t point) const {
  const double energy = IsEnergyScan(prepared_.source.kind)
                            ? measured_.dataset_eng[static_cast<std::int32_t>(point)]
                            : measured_.datasetenergy;
  return 2 * std::numbers::pi / LambdaFromEnergy(energy);
}

// q' = 2 k0 sin(θ + offset) = q cos(offset) + sqrt(4 k0² - q²) sin(offset).
void CurveModel::ShiftPoints() {
  const double offset = quantities_.offset * kRadiansPerDegree;
  if (offset == 0) {
    std::ranges::copy(prepared_.q, measured_.dataset_qz.begin());
    return;
  }
  const double cosine = std::cos(offset), sine = std::sin(offset);
  for (std::size_t i = 0; i < prepared_.q.size(); ++i) {
    const double q = prepared_.q[i], reach = 2 * Wavevector(i);
    measured_.dataset_qz[static_cast<std::int32_t>(i)] =
        q * cosine + std::sqrt((reach - q) * (reach + q)) * sine;
  }
}

double CurveModel::SineOf(std::size_t point) const {
  const double q = measured_.dataset_qz[static_cast<std::int32_t>(point)] + measured_.datasetqztranslation;
  return q / (2 * Wavevector(point));
}

const engine::PointRules* CurveModel::RulesFor(const CState& state) {
  const engine::PointRules* rules = nullptr;
  if (rules_ != nullptr) {
    shifted_.assign(measured_.dataset_qz.begin(), measured_.dataset_qz.end());
    for (double& q : shifted_) q += measured_.datasetqztranslation;
    rules = &rules_->Update(shifted_, rules_->FollowEdges() ? CriticalEdges(state, prepared_.edge_layers)
                                                            : std::vector<double>());
  }
  out_of_reach_ |= IsOutOfReach(state, rules);
  return rules;
}

// A calculation would silently stop there.
bool CurveModel::IsOutOfReach(const CState& state, const engine::PointRules* rules) const {
  if (IsEnergyScan(prepared_.source.kind)) return false;  // a scan has codes
  const double reach = 4 * std::numbers::pi / state.lambda;
  const double width = std::abs(state.resolution);
  for (std::int32_t i = 0; i < measured_.dataset_qz.size; ++i) {
    const double q = measured_.dataset_qz[i] + measured_.datasetqztranslation;
    double farthest = q + width;
    if (rules != nullptr) {
      const auto rule = rules->At(i);
      farthest = q;
      for (const std::int32_t k : {0, rule.samples - 1}) farthest = std::max(farthest, q + rule.shift[k]);
    }
    if (!(farthest < reach && q - width > -reach)) return true;
  }
  return false;
}

std::int32_t CurveModel::Calculate(std::span<const double> x) {
  Apply(x);
  Forget();
  out_of_reach_ = false;
  const bool program = prepared_.rules.weights == Weights::kProgram;
  const CDataset& dataset = state_.datasets[prepared_.dataset];
  program_scale_ = {dataset.datasetmultiplicator, dataset.datasettranslator};
  code_ = CalcDatasetCurve(state_, solution_, measured_, {this, program ? 1.0 : kNaN, true});
  if (HasFault()) return code_ = code();
  if (program) return code_ = ReturnCode::kSuccess;
  if (out_of_reach_) code_ = ReturnCode::kWrongDataPoints;
  if (code_ == ReturnCode::kSuccess) TakeValues();
  return code_;
}

bool CurveModel::SetStage(engine::Stage& stage) {
  Forget();
  engine::SetStage(state_, stage, this);
  return !HasFault();
}

double CurveModel::ProgramError(CArray<double>& residuals) {
  return CalcDatasetError(state_, solution_, residuals, measured_, program_scale_);
}

std::span<const double> CurveModel::Column(int curve) const {
  const CArray<double>* column = &solution_.dataset_R0;
  switch (prepared_.source.kind) {
    case MeasurementKind::kReflectivity:
    case MeasurementKind::kEnergyScan:
      break;
    case MeasurementKind::kSecondRay:
      column = &solution_.dataset_Rm;
      break;
    case MeasurementKind::kBothRays:
    case MeasurementKind::kEnergyScanBothRays:
      column = curve == 0 ? &solution_.dataset_Rp : &solution_.dataset_Rm;
      break;
    case MeasurementKind::kAsymmetry:
    case MeasurementKind::kEnergyScanAsymmetry:
      column = &solution_.dataset_A;
      break;
  }
  return {column->data, prepared_.q.size()};
}

void CurveModel::TakeValues() {
  const CDataset& dataset = state_.datasets[prepared_.dataset];
  const Footprint& footprint = prepared_.source.footprint;
  const bool asymmetry = IsAsymmetry(prepared_.source.kind);
  const double factor = asymmetry ? quantities_.scale : quantities_.scale / dataset.datasetmultiplicator;
  const double constant = quantities_.background - (asymmetry ? 0 : dataset.datasettranslator);
  for (int curve = 0; curve < prepared_.curves(); ++curve) {
    const std::span<const double> column = Column(curve);
    for (std::size_t i = 0; i < column.size(); ++i) {
      double share = 1;
      if (footprint.shape != BeamShape::kNone && !asymmetry) {
        share = FootprintShare(footprint.shape, quantities_.beam_width, quantities_.sample_length, SineOf(i));
      }
      bare_[curve][i] = share * column[i];
      values_[curve][i] = factor * bare_[curve][i] + constant;
    }
  }
}

std::string CurveModel::FaultText() const {
  const std::string label = LabelOf(number_);
  if (HasFault()) return Text();
  switch (code_) {
    case ReturnCode::kWrongDataPoints:
      return label +
             ": a point or its resolution is out of reach, q >= 2 k0; mask it, or check offset and energy";
    case ReturnCode::kSuccess:
      return label + ": the model is not finite";
    default:
      return label + ": the calculation failed at this point of the parameters";
  }
}

}  // namespace tolvik::analysis
