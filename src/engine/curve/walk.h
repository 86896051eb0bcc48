// SPDX-License-Identifier: GPL-2.0-or-later
// The walk over the points of a curve, shared by curves, scans and dichroism. It calculates blocks of
// samples, with the outcome of a walk from sample to sample.
#pragma once

#include <algorithm>
#include <array>
#include <exception>

#include "engine/curve/samples.h"
#include "tolvik/array.h"

namespace tolvik::engine {

/// The end of a walk.
struct WalkEnd {
  bool out_of_reach = false;  ///< at a sample that the caller's rule refuses
  std::exception_ptr error;   ///< at an exception of a sample; then out_of_reach is false

  bool Complete() const { return !out_of_reach && !error; }
};

/// The constants of a walk.
template <class T>
struct WalkSetting {
  Profile<T>& profile;
  const T& k0;
  const IntensityOptions<T>& options;
  SampleBlock<T>& block;
};

/// The points begin .. end - 1 of a grid.
struct GridPart {
  const CArray<double>& grid;
  std::int32_t begin, end;
};

/// Calculates part of a grid with the samples of the rules of its points: UniformRules or PointRules.
/// The walk ends at an s = sin θ with refuse(s) true. store(i, sum1, sum2, whole) gets both rays of each
/// point in order; of the point in which the walk ends, the partial sums with whole false.
template <Number T, class Rules, class Refuse, class Store>
WalkEnd WalkSamples(const WalkSetting<T>& setting, const GridPart& part, const Rules& rules, Refuse refuse,
                    Store store) {
  const std::int32_t end = part.end;
  WalkEnd result;
  std::int32_t begin = part.begin;
  while (begin < end && result.Complete()) {
    const std::int32_t block_end = begin + std::min(end - begin, kPointsPerBlock);
    setting.block.Clear(rules.Count(begin, block_end));
    std::int32_t i = begin;
    for (; i < block_end && !result.out_of_reach; ++i) {
      result.out_of_reach = !setting.block.GatherPoint(T(part.grid[i]), rules.At(i), setting.k0, refuse);
    }
    const std::int32_t refused_point = result.out_of_reach ? i - 1 : end;
    result.error = setting.block.Calculate(setting.profile, setting.k0, setting.options);
    setting.block.Sum([&](std::int32_t point, const T& sum1, const T& sum2, bool complete) {
      store(begin + point, sum1, sum2, complete && begin + point != refused_point);
    });
    begin = block_end;
  }
  if (result.error) result.out_of_reach = false;  // the exception came first
  return result;
}

/// Calculates all points of a grid once, without resolution. A point without an angle is skipped.
/// store(i, value1, value2) gets both rays of each other point in order.
template <Number T, class Refuse, class Store>
WalkEnd WalkOnce(const WalkSetting<T>& setting, const CArray<double>& grid, Refuse refuse, Store store) {
  WalkEnd result;
  std::array<std::int32_t, kPointsPerBlock> points;
  for (std::int32_t i = 0; i < grid.size && result.Complete();) {
    setting.block.Clear(std::min(grid.size - i, kPointsPerBlock));
    std::size_t count = 0;
    for (; i < grid.size && count < points.size(); ++i) {
      const T s = GrazingSine(T(grid[i]), setting.k0);
      if (refuse(s)) {
        result.out_of_reach = true;
        break;
      }
      if (!HasAngle(s)) continue;
      points[count++] = i;
      setting.block.BeginPoint();
      setting.block.Add(s, T(1.0));
    }
    result.error = setting.block.Calculate(setting.profile, setting.k0, setting.options);
    setting.block.Sum([&](std::int32_t point, const T& value1, const T& value2, bool complete) {
      if (complete) store(points[static_cast<std::size_t>(point)], value1, value2);
    });
  }
  if (result.error) result.out_of_reach = false;
  return result;
}

/// A curve that already has the right size keeps its old values.
inline void SizeCurve(CArray<double>& curve, std::int32_t points, double value) {
  if (curve.size != points) curve.Assign(points, value);
}

}  // namespace tolvik::engine
