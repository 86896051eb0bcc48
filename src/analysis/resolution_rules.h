// SPDX-License-Identifier: GPL-2.0-or-later
// The nodes of a resolution that is a sigma for each point.
//
// Away from critical edges the Gaussian of a point is integrated by Gauss-Hermite nodes. At an edge the
// reflectivity varies like a square root, for which such rules are inaccurate; there the Gaussian is cut at
// the edges, and each piece is integrated by Gauss-Legendre nodes in t with |q - edge| ~ t², in which the
// curve is smooth. The cuts follow the edges of the model.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "analysis/gauss_nodes.h"
#include "engine/curve/point_rules.h"
#include "tolvik/state.h"

namespace tolvik::analysis {

/// The end of the Gaussian, in sigma: 4e-8 of it is beyond.
inline constexpr double kSigmaReach = 5.5;

/// The quadrature of one point.
struct PointPlan {
  std::int32_t nodes = 1;  ///< of Gauss-Hermite, or of Gauss-Legendre on each piece
  bool pieces = false;
};

/// Layers with critical edges that matter for the curve: the substrate and the thicker slabs, of equal ones
/// the topmost. Empty in element mode.
std::vector<std::int32_t> LayersWithEdges(const CState& state);

/// Their critical edges 2 k0 sin θc, Å⁻¹, ascending.
std::vector<double> CriticalEdges(const CState& state, std::span<const std::int32_t> layers);

/// Nodes of all points of a measurement.
class ResolutionRules {
 public:
  /// dq: sigma of each point, Å⁻¹; plan: as many.
  ResolutionRules(std::span<const double> dq, std::span<const PointPlan> plan);

  /// The rules at the points q for edges as CriticalEdges gives them; valid until the next call.
  const engine::PointRules& Update(std::span<const double> q, std::span<const double> edges);

  /// Whether the rules depend on q and the edges.
  bool FollowEdges() const { return has_pieces_; }

 private:
  const QuadratureRule& Hermite(std::int32_t n);
  const QuadratureRule& Legendre(std::int32_t n);
  void Build(std::span<const double> q, std::span<const double> edges);
  void AddHermite(double sigma, std::int32_t nodes);
  void AddPieces(double q, double sigma, std::int32_t nodes, std::span<const double> edges);
  void AddPiece(double q, double sigma, const QuadratureRule& rule, double from, double length);

  std::vector<double> dq_;
  std::vector<PointPlan> plan_;
  bool has_pieces_ = false;
  std::vector<double> q_, edges_;  // of the present rules
  engine::PointRules rules_;
  std::map<std::int32_t, QuadratureRule> hermite_, legendre_;
};

}  // namespace tolvik::analysis
