// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/resolution_plan.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/curve/grazing.h"
#include "engine/curve/intensity.h"

namespace tolvik::analysis {
namespace {

constexpr std::int32_t kHermiteLadder[] = {3, 5, 7, 9, 11, 13, 15, 17, 21, 25, 31, 41};
constexpr std::int32_t kLegendreLadder[] = {8, 12, 16, 20, 24, 32, 40, 48, 64, 96, 128, 192, 256, 400};
constexpr std::int32_t kMostLegendre = 400;
constexpr double kThicknessMargin = 1.1;
// A parameter moves an edge during a fit: points up to this distance are cut into pieces as well.
constexpr double kEdgeMargin = 0.05;

// Error of n Gauss-Hermite nodes for cos(x t) under the normal density: x^2n n! / (2n)!, the remainder of the
// rule (F. B. Hildebrand, Introduction to Numerical Analysis, 1974, 8.7).
double HermiteError(std::int32_t n, double x) {
  return std::exp(2 * n * std::log(x) + std::lgamma(n + 1.0) - std::lgamma(2 * n + 1.0));
}

// Fewest Legendre nodes for a wave of so many radians over the piece.
std::int32_t LegendreForPhase(double phase) {
  return static_cast<std::int32_t>(std::min(8 + 0.55 * phase, double(kMostLegendre)));
}

// The thickness whose fringes reach the surface: absorption damps waves from deeper.
double VisibleThickness(const engine::Stage& stage, double q) {
  constexpr double kInvisible = 1e-5;
  double thickness = 0, damping = 0;
  for (std::int32_t i = stage.profile.size - 2; i > 0 && damping < -std::log(kInvisible); --i) {
    const auto& entry = stage.profile[i];
    thickness += std::abs(entry.layer_d);
    damping += 4 * stage.k0 * stage.k0 * entry.layer_beta * entry.layer_d / std::max(q, 1e-3);
  }
  return thickness;
}

class Planner {
 public:
  explicit Planner(const ResolutionTask& task) : task_(task), plan_(task.q.size()) {}

  std::vector<PointPlan> Run(ResolutionReport& report) {
    for (std::size_t i = 0; i < plan_.size(); ++i) Begin(i);
    Calculate(DensePlan(), dense_);
    deviation_.assign(plan_.size(), std::numeric_limits<double>::infinity());
    while (Try()) {
    }
    WriteReport(report);
    return plan_;
  }

 private:
  void Begin(std::size_t i) {
    const double sigma = task_.dq[i];
    thickness_.push_back(VisibleThickness(task_.stage, task_.q[i]));
    if (sigma > 0) plan_[i] = {IsNearEdge(i) ? 0 : kHermiteLadder[0], IsNearEdge(i)};
    if (sigma > 0) plan_[i] = FirstOf(i, plan_[i].pieces);
  }

  bool IsNearEdge(std::size_t i) const {
    const double q = task_.q[i], reach = kSigmaReach * task_.dq[i];
    if (q < reach) return true;
    return std::ranges::any_of(task_.edges,
                               [&](double edge) { return std::abs(q - edge) < reach + kEdgeMargin * edge; });
  }

  PointPlan FirstOf(std::size_t i, bool pieces) const {
    if (pieces) return LegendreFrom(LegendreForPhase(2 * kSigmaReach * Phase(i)));
    return PlanForThickness(thickness_[i], task_.dq[i], task_.tolerance);
  }

  double Phase(std::size_t i) const { return kThicknessMargin * thickness_[i] * task_.dq[i]; }

  static PointPlan LegendreFrom(std::int32_t least) {
    const auto* found = std::ranges::lower_bound(kLegendreLadder, least);
    return {found == std::end(kLegendreLadder) ? kMostLegendre : *found, true};
  }

  // The next step of a point; false at the end.
  bool Raise(std::size_t i) {
    PointPlan& plan = plan_[i];
    if (plan.nodes <= 1) return false;
    if (!plan.pieces) {
      const auto* next = std::ranges::upper_bound(kHermiteLadder, plan.nodes);
      plan = next == std::end(kHermiteLadder) ? FirstOf(i, true) : PointPlan{*next, false};
      return true;
    }
    if (plan.nodes >= kMostLegendre) return false;
    plan = LegendreFrom(plan.nodes + 1);
    return true;
  }

