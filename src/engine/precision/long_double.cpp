// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve.tpp"
#include "engine/dichroism.tpp"
#include "engine/energy_run.tpp"
#include "engine/escan.tpp"

namespace tolvik::engine {

template std::int32_t CalcReflectivityCurve<long double>(CSolution&, CState&);
template std::int32_t CalcEScanCurve<long double>(CSolution&, CState&);
template void CalcEnergyRun<long double>(CSolution&, CState&);
template std::int32_t CalcAsymmetryCurve<long double>(CSolution&, CState&);
template std::int32_t CalcDicEScanCurve<long double>(CSolution&, CState&);

}  // namespace tolvik::engine
