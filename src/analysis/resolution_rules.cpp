// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/resolution_rules.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tolvik::analysis {
namespace {

// A thinner slab has no edge of its own: the phase of a wave in it hardly changes near its edge.
constexpr double kThickSlab = 60;
constexpr std::size_t kMostEdges = 6;

// sin²θc = 1 - Re n².
double EdgeOf(const CLayer& layer, double k0) {
  const double n = 1 - layer.layer_delta;
  const double sine2 = 1 - n * n + layer.layer_beta * layer.layer_beta;
  return sine2 > 0 ? 2 * k0 * std::sqrt(sine2) : 0;
}

}  // namespace

std::vector<std::int32_t> LayersWithEdges(const CState& state) {
  std::vector<std::int32_t> layers;
  if (state.mode != Mode::kMaterial || state.layers.size < 2) return layers;
  layers.push_back(0);
  for (std::int32_t i = state.layers.size - 2; i > 0 && layers.size() < kMostEdges; --i) {
    const auto is_equal = [&](std::int32_t other) {
      return state.layers[i].layer_delta == state.layers[other].layer_delta &&
             state.layers[i].layer_beta == state.layers[other].layer_beta;
    };
    if (state.layers[i].layer_d >= kThickSlab && std::ranges::none_of(layers, is_equal)) layers.push_back(i);
  }
  return layers;
}

std::vector<double> CriticalEdges(const CState& state, std::span<const std::int32_t> layers) {
  const double k0 = 2 * std::numbers::pi / state.lambda;
  std::vector<double> edges;
  for (const std::int32_t i : layers) edges.push_back(EdgeOf(state.layers[i], k0));
  std::erase_if(edges, [](double edge) { return !(edge > 0); });
  std::ranges::sort(edges);
  return edges;
}

ResolutionRules::ResolutionRules(std::span<const double> dq, std::span<const PointPlan> plan)
    : dq_(dq.begin(), dq.end()), plan_(plan.begin(), plan.end()) {
  has_pieces_ = std::ranges::any_of(plan_, &PointPlan::pieces);
}

const QuadratureRule& ResolutionRules::Hermite(std::int32_t n) {
  QuadratureRule& rule = hermite_[n];
  if (rule.node.empty()) rule = GaussHermite(n);
  return rule;
}

const QuadratureRule& ResolutionRules::Legendre(std::int32_t n) {
  QuadratureRule& rule = legendre_[n];
  if (rule.node.empty()) rule = GaussLegendre(n);
  return rule;
}

const engine::PointRules& ResolutionRules::Update(std::span<const double> q, std::span<const double> edges) {
  const bool stand = !rules_.end.empty() &&
                     (!has_pieces_ || (std::ranges::equal(q, q_) && std::ranges::equal(edges, edges_)));
  if (!stand) Build(q, edges);
  return rules_;
}

void ResolutionRules::Build(std::span<const double> q, std::span<const double> edges) {
  rules_.shift.clear();
  rules_.weight.clear();
  rules_.end.clear();
  for (std::size_t i = 0; i < dq_.size(); ++i) {
    if (plan_[i].pieces) {
      AddPieces(q[i], dq_[i], plan_[i].nodes, edges);
    } else {
      AddHermite(dq_[i], plan_[i].nodes);
    }
    rules_.end.push_back(static_cast<std::int32_t>(rules_.shift.size()));
  }
  q_.assign(q.begin(), q.end());
  edges_.assign(edges.begin(), edges.end());
}

void ResolutionRules::AddHermite(double sigma, std::int32_t nodes) {
  const QuadratureRule& rule = Hermite(nodes);
  for (std::size_t k = 0; k < rule.node.size(); ++k) {
    if (std::abs(rule.node[k]) > kSigmaReach) continue;
    rules_.shift.push_back(sigma * rule.node[k]);
    rules_.weight.push_back(rule.weight[k]);
  }
}

// The cuts: the horizon, below which R is 0, and the edges. The range between two edges is halved between
// them.
void ResolutionRules::AddPieces(double q, double sigma, std::int32_t nodes, std::span<const double> edges) {
  const double low = std::max(q - kSigmaReach * sigma, 0.0), high = q + kSigmaReach * sigma;
  const QuadratureRule& rule = Legendre(nodes);
  double from = low;
  bool from_edge = false;
  for (const double edge : edges) {
    if (edge <= from || edge >= high) continue;
    const double begin = from_edge ? 0.5 * (from + edge) : from;
    if (from_edge) AddPiece(q, sigma, rule, from, begin - from);
    AddPiece(q, sigma, rule, edge, begin - edge);
    from = edge;
    from_edge = true;
  }
  AddPiece(q, sigma, rule, from, high - from);
}

// From an edge over a length, which is negative below the edge.
void ResolutionRules::AddPiece(double q, double sigma, const QuadratureRule& rule, double from,
                               double length) {
  const double norm = std::abs(length) / (sigma * std::sqrt(2 * std::numbers::pi));
  for (std::size_t k = 0; k < rule.node.size(); ++k) {
    const double t = rule.node[k];
    const double shift = from + length * (t * t) - q;
    const double z = shift / sigma;
    rules_.shift.push_back(shift);
    rules_.weight.push_back(norm * 2 * t * rule.weight[k] * std::exp(-0.5 * z * z));
  }
}

}  // namespace tolvik::analysis
