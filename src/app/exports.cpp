// SPDX-License-Identifier: GPL-2.0-or-later
// Exported functions that are not calculations: fits, evolution, script.
#include "app/exports.h"

#include <exception>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "script/host.h"
#include "tolvik/tolvik.h"

namespace tolvik {

CMultiFit* frontendfit = nullptr;
CEvolution* frontendevolution = nullptr;

namespace {

// Keeps an object to the end of the process, so that pointers into it stay valid when a newer one replaces
// it.
template <class T>
T* KeepForEver(std::unique_ptr<T> object) {
  static auto& kept = *new std::vector<std::unique_ptr<T>>;  // never destroyed: other threads may still read
  kept.push_back(std::move(object));
  return kept.back().get();
}

}  // namespace
}  // namespace tolvik

using tolvik::frontendevolution;
using tolvik::frontendfit;

extern "C" {

std::int32_t FitNewDLL(tolvik::CState* state) {
  try {
    auto fit = std::make_unique<tolvik::CMultiFit>(*state);
    fit->RestartFit();
    frontendfit = tolvik::KeepForEver(std::move(fit));
  } catch (const std::exception&) {
    frontendfit = nullptr;  // out of memory: FitGetFitDLL returns null
  }
  return 0;
}

std::int32_t FitIterateDLL(void) {
  if (frontendfit != nullptr) frontendfit->Iterate();
  return 0;
}

std::int32_t FitGetFitStateDLL(tolvik::CState** out) {
  if (frontendfit != nullptr) *out = &frontendfit->state;
  return 0;
}

std::int32_t FitGetFitDataDLL(tolvik::CSolution** out) {
  *out = frontendfit != nullptr ? &frontendfit->solution : nullptr;
  return 0;
}

std::int32_t FitGetFitDLL(tolvik::CMultiFit** out) {
  *out = frontendfit;
  return 0;
}

double FitGetLastErrorDLL(void) {
  return frontendfit != nullptr ? frontendfit->lasterror : std::numeric_limits<double>::quiet_NaN();
}

std::int32_t EvolutionNewDLL(tolvik::CState* state) {
  try {
    frontendevolution = tolvik::KeepForEver(std::make_unique<tolvik::CEvolution>(*state));
  } catch (const std::exception&) {
    frontendevolution = nullptr;  // out of memory: EvolutionGetEvolutionDLL returns null
  }
  return 1;
}

std::int32_t EvolutionIterateDLL(void) {
  if (frontendevolution != nullptr) frontendevolution->Iterate();
  return 1;
}

std::int32_t EvolutionGetEvolutionDLL(tolvik::CEvolution** out) {
  *out = frontendevolution;
  return 1;
}

std::int32_t StartScriptDLL(tolvik::CState* state) {
  try {
    tolvik::ScriptSession(*state).Run();
  } catch (const std::exception&) {
    // Out of memory: silent, like any other fault of a script.
  }
  return 1;
}

}  // extern "C"
