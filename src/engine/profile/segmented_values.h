// SPDX-License-Identifier: GPL-2.0-or-later
// Optical constants at a height of a stack with error-function interfaces.
//
// The error function is TableErf, e(x) = erf(x/√2), and a roughness of exactly 0 counts as 1e-10 Å.
#pragma once

#include <cstdint>

#include "engine/profile/layer.h"
#include "tolvik/array.h"
#include "tolvik/choices.h"

namespace tolvik::engine {

/// Fraction of entry index at height z, Å: the product of its lower and its upper interface; 0 <= index <
/// size. The lowest entry reaches down and the highest up to 1e10 Å.
template <class T>
T LayerWeight(const Profile<T>& profile, std::int32_t index, const T& z);

/// Evaluates a stack at many heights. The profile must outlive it; nothing is allocated after construction.
///
/// By the SegmentationModel, any other number being kSteps:
///   kProductOfInterfaces    weights of the entries: products over all interfaces, of the share of the side
///   of
///                           the entry
///   kLayerWeights           weights of the entries by LayerWeight
///   kSteps                  the ambient plus an error-function step at each interface, not normalised
///
/// The weights are divided by their sum; where that is exactly 0 all constants are 0.
template <class T>
class ProfileSampler {
 public:
  /// layer_delta, layer_beta, layer_ddelta, layer_dbeta.
  using Constants = T[4];

  ProfileSampler(const Profile<T>& profile, std::int32_t model);

  void CalcConstants(const T& z, Constants& constants);

  /// Sets height, constants and tensor of entry, and its roughness to 0; its other fields stay.
  void Fill(const T& z, CLayer<T>& entry);

 private:
  static constexpr int kFields = 4 + 2 * 9;

  struct Term {
    T weight;
    std::int32_t row;
  };

  void CalcTerms(const T& z);
  void CalcStepTerms(const T& z);
  void CalcProductWeights(const T& z);
  void CalcLayerWeights(const T& z);
  void AddTerm(const T& weight, std::int32_t row);
  void Sum(int fields, T* values) const;

  const Profile<T>& profile_;
  std::int32_t model_;
  CArray<T> rows_;      // kFields numbers of each entry, or half the step at each interface
  CArray<Term> near_;   // e((z - z_j)/σ_j) of the interfaces near z
  CArray<Term> terms_;  // the first count_ are used at the present height
  std::int32_t count_ = 0;
  bool skip_zeros_;  // no row has infinity or NaN, which a weight of 0 would not cancel
  T total_{};        // sum of the weights
};

/// ProfileSampler for a single height.
template <class T>
void CalcSegmentedValues(const Profile<T>& profile, std::int32_t model, const T& z, CLayer<T>& entry);

}  // namespace tolvik::engine
