// SPDX-License-Identifier: GPL-2.0-or-later
// The samples of some consecutive points of a curve: gathered first, calculated as one batch, summed last.
//
// The sums are exactly those of a walk from sample to sample: a sample out of reach ends the gathering, an
// exception ends the batch, and in both cases the points before stand, the present point holds the partial
// sum of its samples, and nothing is known of later points.
#pragma once

#include <cstdint>
#include <exception>
#include <vector>

#include "engine/grazing.h"
#include "engine/intensity.h"
#include "engine/resolution.h"

namespace tolvik::engine {

/// Points that are gathered at once: enough to feed lanes, few enough to stay in the cache.
inline constexpr std::int32_t kPointsPerBlock = 128;

template <class T>
class SampleBlock {
 public:
  /// both_rays: also calculate the second ray.
  explicit SampleBlock(bool both_rays) : both_rays_(both_rays) {}

  void Clear() {
    sines_.clear();
    weights_.clear();
    ends_.clear();
  }

  /// Opens the next point. Its samples are then added; a point without samples sums to 0.
  void BeginPoint() { ends_.push_back(Count()); }

  /// Adds a sample of the open point at s = sin θ. One without an angle adds nothing.
  void Add(const T& s, const T& weight) {
    if (!HasAngle(s)) return;
    sines_.push_back(s);
    weights_.push_back(weight);
    ++ends_.back();
  }

  /// Opens a point at q0 and adds its samples in the order of the rule. stops(s) tells which s ends the
  /// curve: then false, the point open with the samples so far.
  template <class Stops>
  bool GatherPoint(const T& q0, const ResolutionRule<T>& rule, const T& k0, Stops stops) {
    BeginPoint();
    for (int j = 0; j < rule.samples; ++j) {
      const T s = GrazingSine(rule.shift[j] + q0, k0);
      if (stops(s)) return false;
      Add(s, rule.weight[j]);
    }
    return true;
  }

  /// Calculates all samples. Returns what ended the batch early, or null.
  std::exception_ptr Calculate(Profile<T>& profile, const T& k0, const IntensityOptions<T>& options) {
    first_.resize(sines_.size());
    second_.resize(both_rays_ ? sines_.size() : 0);
    const BatchOutcome outcome =
        CalcIntensities<T>(profile, k0, options, Count(), sines_.data(), first_.data(),
                           both_rays_ ? second_.data() : nullptr, work_);
    done_ = outcome.done;
    return outcome.error;
  }

  /// Calls take(point, sum1, sum2, complete) for each point in order, as far as the batch came; of the point
  /// in which it ended, the partial sums with complete false. sum2 is 0 without the second ray.
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
  std::int32_t Count() const { return static_cast<std::int32_t>(sines_.size()); }

  bool both_rays_;
  std::int32_t done_ = 0;
  std::vector<T> sines_, weights_;
  std::vector<std::int32_t> ends_;  // of each point, the end of its samples
  std::vector<T> first_, second_;
  IntensityWork<T> work_;
};

}  // namespace tolvik::engine
