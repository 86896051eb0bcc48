// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/cnumber.h"
#include "engine/complex.h"
#include "engine/precision/instances.h"

namespace tolvik::engine {

TOLVIK_INSTANCES(CNumber);

}  // namespace tolvik::engine
