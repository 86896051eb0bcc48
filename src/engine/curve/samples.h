// SPDX-License-Identifier: GPL-2.0-or-later
// The samples of some consecutive points of a curve: gathered first, calculated as one batch, summed last.
//
// The sums are exactly those of a loop from sample to sample: a sample out of reach ends the gathering, an
// exception ends the batch, and in both cases the points before are complete, the present point has the
// partial sum of its samples, and later points are not calculated.
#pragma once

#include <algorithm>
#include <cstdint>
#include <exception>
#include <span>
#include <vector>

#include "engine/curve/grazing.h"
#include "engine/curve/intensity.h"
#include "engine/curve/point_rules.h"

namespace tolvik::engine {

/// Points that are gathered at once: enough to feed lanes, few enough to stay in the cache.
inline constexpr std::int32_t kPointsPerBlock = 128;

template <class T>
class SampleBlock {
 public:
  /// both_rays: also calculate the second ray.
  explicit SampleBlock(bool both_rays) : both_rays_(both_rays) {}

  /// Begins anew, for that many samples of all points at most.
  void Clear(std::int32_t samples) {
    count_ = 0;
    ends_.clear();
    const auto most = static_cast<std::size_t>(samples);
    if (sines_.size() >= most) return;
    for (std::vector<T>* each : {&sines_, &weights_, &first_}) each->resize(most);
    if (both_rays_) second_.resize(most);
  }

  /// Opens the next point. Its samples are then added; a point without samples sums to 0.
  void BeginPoint() { ends_.push_back(count_); }

  /// Adds a sample of the open point at s = sin θ. One without an angle adds nothing.
  void Add(const T& s, const T& weight) {
    if (!HasAngle(s)) return;
    const auto at = static_cast<std::size_t>(count_);
    sines_[at] = s;
    weights_[at] = weight;
    ends_.back() = ++count_;
  }

  /// Opens a point at q0 and adds its samples in the order of the rule. Returns false at the first s for
  /// which stops(s) is true, with the point open and its samples so far.
  template <class Value, class Stops>
  bool GatherPoint(const T& q0, const PointRule<Value>& rule, const T& k0, Stops stops) {
    BeginPoint();
    T* s = sines_.data() + count_;
    T* weight = weights_.data() + count_;
    bool ordinary = true;
    for (int j = 0; j < rule.samples; ++j) {
      s[j] = GrazingSine(T(rule.shift[j]) + q0, k0);
      weight[j] = T(rule.weight[j]);
      ordinary &= HasAngle(s[j]) && !stops(s[j]);
    }
    if (ordinary) {
      ends_.back() = count_ += rule.samples;
      return true;
    }
    for (int j = 0; j < rule.samples; ++j) {  // kept samples move to the front
      if (stops(s[j])) return false;
      Add(s[j], T(rule.weight[j]));
    }
    return true;
  }

  /// Calculates all samples. Returns the exception that ended the batch early, or null.
  std::exception_ptr Calculate(Profile<T>& profile, const T& k0, const IntensityOptions<T>& options) {
    const std::span<const T> s(sines_.data(), static_cast<std::size_t>(count_));
    const BatchOutcome outcome = CalcIntensities<T>(
        {profile, k0, options, s, first_.data(), both_rays_ ? second_.data() : nullptr}, work_);
    done_ = outcome.done;
    return outcome.error;
  }

  /// Calls take(point, sum1, sum2, complete) for each calculated point in order; for the point in which the
  /// batch ended, with the partial sums and complete false. sum2 is 0 without the second ray.
  template <class Take>
  void Sum(Take take) const {
    std::int32_t index = 0;
    for (std::int32_t point = 0; point < static_cast<std::int32_t>(ends_.size()); ++point) {
      const std::int32_t end = ends_[static_cast<std::size_t>(point)];
      T sum1(0.0), sum2(0.0);
      for (; index < end && index < done_; ++index) {
        const auto k = static_cast<std::size_t>(index);
        sum1 += weights_[k] * first_[k];
        if (both_rays_) sum2 += weights_[k] * second_[k];
      }
      take(point, sum1, sum2, index == end);
      if (index < end) return;
    }
  }

 private:
  bool both_rays_;
  std::int32_t count_ = 0;          // samples gathered
  std::int32_t done_ = 0;           // of them calculated
  std::vector<T> sines_, weights_;  // at least count_ long
  std::vector<std::int32_t> ends_;  // of each point, the end of its samples
  std::vector<T> first_, second_;
  IntensityWork<T> work_;
};

}  // namespace tolvik::engine
