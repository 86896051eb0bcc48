// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/lanes/parratt.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "engine/algorithms/modes.tpp"
#include "engine/lanes/limits.h"
#include "engine/lanes/ordinary_matter.h"
#include "engine/lanes/parratt_entry.h"
#include "engine/lanes/parratt_joint.h"
#include "engine/lanes/parratt_repeats.h"

namespace tolvik::engine::lanes {

template <class T>
bool ParrattLanes<T>::Prepare(const Profile<T>& profile, T k0, bool magnetic) {
  entries_.assign(static_cast<std::size_t>(std::max(profile.size, 0)), ParrattEntry<T>());
  for (std::int32_t j = 0; j < profile.size; ++j) {
    ParrattEntry<T>& entry = entries_[static_cast<std::size_t>(j)];
    if (!SetIndex(profile[j], entry)) return false;
    if (magnetic && !SetShift(profile[j], entry)) return false;
  }
  stack_.largest_growth = std::numeric_limits<T>::infinity();
  stack_.smallest_sine = kSmallestSine<T>;
  if (!PrepareEntries(profile, k0)) return false;
  ParrattEntry<T>& ambient = entries_.back();
  if (!MayVanishOnTop(entries_[entries_.size() - 2], ambient)) ambient.guarded = false;
  return true;
}

template <class T>
bool ParrattLanes<T>::PrepareMatrix(const Profile<T>& profile, T k0, bool tensors, T tolerance) {
  entries_.assign(static_cast<std::size_t>(std::max(profile.size, 0)), ParrattEntry<T>());
  for (std::int32_t j = 0; j < profile.size; ++j) {
    const CLayer<T>& layer = profile[j];
    ParrattEntry<T>& entry = entries_[static_cast<std::size_t>(j)];
    if (tensors && layer.magnetic != 0) {
      if (ClassifyTensor<T>(tolerance, layer.epsilon) != kIsotropic) return false;
      if (!SetTensorIndex(layer.epsilon[0], entry)) return false;
    } else if (!SetIndex(layer, entry)) {
      return false;
    }
    if (j > 0 && j + 1 < profile.size && layer.layer_d == T(0.0)) return false;
  }
  if (!PrepareEntries(profile, k0)) return false;
  // Neither the growing waves nor the roughness factors of a whole stack may come near the limits of T.
  const T range = kLargestGrowth<T>;
  T roughness(0.0);
  for (const ParrattEntry<T>& entry : entries_) roughness += entry.roughness;
  stack_.largest_growth = T(2.0) * range;
  stack_.smallest_sine = kSmallestSineOfMatrix<T>;
  return stack_.tame && near_vacuum_ && roughness * largest_chi_ < range;
}

template <class T>
bool ParrattLanes<T>::PrepareEntries(const Profile<T>& profile, T k0) {
  const std::int32_t n = profile.size;
  if (n < 2 || !IsWithin(k0, kSmallestWavenumber<T>, kLargestWavenumber<T>)) return false;
  T largest_roughness(0.0), contrast_below(0.0);
  largest_chi_ = T(0.0);
  stack_.shifted = false;
  for (std::int32_t j = 0; j < n; ++j) {
    const CLayer<T>& layer = profile[j];
    ParrattEntry<T>& entry = entries_[static_cast<std::size_t>(j)];
    const T contrast = LargestContrast(entry);
    largest_chi_ = std::max(largest_chi_, contrast);
    entry.guarded = MayVanish(entry);
    stack_.shifted |= entry.shifted;
    if (j > 0) {
      ParrattEntry<T>& below = entries_[static_cast<std::size_t>(j - 1)];
      below.short_phase = below.roughness * (contrast_below + contrast) < T(kShortRoughnessPhase);
    }
    contrast_below = contrast;
    if (j + 1 == n) continue;
    const T sigma_k0 = layer.layer_sigma * k0;
    entry.rough = layer.layer_sigma != T(0.0);
    entry.roughness = T(2.0) * sigma_k0 * sigma_k0;
    entry.phase = j > 0 ? T(2.0) * k0 * layer.layer_d : T(0.0);
    if (!IsWithin(entry.roughness, T(0.0), kLargestRoughness<T>) ||
        !IsWithin(entry.phase, T(0.0), kMaxPhase<T>))
      return false;
    largest_roughness = std::max(largest_roughness, entry.roughness);
  }
  // |w|² <= 1 + |n² - 1|, and the real part of a product of two w is at least -|n² - 1|.
  stack_.tame = largest_roughness * (T(1.0) + largest_chi_) < kMaxPhase<T> &&
                largest_roughness * largest_chi_ < kLargestExponent<T>;
  near_vacuum_ = largest_chi_ < kLargestContrast<T>;
  stack_.entry = entries_.data();
  stack_.entries = n;
  joints_.resize(entries_.size() - 1);
  for (std::size_t j = 0; j < joints_.size(); ++j) joints_[j] = JointOf(entries_[j], entries_[j + 1]);
  stack_.joint = joints_.data();
  stack_.shared = NumberEqualEntries(std::span(entries_));
  return true;
}

template <class T>
void ParrattLanes<T>::SetWanted(std::span<const ParrattRay<T>> rays) {
  // A polarisation without a share adds 0 unless it is NaN, and no coefficient of ordinary matter near vacuum
  // is infinite by itself: both waves of pi are in the same quarter of the plane or nearly so.
  for (std::int32_t sense = 0; sense < stack_.senses; ++sense) {
    bool& sigma = stack_.wants_sigma[sense];
    bool& pi = stack_.wants_pi[sense];
    sigma = pi = !near_vacuum_;
    for (std::size_t r = 0; r < rays.size(); ++r) {
      if (stack_.senses == 2 && r != static_cast<std::size_t>(sense)) continue;
      sigma |= rays[r].sigma != T(0.0);
      pi |= rays[r].pi != T(0.0);
    }
    // Where neither has a share, one of them is still needed to know whether the angle has an intensity.
    if (!sigma && !pi) sigma = true;
  }
}

template <class T>
bool ParrattLanes<T>::Calculate(const Kernels& kernels, std::span<const T> s,
                                std::span<const ParrattRay<T>> rays) {
  stack_.senses = stack_.shifted && rays.size() == 2 ? 2 : 1;
  SetWanted(rays);
  const auto count = static_cast<std::int32_t>(s.size()), ray_count = static_cast<std::int32_t>(rays.size());
  if constexpr (std::is_same_v<T, float>) {
    return kernels.parratt_float(stack_, s.data(), count, rays.data(), ray_count);
  } else {
    return kernels.parratt_double(stack_, s.data(), count, rays.data(), ray_count);
  }
}

template <class T>
ParrattStack<T> ParrattLanes<T>::StackFor(const ParrattRay<T>& ray, int sense) {
  stack_.senses = 1;
  SetWanted({&ray, 1});
  ParrattStack<T> stack = stack_;
  stack.wants_sigma[sense] = stack_.wants_sigma[0];
  stack.wants_pi[sense] = stack_.wants_pi[0];
  return stack;
}

template class ParrattLanes<float>;
template class ParrattLanes<double>;

}  // namespace tolvik::engine::lanes
