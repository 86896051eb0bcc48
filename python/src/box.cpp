// SPDX-License-Identifier: GPL-2.0-or-later
#include "box.h"

#include <cstring>
#include <utility>

#include "optics/tensor.h"
#include "raise.h"

namespace tolvik::python {
namespace {

LayerStamp StampOf(const CLayer& layer) {
  return {layer.layer_d, layer.layer_delta, layer.layer_beta, layer.layer_ddelta, layer.layer_dbeta};
}

// By their bits, so that a NaN is no change.
bool Same(const double& a, const double& b, std::size_t count = 1) {
  return std::memcmp(&a, &b, count * sizeof(double)) == 0;
}

}  // namespace

StateBox::StateBox() {
  BuildAllEpsilonTensors(state);
  Settle();
}

StateBox::StateBox(CState given) : state(std::move(given)) {
  Settle();
}

void StateBox::Settle() {
  stamps_.clear();
  for (const CLayer& layer : state.layers) stamps_.push_back(StampOf(layer));
  gamma_ = state.maggamma;
  phi_ = state.magphi;
  mode_ = state.magnetizationmode;
}

void StateBox::Refresh() {
  const bool turned =
      !Same(gamma_, state.maggamma) || !Same(phi_, state.magphi) || mode_ != state.magnetizationmode;
  bool moved = false, rebuilt = turned;
  for (std::int32_t i = 0; i < state.layers.size; ++i) {
    const LayerStamp& then = stamps_[static_cast<std::size_t>(i)];
    const LayerStamp now = StampOf(state.layers[i]);
    moved |= !Same(then.d, now.d);
    if (!turned && Same(then.delta, now.delta, 4)) continue;
    BuildEpsilonTensor(state.layers[i], state.maggamma, state.magphi, state.magnetizationmode);
    rebuilt = true;
  }
  if (moved) StackHeights();
  if (moved || rebuilt) Settle();
}

void StateBox::Restack(std::int32_t layer, Block block) {
  if (block != Block::kLayers) return;
  if (layer >= 0) {
    BuildEpsilonTensor(state.layers[layer], state.maggamma, state.magphi, state.magnetizationmode);
  }
  StackHeights();
  Settle();
}

void StateBox::StackHeights() {
  for (std::int32_t i = 1; i < state.layers.size; ++i) {
    state.layers[i].layer_z = state.layers[i - 1].layer_z + state.layers[i].layer_d;
  }
}

void StateBox::RequireMovable(Block block) const {
  const auto index = static_cast<std::size_t>(block);
  if (views[index] != 0) Raise("view_alive", kBlockNames[index]);
}

void StateBox::RequireAllMovable() const {
  for (std::size_t i = 0; i < views.size(); ++i) RequireMovable(static_cast<Block>(i));
}

}  // namespace tolvik::python
