// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve.tpp"
#include "engine/dichroism.tpp"
#include "engine/energy_run.tpp"
#include "engine/escan.tpp"
#include "engine/modes.tpp"
#include "engine/quartic.tpp"

namespace tolvik::engine {

template std::int32_t CalcReflectivityCurve<double>(CSolution&, CState&);
template std::int32_t CalcEScanCurve<double>(CSolution&, CState&);
template void CalcEnergyRun<double>(CSolution&, CState&);
template std::int32_t CalcAsymmetryCurve<double>(CSolution&, CState&);
template std::int32_t CalcDicEScanCurve<double>(CSolution&, CState&);

// For the consistency page, which works in double.
template void PrepareProfile<double>(const CState&, Profile<double>&);
template int ClassifyTensor<double>(double, const Tensor<double>&);
template void SolveModes<double>(const Cplx<double>&, const Cplx<double>&, const Cplx<double>&,
                                 const Cplx<double>&, const Cplx<double>&, Cplx<double> (&)[4]);

}  // namespace tolvik::engine
