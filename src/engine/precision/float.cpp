// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/precision/instances.h"

namespace tolvik::engine {

TOLVIK_INSTANCES(float);

}  // namespace tolvik::engine
