// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/number/cnumber.h"
#include "engine/number/complex.h"
#include "engine/precision/instances.h"

namespace tolvik::engine {

TOLVIK_INSTANCES(CNumber);

}  // namespace tolvik::engine
