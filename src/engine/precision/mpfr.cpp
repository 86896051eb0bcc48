// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/cnumber.h"
#include "engine/complex.h"
#include "engine/curve.tpp"
#include "engine/dichroism.tpp"
#include "engine/energy_run.tpp"
#include "engine/escan.tpp"

namespace tolvik::engine {

template std::int32_t CalcReflectivityCurve<CNumber>(CSolution&, CState&);
template std::int32_t CalcEScanCurve<CNumber>(CSolution&, CState&);
template void CalcEnergyRun<CNumber>(CSolution&, CState&);
template std::int32_t CalcAsymmetryCurve<CNumber>(CSolution&, CState&);
template std::int32_t CalcDicEScanCurve<CNumber>(CSolution&, CState&);

}  // namespace tolvik::engine
