// SPDX-License-Identifier: GPL-2.0-or-later
// The exported calculations: each picks the number type by the state's precision.
#include "engine/curve.h"
#include "engine/dichroism.h"
#include "engine/energy_run.h"
#include "engine/escan.h"
#include "engine/escan_parallel.h"
#include "engine/number.h"
#include "engine/status.h"
#include "tolvik/tolvik.h"

namespace tolvik::engine {
namespace {

/// Calls call.operator()<T>() with the number type of a precision; an unknown one is double.
template <class Call>
std::int32_t WithNumberType(std::int32_t precision, Call call) {
  switch (precision) {
    case 0:
      return call.template operator()<float>();
    case 2:
      return call.template operator()<long double>();
    case 3:
      return call.template operator()<CNumber>();
    default:
      return call.template operator()<double>();
  }
}

}  // namespace

void CalcRunOfPoints(CSolution& points, CState& state) {
  WithNumberType(state.precision, [&]<class T>() {
    CalcEnergyRun<T>(points, state);
    return kSuccess;
  });
}

}  // namespace tolvik::engine

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
  return tolvik::kSuccess;
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
