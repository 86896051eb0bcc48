// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/lanes/matrix.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>

#include "engine/algorithms/first_order_modes.tpp"
#include "engine/algorithms/options.h"
#include "engine/lanes/limits.h"
#include "engine/lanes/ordinary_matter.h"
#include "optics/angles.h"

namespace tolvik::engine::lanes {

namespace {

using Value = std::complex<double>;

Pair PairOf(const Value& z) {
  return {z.real(), z.imag()};
}

Value ValueOf(const Pair& z) {
  return {z.real, z.imag};
}

FirstOrderMatter<Pair> PairsOf(const FirstOrderMatter<Value>& m) {
  return {PairOf(m.n),     PairOf(m.inverse_n), PairOf(m.inverse_n2), PairOf(m.ey_sum),
          PairOf(m.ey_pi), PairOf(m.hx_sum),    PairOf(m.hy_pi),      PairOf(m.hy_difference)};
}

// hx and ex are continuous: σ⁺ stays, and π⁺ above follows from hx, over n.
FirstOrderJoint JointOf(const FirstOrderMatter<Pair>& lower, const FirstOrderMatter<Pair>& upper) {
  const Value inverse_n = ValueOf(upper.inverse_n);
  const Value ratio = ValueOf(lower.n) * inverse_n;
  const Value hx_step = (ValueOf(upper.hx_sum) - ValueOf(lower.hx_sum)) * inverse_n;
  const Value ey_pi = ValueOf(upper.ey_pi), hy_pi = ValueOf(upper.hy_pi);
  return {PairOf(ValueOf(lower.ey_sum) - ValueOf(upper.ey_sum) - ey_pi * hx_step),
          PairOf(-(hy_pi * hx_step)),
          PairOf(0.5 * hx_step),
          PairOf(ValueOf(lower.ey_pi) - ey_pi * ratio),
          PairOf(ValueOf(lower.hy_pi) - hy_pi * ratio),
          PairOf(0.5 * ratio),
          PairOf(-0.5 * inverse_n),
          PairOf(ey_pi * inverse_n),
          PairOf(hy_pi * inverse_n)};
}

}  // namespace

bool MatrixLanes::Prepare(const Profile<double>& profile, double k0,
                          const IntensityOptions<double>& options) {
  if (profile.size < 2 || !IsWithin(k0, kSmallestWavenumber<double>, kLargestWavenumber<double>))
    return false;
  entries_.assign(static_cast<std::size_t>(profile.size), MatrixEntry());
  largest_chi_ = 0.0;
  direction_ = DirectionOf<double>(options.maggamma * kRadiansPerDegree, options.magphi * kRadiansPerDegree);
  for (std::int32_t j = 0; j < profile.size; ++j) {
    if (!SetEntry(profile[j], options, entries_[static_cast<std::size_t>(j)])) return false;
  }
  if (!(largest_chi_ < kLargestContrast<double>)) return false;

  stack_ = {entries_.data(),      profile.size, options.algorithm == kMatrixTwo,
            options.transmission, k0,           2.0 * kLargestGrowth<double>,
            options.polarisation};
  // Rays enter from the ambient and leave there or in the substrate; in between the lengths of fields cancel.
  entries_.back().normalised = true;
  entries_.front().normalised = options.transmission;
  return SetGeometry(profile);
}

bool MatrixLanes::SetEntry(const CLayer<double>& layer, const IntensityOptions<double>& options,
                           MatrixEntry& entry) {
  if (options.algorithm == kMatrixOne && layer.magnetic != 0) {
    return SetTensor(layer, options.tolerance, entry);
  }
  const Value n(1.0 - layer.layer_delta, layer.layer_beta);
  if (!SetScalar(n, (n - 1.0) * (n + 1.0), entry)) return false;
  return options.algorithm != kMatrixTwo || !options.magnetic || SetFirstOrder(layer, entry);
}

// On top of the scalar entry.
bool MatrixLanes::SetFirstOrder(const CLayer<double>& layer, MatrixEntry& entry) {
  const Value strength(-2.0 * layer.layer_ddelta, 2.0 * layer.layer_dbeta);
  if (!(std::abs(strength) < kLargestContrast<double>)) return false;
  if (strength != 0.0) entry.kind = ModeKind::kFirstOrder;
  entry.matter = PairsOf(FirstOrderMatterOf<double>(direction_, ValueOf(entry.index), strength));
  largest_chi_ = std::max(largest_chi_, std::hypot(entry.chi.real, entry.chi.imag) + std::abs(strength));
  return true;
}

bool MatrixLanes::SetScalar(Value n, Value chi, MatrixEntry& entry) {
  if (!IsRefraction(n.real()) || !IsAbsorption(n.imag())) return false;
  entry.kind = ModeKind::kScalar;
  entry.index = PairOf(n);
  entry.inverse = PairOf(1.0 / n);
  entry.chi = PairOf(chi);
  entry.guarded = chi.imag() < kGuardingAbsorption;
  largest_chi_ = std::max(largest_chi_, std::abs(chi));
  return true;
}

bool MatrixLanes::SetTensor(const CLayer<double>& layer, double tolerance, MatrixEntry& entry) {
  const int tensor_class = ClassifyTensor<double>(tolerance, layer.epsilon);
  if (tensor_class == kIsotropic) {
    const Value exx = layer.epsilon[0];
    return IsAbsorption(exx.imag()) && SetScalar(std::sqrt(exx), exx - 1.0, entry);
  }
  entry.kind = tensor_class == kTetragonal ? ModeKind::kTetragonal : ModeKind::kGeneral;
  entry.guarded = true;
  double chi = 0.0;
  for (int i = 0; i < 9; ++i) {
    const bool diagonal = i % 4 == 0;
    const Value element = layer.epsilon[i];
    if (diagonal && !IsAbsorption(element.imag())) return false;
    chi += std::abs(diagonal ? element - 1.0 : element);
    entry.tensor[i] = PairOf(element);
  }
  if (!(chi < kLargestContrast<double>)) return false;
  largest_chi_ = std::max(largest_chi_, chi);
  // Coupling of x with y and z, in both directions, splits the waves of a pair; otherwise they stay one wave.
  const double turn2 =
      std::max(std::abs(layer.epsilon[1] * layer.epsilon[3]), std::abs(layer.epsilon[2] * layer.epsilon[6]));
  return entry.kind == ModeKind::kTetragonal || turn2 > kSmallestTurn * kSmallestTurn;
}

bool MatrixLanes::SetGeometry(const Profile<double>& profile) {
  double roughness = 0.0;
  for (std::int32_t j = 0; j + 1 < profile.size; ++j) {
    const CLayer<double>& layer = profile[j];
    MatrixEntry& entry = entries_[static_cast<std::size_t>(j)];
    const MatrixEntry& above = entries_[static_cast<std::size_t>(j + 1)];
    entry.sigma = layer.layer_sigma;
    const double sigma_k0 = entry.sigma * stack_.k0;
    if (!IsWithin(sigma_k0 * sigma_k0, 0.0, kMaxPhase<double> / 4.0)) return false;
    roughness += 2.0 * sigma_k0 * sigma_k0;
    if (entry.kind == ModeKind::kScalar && above.kind == ModeKind::kScalar) {
      entry.along_index = PairOf(0.5 * ValueOf(above.index) * ValueOf(entry.inverse));
      entry.across_index = PairOf(0.5 * ValueOf(entry.index) * ValueOf(above.inverse));
    }
    if (stack_.first_order) entry.joint = JointOf(entry.matter, above.matter);
    if (j == 0) continue;
    entry.d = layer.layer_d;
    if (!IsWithin(stack_.k0 * entry.d, 0.0, kMaxPhase<double>)) return false;
    const bool writes_propagation = entry.kind == ModeKind::kGeneral || entry.kind == ModeKind::kTetragonal;
    if (entry.d == 0.0 && !writes_propagation) return false;
  }
  return roughness * largest_chi_ < kLargestGrowth<double>;
}

void MatrixLanes::Calculate(const Kernels& kernels, std::span<const double> s, double* first,
                            double* second) const {
  kernels.matrix(stack_, s.data(), static_cast<std::int32_t>(s.size()), first, second);
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (s[i] >= kSmallestSineOfMatrix<double>) continue;
    first[i] = std::numeric_limits<double>::quiet_NaN();
    if (second != nullptr) second[i] = first[i];
  }
}

}  // namespace tolvik::engine::lanes
