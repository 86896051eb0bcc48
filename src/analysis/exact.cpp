// SPDX-License-Identifier: GPL-2.0-or-later
// Exact derivatives of the residuals.
#include <array>
#include <cmath>
#include <optional>

#include "analysis/differentiator.h"
#include "analysis/snapshot.h"
#include "engine/curve/jacobian.h"

namespace tolvik::analysis {
namespace {

using engine::ProfileField;

// No input is rounded relative to 1: delta itself changes, not the index.
constexpr double kStep = 6e-6;

// The effect of one parameter on the inputs of the curve.
struct Movement {
  std::vector<double> sine, weight;  // d / d parameter of each node; empty where the nodes stay
  std::vector<double> factor[2];     // empty where the points keep theirs
  double constant = 0;
};

constexpr std::pair<ProfileField, double engine::CLayer<double>::*> kFields[] = {
    {ProfileField::kDelta, &engine::CLayer<double>::layer_delta},
    {ProfileField::kBeta, &engine::CLayer<double>::layer_beta},
    {ProfileField::kThickness, &engine::CLayer<double>::layer_d},
    {ProfileField::kRoughness, &engine::CLayer<double>::layer_sigma},
    {ProfileField::kMagneticDelta, &engine::CLayer<double>::layer_ddelta},
    {ProfileField::kMagneticBeta, &engine::CLayer<double>::layer_dbeta},
};

std::vector<double> Difference(const std::vector<double>& high, const std::vector<double>& low,
                               double width) {
  std::vector<double> result(high.size());
  for (std::size_t i = 0; i < high.size(); ++i) result[i] = (high[i] - low[i]) / width;
  return result;
}

// The matrix from parameters to all inputs of a curve.
class Chain {
 public:
  Chain(CurveModel& model, const std::vector<Parameter>& parameters, std::span<const double> x)
      : model_(model), parameters_(parameters), x_(x.begin(), x.end()) {}

  /// False where a parameter changes the number of entries or nodes, or the script fails.
  bool Build() {
    if (!TakeSnapshot(model_, x_, nullptr, here_)) return false;
    profile_.parameters = static_cast<std::int32_t>(x_.size());
    movements_.resize(x_.size());
    for (std::size_t k = 0; k < x_.size(); ++k) {
      if (!AddParameter(k)) return false;
    }
    for (std::size_t k = 0; k < x_.size(); ++k) {
      const Movement& movement = movements_[k];
      if (movement.sine.empty()) continue;
      nodes_.push_back({static_cast<std::int32_t>(k), movement.sine.data(), movement.weight.data()});
    }
    return true;
  }

  Snapshot& here() { return here_; }
  const engine::ProfileChain& profile() const { return profile_; }
  const std::vector<engine::NodeTerm>& nodes() const { return nodes_; }
  const Movement& movement(std::size_t k) const { return movements_[k]; }
  double constant() const { return here_.constant; }

 private:
  bool AddParameter(std::size_t k) {
    const double x = x_[k], h = kStep * parameters_[k].scale;
    const double above = x + h, below = x - h;
    x_[k] = above;
    const bool has_above = TakeSnapshot(model_, x_, &here_, high_);
    x_[k] = below;
    const bool has_below = has_above && TakeSnapshot(model_, x_, &here_, low_);
    x_[k] = x;
    if (!has_below || high_.stage.profile.size != here_.stage.profile.size ||
        low_.stage.profile.size != here_.stage.profile.size) {
      return false;
    }
    AddProfile(k, above - below);
    return AddNodes(k, above - below) && AddFactors(k, above - below);
  }

  void AddProfile(std::size_t k, double width) {
    const double wavevector = (high_.stage.k0 - low_.stage.k0) / width / here_.stage.k0;
    for (std::int32_t j = 0; j < here_.stage.profile.size; ++j) {
      const auto& high = high_.stage.profile[j];
      const auto& low = low_.stage.profile[j];
      for (const auto& [field, member] : kFields) {
        double change = (high.*member - low.*member) / width;
        // The curve depends on lengths in units of the wavelength.
        if (field == ProfileField::kThickness || field == ProfileField::kRoughness) {
          change += here_.stage.profile[j].*member * wavevector;
        }
        if (change == 0) continue;
        profile_.terms.push_back({static_cast<std::int32_t>(k), j, field, change});
      }
    }
  }

  bool AddNodes(std::size_t k, double width) {
    if (high_.sine.empty() && low_.sine.empty()) return true;
    if (high_.end != here_.end || low_.end != here_.end) return false;
    movements_[k].sine = Difference(high_.sine, low_.sine, width);
    movements_[k].weight = Difference(high_.weight, low_.weight, width);
    return true;
  }

  bool AddFactors(std::size_t k, double width) {
    movements_[k].constant = (high_.constant - low_.constant) / width;
    if (high_.factor[0].empty() && low_.factor[0].empty()) return true;
    for (int ray = 0; ray < 2; ++ray) {
      if (high_.factor[ray].size() != low_.factor[ray].size()) return false;
      movements_[k].factor[ray] = Difference(high_.factor[ray], low_.factor[ray], width);
    }
    return true;
  }

