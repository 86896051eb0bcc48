// SPDX-License-Identifier: GPL-2.0-or-later
// The instances of the templates in the library, in each number type. Tests that include this call the
// shipped instances instead of compiling their own.
#pragma once

#include "engine/curve/curve.tpp"
#include "engine/curve/dichroism.tpp"
#include "engine/curve/energy_run.tpp"
#include "engine/curve/escan.tpp"

/// The instances in the number type T, for use inside of the namespace of the engine.
#define TOLVIK_INSTANCES(T)                                                             \
  template std::int32_t CalcReflectivityCurve<T>(CSolution&, CState&, CurveCompanion*); \
  template std::int32_t CalcEScanCurve<T>(CSolution&, CState&, CurveCompanion*);        \
  template void CalcEnergyRun<T>(CSolution&, CState&);                                  \
  template std::int32_t CalcAsymmetryCurve<T>(CSolution&, CState&, CurveCompanion*);    \
  template std::int32_t CalcDicEScanCurve<T>(CSolution&, CState&, CurveCompanion*);     \
  template IntensityOptions<T> OptionsOfState<T>(const CState&);                        \
  template void PrepareProfile<T>(const CState&, Profile<T>&);                          \
  template BatchOutcome CalcIntensities<T>(const AngleBatch<T>&, IntensityWork<T>&)
