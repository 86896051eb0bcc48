// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve.tpp"

namespace tolvik::engine {

template std::int32_t CalcReflectivityCurve<float>(CSolution&, CState&);

}  // namespace tolvik::engine
