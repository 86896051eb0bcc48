// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/cnumber.h"
#include "engine/complex.h"
#include "engine/curve.tpp"

namespace tolvik::engine {

template std::int32_t CalcReflectivityCurve<CNumber>(CSolution&, CState&);

}  // namespace tolvik::engine
