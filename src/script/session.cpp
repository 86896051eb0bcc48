// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/energy.h"
#include "script/host.h"
#include "script/image.h"
#include "script/prelude.h"

namespace tolvik {

bool IsScriptIdle(const CState& state) {
  return state.disablescript != 0 || (AreLinesEmpty(state.scriptlines) && IsPreludePlain(state));
}

ScriptSession::ScriptSession(CState& state) : state_(state) {
  if (state.disablescript != 0) return;
  // Nothing to run and nothing in the names of the elements that could fail: Lua is not needed.
  empty_ = IsScriptIdle(state);
  if (empty_) return;
  host_ = ScriptImage::Take();
  host_->Begin(state);
}

ScriptSession::~ScriptSession() {
  if (host_ != nullptr) ScriptImage::Leave(std::move(host_));
}

const ScriptOutcome& ScriptSession::Outcome() const {
  static const ScriptOutcome ready;
  return host_ != nullptr ? host_->Outcome() : ready;
}

void ScriptSession::Run() {
  if (state_.disablescript != 0) return;
  if (empty_) {
    // the wavelength converted to the global `energy` and back, with two roundings
    state_.lambda = LambdaFromEnergy(EnergyFromLambda(state_.lambda));
  } else if (host_ != nullptr) {
    host_->Run();
  }
}

}  // namespace tolvik
