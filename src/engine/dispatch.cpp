// SPDX-License-Identifier: GPL-2.0-or-later
// The exported calculations: each chooses the number type by the state's precision.
#include "engine/curve/calculations.h"
#include "engine/curve/escan_parallel.h"
#include "tolvik/tolvik.h"

std::int32_t CalcReflectivityDLL(tolvik::CSolution* solution, tolvik::CState* state) {
  return tolvik::engine::CalcReflectivity(*solution, *state, nullptr);
}

std::int32_t CalcEScanDLL(tolvik::CSolution* solution, tolvik::CState* state) {
  return tolvik::engine::CalcEScan(*solution, *state, nullptr);
}

std::int32_t CalcEScanParallelDLL(tolvik::CSolution* solution, tolvik::CState* state) {
  tolvik::engine::ScanInThreads(*solution, *state);
  return tolvik::ReturnCode::kSuccess;
}

std::int32_t CalcAsymmetryDLL(tolvik::CSolution* solution, tolvik::CState* state) {
  return tolvik::engine::CalcAsymmetry(*solution, *state, nullptr);
}

std::int32_t CalcDicEScanDLL(tolvik::CSolution* solution, tolvik::CState* state) {
  return tolvik::engine::CalcDicEScan(*solution, *state, nullptr);
}
