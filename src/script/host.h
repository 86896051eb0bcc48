// SPDX-License-Identifier: GPL-2.0-or-later
// The Lua host that runs a state's script before a calculation.
#pragma once

#include "tolvik/state.h"

namespace tolvik {

/// One script host for one calculation: opens Lua and compiles the state's script at construction, calls its
/// Start at each Run, and closes Lua at the end. Does nothing while state.disablescript is non-zero. A script
/// that fails is silent: what it changed before stays. Never throws for a fault of the script. The session
/// works on the live state, which must outlive it.
class ScriptSession {
 public:
  explicit ScriptSession(CState& state);
  ~ScriptSession();
  ScriptSession(const ScriptSession&) = delete;
  ScriptSession& operator=(const ScriptSession&) = delete;

  /// Exchanges the four numeric globals with the state around one call of Start.
  void Run();

 private:
  CState& state_;
};

}  // namespace tolvik