  std::vector<PointPlan> DensePlan() const {
    std::vector<PointPlan> dense(plan_.size());
    for (std::size_t i = 0; i < dense.size(); ++i) {
      const double nodes = 64 + 2 * 0.7 * 2 * kSigmaReach * Phase(i);
      if (task_.dq[i] > 0) dense[i] = {static_cast<std::int32_t>(std::min(nodes, 2000.0)), true};
    }
    return dense;
  }

  // One round over the points that are not good enough; false when nothing changed.
  bool Try() {
    std::vector<double> values[2];
    Calculate(plan_, values);
    bool raised = false;
    for (std::size_t i = 0; i < plan_.size(); ++i) {
      if (deviation_[i] <= 0.25 * task_.tolerance) continue;
      deviation_[i] = Deviation(values, i);
      if (!(deviation_[i] <= 0.25 * task_.tolerance)) raised |= Raise(i);
    }
    return raised;
  }

  double Deviation(const std::vector<double> (&values)[2], std::size_t i) const {
    double largest = 0;
    for (int ray = 0; ray < (task_.both_rays ? 2 : 1); ++ray) {
      const double exact = dense_[ray][i];
      if (exact != 0) largest = std::max(largest, std::abs(values[ray][i] - exact) / std::abs(exact));
    }
    return largest;
  }

  void Calculate(const std::vector<PointPlan>& plan, std::vector<double> (&values)[2]) {
    ResolutionRules rules(task_.dq, plan);
    const engine::PointRules& nodes = rules.Update(task_.q, task_.edges);
    sines_.clear();
    for (std::size_t i = 0, k = 0; i < plan.size(); ++i) {
      for (; k < static_cast<std::size_t>(nodes.end[i]); ++k) {
        sines_.push_back(
            std::clamp(engine::GrazingSine(task_.q[i] + nodes.shift[k], task_.stage.k0), 0.0, 1.0));
      }
    }
    for (auto& each : intensity_) each.assign(sines_.size(), 0.0);
    engine::Stage& stage = task_.stage;
    engine::CalcIntensities<double>({stage.profile, stage.k0, stage.options, sines_, intensity_[0].data(),
                                     task_.both_rays ? intensity_[1].data() : nullptr},
                                    work_);
    for (int ray = 0; ray < 2; ++ray) {
      values[ray].assign(plan.size(), 0.0);
      for (std::size_t i = 0, k = 0; i < plan.size(); ++i) {
        for (; k < static_cast<std::size_t>(nodes.end[i]); ++k) {
          if (task_.q[i] + nodes.shift[k] >= 0) values[ray][i] += nodes.weight[k] * intensity_[ray][k];
        }
      }
    }
  }

  void WriteReport(ResolutionReport& report) {
    ResolutionRules rules(task_.dq, plan_);
    const engine::PointRules& nodes = rules.Update(task_.q, task_.edges);
    report = {};
    report.nodes = static_cast<std::int32_t>(nodes.shift.size());
    for (std::size_t i = 0; i < plan_.size(); ++i) {
      report.most = std::max(report.most, nodes.At(static_cast<std::int32_t>(i)).samples);
      report.worst = std::max(report.worst, deviation_[i]);
      if (!(deviation_[i] <= task_.tolerance)) ++report.unresolved;
    }
  }

  const ResolutionTask& task_;
  std::vector<PointPlan> plan_;
  std::vector<double> thickness_, deviation_, dense_[2], sines_, intensity_[2];
  engine::IntensityWork<double> work_;
};

}  // namespace

PointPlan PlanForThickness(double thickness, double sigma, double tolerance) {
  if (!(sigma > 0)) return {1, false};
  const double x = kThicknessMargin * thickness * sigma;
  for (const std::int32_t n : kHermiteLadder) {
    if (x == 0 || HermiteError(n, x) <= tolerance) return {n, false};
  }
  return {LegendreForPhase(2 * kSigmaReach * x), true};
}

std::vector<PointPlan> PlanResolution(const ResolutionTask& task, ResolutionReport& report) {
  return Planner(task).Run(report);
}

}  // namespace tolvik::analysis
