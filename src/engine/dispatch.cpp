// SPDX-License-Identifier: GPL-2.0-or-later
// The exported calculations: each chooses the number type by the state's precision.
#include "engine/curve/curve.h"
#include "engine/curve/dichroism.h"
#include "engine/curve/escan.h"
#include "engine/curve/escan_parallel.h"
#include "engine/curve/with_number_type.h"
#include "model/status.h"
#include "tolvik/tolvik.h"

std::int32_t CalcReflectivityDLL(tolvik::CSolution* solution, tolvik::CState* state) {
  using namespace tolvik::engine;
  return WithNumberType(state->precision,
                        [&]<class T>() { return CalcReflectivityCurve<T>(*solution, *state); });
}

std::int32_t CalcEScanDLL(tolvik::CSolution* solution, tolvik::CState* state) {
  using namespace tolvik::engine;
  return WithNumberType(state->precision, [&]<class T>() { return CalcEScanCurve<T>(*solution, *state); });
}

std::int32_t CalcEScanParallelDLL(tolvik::CSolution* solution, tolvik::CState* state) {
  tolvik::engine::ScanInThreads(*solution, *state);
  return tolvik::ReturnCode::kSuccess;
}

std::int32_t CalcAsymmetryDLL(tolvik::CSolution* solution, tolvik::CState* state) {
  using namespace tolvik::engine;
  return WithNumberType(state->precision,
                        [&]<class T>() { return CalcAsymmetryCurve<T>(*solution, *state); });
}

std::int32_t CalcDicEScanDLL(tolvik::CSolution* solution, tolvik::CState* state) {
  using namespace tolvik::engine;
  return WithNumberType(state->precision, [&]<class T>() { return CalcDicEScanCurve<T>(*solution, *state); });
}
