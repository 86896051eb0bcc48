// SPDX-License-Identifier: GPL-2.0-or-later
// Exact derivatives of a curve by parameters, for algorithm 0 in double.
//
// A point of a curve is a weighted sum of intensities at its nodes, the angles of a resolution or a single
// one. All nodes of all points are in one array.
//
// Where there is no derivative:
//  - At a critical edge without absorption (a normal wavevector of 0 inside matter) dR/dn² diverges as one
//    over the wavevector. A derivative that is not finite comes back as NaN, in each point with such a node
//    and each parameter that moves the index there. Values stay finite.
//  - R is even in sigma: dR/dsigma = 0 exactly at sigma = 0. A fit that starts there should move
//    ProfileField::kRoughnessSquared, whose derivative is finite; it is (dR/dsigma) / (2 sigma) elsewhere.
//  - A slab of thickness 0 has derivatives by all its fields. That by its index is 0 in exact arithmetic but
//    for its roughness; here it is the difference of nearly equal terms and carries their rounding, about
//    1e-11 of the largest derivative of the angle.
//  - A derivative by a thickness or beta at 0 belongs to the formula, which continues below 0.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "engine/curve/intensity.h"
#include "engine/curve/profile_chain.h"
#include "engine/lanes/parratt_gradient.h"

namespace tolvik::engine {

/// A parameter that moves the nodes instead of the profile: an angular offset (d sin θ = cos θ), an offset in
/// q (1 / (2 k0)), a width of the resolution. Null pointers stand for 0.
struct NodeTerm {
  std::int32_t parameter = 0;
  const double* sine = nullptr;    ///< d sin θ / d parameter of each node
  const double* weight = nullptr;  ///< d weight / d parameter of each node
};

/// The nodes of all points in the order of the points.
/// A node whose sine is negative or NaN has no angle and adds nothing, as in a curve. A node with a sine of 1
/// or more is out of reach; value and derivatives of its point are NaN.
struct CurveNodes {
  std::span<const double> sine;       ///< s = sin θ = q / (2 k0)
  std::span<const double> weight;     ///< as many
  std::span<const std::int32_t> end;  ///< of each point, one past its last node; not decreasing
  std::span<const NodeTerm> terms;    ///< parameters that move nodes; mostly none
};

/// The rays to calculate. The second one has the reversed magnetic shift.
enum class Rays : std::uint8_t { kFirst, kSecond, kBoth };

inline bool HasFirst(Rays rays) {
  return rays != Rays::kSecond;
}
inline bool HasSecond(Rays rays) {
  return rays != Rays::kFirst;
}

/// The input of a differentiation.
struct GradientTask {
  Profile<double>& profile;  ///< only its scalarindex changes
  double k0;                 ///< 2π / wavelength, Å⁻¹
  const IntensityOptions<double>& options;
  const CurveNodes& nodes;
  const ProfileChain& chain;
  Rays rays = Rays::kFirst;
};

/// One ray of a curve.
struct RayJacobian {
  std::vector<double> value;     ///< [point], the sum over weight times intensity
  std::vector<double> jacobian;  ///< [point][parameter], row major: d value / d parameter
};

/// Both rays; one that is not requested is empty.
struct CurveJacobian {
  RayJacobian first, second;
};

/// Some consecutive points, for the seeds of a gradient: d loss / d value, to be written.
struct SeedBlock {
  std::int32_t begin;             ///< number of the first point
  std::span<const double> first;  ///< values of the points; empty for a ray that is not requested
  std::span<const double> second;
  std::span<double> first_seed;  ///< as many as values, 0 on entry
  std::span<double> second_seed;
};
using SeedFunction = std::function<void(const SeedBlock&)>;

/// Values of all points and the gradient of a loss.
struct CurveGradient {
  std::vector<double> first, second;  ///< [point]; empty for a ray that is not requested
  std::vector<double> gradient;       ///< [parameter]
};

/// Work space, kept over many calls.
struct GradientWork {
  lanes::ParrattGradient lanes;
  IntensityWork<double> intensity;
  std::vector<double> rows;        // of duals
  std::vector<std::int32_t> lost;  // nodes that lanes left
};

/// Whether the functions below serve these options: algorithm 0.
bool HasGradient(const IntensityOptions<double>& options);

/// Values and derivatives of all points. Values are those of CalcIntensities but for rounding, summed over
/// the nodes.
/// Throws std::invalid_argument where HasGradient is false, or for a term outside the profile or parameters;
/// std::bad_alloc.
void CalcJacobian(const GradientTask& task, CurveJacobian& result, GradientWork& work);

/// Values, and the gradient sum_i seed_i d value_i / d parameter over the points of all rays. seed is called
/// for blocks of points, in order and each point once, as soon as their values are known; a loss that needs
/// all values at once (with a fitted scale) uses CalcJacobian instead. A seed of 0 leaves its point out, NaN
/// derivatives included.
/// Throws as CalcJacobian does, and the exceptions of seed.
void CalcGradient(const GradientTask& task, const SeedFunction& seed, CurveGradient& result,
                  GradientWork& work);

}  // namespace tolvik::engine
