// SPDX-License-Identifier: GPL-2.0-or-later
#include "script/host.h"

namespace tolvik {

ScriptSession::ScriptSession(CState& state) : state_(state) {}
ScriptSession::~ScriptSession() = default;
void ScriptSession::Run() {
  static_cast<void>(state_);
}

}  // namespace tolvik
