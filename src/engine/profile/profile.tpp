// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "engine/profile/element_profile.tpp"
#include "engine/profile/heights.h"
#include "engine/profile/profile.h"
#include "engine/profile/segmentation.tpp"

namespace tolvik::engine {

namespace profile_detail {

template <Number T>
void ConvertLayer(const tolvik::CLayer& layer, CLayer<T>& entry) {
  entry.layer_z = T(layer.layer_z);
  entry.layer_d = T(layer.layer_d);
  entry.layer_delta = T(layer.layer_delta);
  entry.layer_beta = T(layer.layer_beta);
  entry.layer_ddelta = T(layer.layer_ddelta);
  entry.layer_dbeta = T(layer.layer_dbeta);
  entry.magnetic = layer.magnetic;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      entry.Epsilon(row, column) = FromDouble<T>(layer.Epsilon(row, column));
    }
  }
  entry.layer_sigma = T(layer.layer_sigma);
  entry.scalarindex = Cplx<T>(T(1.0));
}

}  // namespace profile_detail

template <Number T>
void PrepareProfile(const CState& state, Profile<T>& profile) {
  if (state.mode == Mode::kElement) return CalcElementProfile(state, profile);
  if (profile.size != state.layers.size) profile.Assign(state.layers.size, CLayer<T>());
  for (std::int32_t i = 0; i < profile.size; ++i) {
    profile_detail::ConvertLayer<T>(state.layers[i], profile[i]);
  }
  StackHeights(profile);
  SegmentProfile(
      profile, state.gaussfunctions, state.layersegmentationmode, state.magnetizationmode,
      {state.minlayerthickness, state.maxlayerthickness, state.gradientscale, state.segmentationmodel});
}

}  // namespace tolvik::engine
