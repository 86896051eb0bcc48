// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve.tpp"
#include "engine/dichroism.tpp"
#include "engine/energy_run.tpp"
#include "engine/escan.tpp"

namespace tolvik::engine {

template std::int32_t CalcReflectivityCurve<float>(CSolution&, CState&);
template std::int32_t CalcEScanCurve<float>(CSolution&, CState&);
template void CalcEnergyRun<float>(CSolution&, CState&);
template std::int32_t CalcAsymmetryCurve<float>(CSolution&, CState&);
template std::int32_t CalcDicEScanCurve<float>(CSolution&, CState&);

}  // namespace tolvik::engine
