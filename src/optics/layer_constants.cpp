// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/layer_constants.h"

namespace tolvik {

bool SetLayerConstantsForEnergy(CState& state) {
  // No tables are read yet, so no material is ever found.
  return state.mode == 1 ? state.elementlayers.IsEmpty() : state.layers.IsEmpty();
}

}  // namespace tolvik
