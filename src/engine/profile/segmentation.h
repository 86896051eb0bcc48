// SPDX-License-Identifier: GPL-2.0-or-later
// A stack of rough layers as many thin slices without roughness.
#pragma once

#include <cstdint>

#include "engine/profile/layer.h"
#include "tolvik/layer.h"

namespace tolvik::engine {

/// Bounds of one slice, Å, the scale of the rule that makes slices thin where the profile is steep, and the
/// segmentationmodel that gives their values (ProfileSampler).
struct SliceRule {
  double minlayerthickness = 0;  ///< wins where the bounds cross
  double maxlayerthickness = 0;
  double gradientscale = 0;
  std::int32_t model = 0;
};

/// Replaces the profile by slices of the stack and applies the gauss functions to them, unless
/// layersegmentationmode is kRoughInterfaces. The gauss functions are read with magnetizationmode
/// kGaussFunctions only. A stack whose range ends below its begin gives an empty profile; a single entry does
/// not change. Never returns when the slices have no thickness: with minlayerthickness 0 and gradientscale or
/// maxlayerthickness 0. Throws std::bad_alloc when the slices need more than 2 GiB.
template <class T>
void SegmentProfile(Profile<T>& profile, const CArray<CGaussFunction>& gaussfunctions,
                    std::int32_t layersegmentationmode, std::int32_t magnetizationmode,
                    const SliceRule& rule);

/// Appends to slices those of a profile of two entries or more, heights and values. The ambient of profile is
/// moved away: its layer_z becomes 1e100 and its layer_sigma 1e-10.
template <class T>
void CalcSliceGrid(Profile<T>& profile, std::int32_t model, const T& min, const T& max, const T& gradient,
                   Profile<T>& slices);

/// Throws std::bad_alloc if a profile of so many entries needs more than 2 GiB.
template <class T>
void CheckProfileSize(double entries);

}  // namespace tolvik::engine