  CurveModel& model_;
  const std::vector<Parameter>& parameters_;
  std::vector<double> x_;
  Snapshot here_, high_, low_;
  engine::ProfileChain profile_;
  std::vector<engine::NodeTerm> nodes_;
  std::vector<Movement> movements_;
};

bool HasExact(const CurveModel& model) {
  const PreparedMeasurement& prepared = model.prepared();
  const bool folded = prepared.state.fastresolution && !prepared.HasPlan();
  return !IsEnergyScan(prepared.source.kind) && prepared.rules.weights != Weights::kProgram && !folded;
}

engine::Rays RaysOf(MeasurementKind kind) {
  switch (kind) {
    case MeasurementKind::kReflectivity:
      return engine::Rays::kFirst;
    case MeasurementKind::kSecondRay:
      return engine::Rays::kSecond;
    default:
      return engine::Rays::kBoth;
  }
}

// A ray with the factors of its points: value and derivatives, the values of one point after the other.
void FinishRay(const Chain& chain, const Snapshot& here, int ray, engine::RayJacobian& curve) {
  const std::vector<double>& factor = here.factor[ray];
  const auto m = static_cast<std::size_t>(chain.profile().parameters);
  for (std::size_t i = 0; i < curve.value.size(); ++i) {
    for (std::size_t k = 0; k < m; ++k) {
      double& slope = curve.jacobian[i * m + k];
      slope *= factor[i];
      if (!chain.movement(k).factor[ray].empty()) slope += chain.movement(k).factor[ray][i] * curve.value[i];
    }
    curve.value[i] *= factor[i];
  }
}

// (Rp - Rm) / (Rp + Rm), into the first ray.
void ToAsymmetry(std::size_t m, engine::RayJacobian& first, const engine::RayJacobian& second) {
  for (std::size_t i = 0; i < first.value.size(); ++i) {
    const double plus = first.value[i], minus = second.value[i], sum = plus + minus;
    for (std::size_t k = 0; k < m; ++k) {
      double& slope = first.jacobian[i * m + k];
      slope = sum == 0 ? 0 : 2 * (minus * slope - plus * second.jacobian[i * m + k]) / (sum * sum);
    }
    first.value[i] = sum == 0 ? 0 : (plus - minus) / sum;
  }
}

// The scale of an asymmetry, a factor on the asymmetry itself.
void ScaleAsymmetry(const std::vector<Parameter>& parameters, std::size_t measurement, double scale,
                    engine::RayJacobian& curve) {
  const std::size_t m = parameters.size();
  for (std::size_t i = 0; i < curve.value.size(); ++i) {
    for (std::size_t k = 0; k < m; ++k) {
      double& slope = curve.jacobian[i * m + k];
      slope *= scale;
      const bool own = static_cast<std::size_t>(parameters[k].index) == measurement;
      if (parameters[k].kind == ParameterKind::kScale && own) slope += curve.value[i];
    }
    curve.value[i] *= scale;
  }
}

void WriteRows(const PreparedMeasurement& prepared, const Chain& chain, int curve, engine::RayJacobian& ray,
               const RowBlock& block, RowValues& values) {
  const std::size_t points = prepared.q.size(), begin = points * static_cast<std::size_t>(curve);
  const auto m = static_cast<std::size_t>(chain.profile().parameters);
  std::vector<double> slopes(points);
  for (double& value : ray.value) value += chain.constant();
  CompareCurve(prepared, curve, ray.value, block.residuals.subspan(begin, points), slopes, values);
  for (std::size_t i = 0; i < points; ++i) {
    for (std::size_t k = 0; k < m; ++k) {
      const double model_slope = ray.jacobian[i * m + k] + chain.movement(k).constant;
      block.jacobian(block.first_row + begin + i, k) = model_slope == 0 ? 0 : slopes[i] * model_slope;
    }
  }
}

}  // namespace

bool Differentiator::Exact(std::span<const double> x, const RowBlock& block, RowValues& values) {
  CurveModel& model = worker_.model(measurement_);
  const PreparedMeasurement& prepared = model.prepared();
  if (!HasExact(model)) return false;
  Chain chain(model, parameters_, x);
  if (!chain.Build()) return false;
  Snapshot& here = chain.here();
  if (!engine::HasGradient(here.stage.options)) return false;

  const engine::CurveNodes nodes{here.sine, here.weight, here.end, chain.nodes()};
  const MeasurementKind kind = prepared.source.kind;
  engine::CurveJacobian curves;
  engine::CalcJacobian(
      {here.stage.profile, here.stage.k0, here.stage.options, nodes, chain.profile(), RaysOf(kind)}, curves,
      worker_.gradient_work());
  FinishRay(chain, here, 0, curves.first);
  FinishRay(chain, here, 1, curves.second);
  if (kind == MeasurementKind::kAsymmetry) {
    ToAsymmetry(x.size(), curves.first, curves.second);
    ScaleAsymmetry(parameters_, measurement_, here.scale_key.quantities.scale, curves.first);
  }
  const bool second = kind == MeasurementKind::kSecondRay;
  RowValues own;
  WriteRows(prepared, chain, 0, second ? curves.second : curves.first, block, own);
  if (prepared.curves() == 2) WriteRows(prepared, chain, 1, curves.second, block, own);
  if (std::isnan(own.chi_square)) return false;  // the differences find the reason
  values.chi_square += own.chi_square;
  values.log_likelihood += own.log_likelihood;
  return true;
}

}  // namespace tolvik::analysis
