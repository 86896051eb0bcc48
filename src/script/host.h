// SPDX-License-Identifier: GPL-2.0-or-later
// The Lua host that runs a state's script before a calculation.
//
// The script changes the live state through the objects `array` and `element`. A script fails silently; its
// earlier changes stay.
#pragma once

#include <cstdint>
#include <memory>

#include "tolvik/state.h"

struct lua_State;

namespace tolvik {

/// One script host; made by the caller, who opens and closes L.
struct CScriptPointer {
  CState* state = nullptr;        ///< the state that the script changes; not owned
  CSolution solution;             ///< the curve of the solution_* arrays
  lua_State* L = nullptr;         ///< Lua 5.1, as from luaL_newstate
  std::int32_t scriptselect = 1;  ///< 1 runs scriptlines, 0 defaultscriptlines
};

inline constexpr std::int32_t kScriptReady = 1;
inline constexpr std::int32_t kScriptFailed = 3;
inline constexpr std::int32_t kScriptStopped = 4;

/// How a script ended: kScriptReady, kScriptFailed when it does not compile, kScriptStopped after an error
/// while it ran.
struct ScriptOutcome {
  std::int32_t code = kScriptReady;
  char message[256] = "";  ///< Lua's, cut where it is longer; empty without an error
};

/// Opens the libraries in host.L, binds the arrays and elements of the state to their script names and
/// compiles the selected lines into the global function Start. host must outlive host.L. GetScriptPointers
/// returns the pointers later. Returns kScriptReady, also when the state disables its script and nothing
/// happens, or kScriptFailed. Never throws for a fault of the script; throws std::bad_alloc when out of
/// memory outside Lua.
std::int32_t InitScriptHost(CScriptPointer& host, void* debugwindow, void* chart);

/// Sets the globals energy, epsilon, resolution and energyscan_qz from the state, calls Start and reads the
/// four back; a value of another type reads as 0. Does nothing while the state disables its script. When
/// Start fails or is missing, the four are not read back. outcome: notes an error, may be null.
void RunScript(CScriptPointer& host, ScriptOutcome* outcome = nullptr);

/// The three pointers that InitScriptHost left in the registry of L; null where there are none.
void GetScriptPointers(lua_State* L, CState*& state, void*& chart, void*& debugwindow);

/// True when a run of the state's script would do nothing but exchange the four globals with the state: it is
/// disabled, or its lines are empty and the names of the elements plain.
bool IsScriptIdle(const CState& state);

class ScriptImage;

/// One script host for one calculation: opens Lua and compiles the state's script at construction, calls its
/// Start at each Run, and closes Lua at the end. Does nothing while state.disablescript is non-zero. A script
/// fails silently; its earlier changes stay. Never throws for a fault of the script. The session works on the
/// live state, which must outlive it, in one thread.
class ScriptSession {
 public:
  explicit ScriptSession(CState& state);
  ~ScriptSession();
  ScriptSession(const ScriptSession&) = delete;
  ScriptSession& operator=(const ScriptSession&) = delete;

  /// Exchanges the four numeric globals with the state around one call of Start.
  void Run();

  /// How the script was compiled and ended its latest run.
  const ScriptOutcome& Outcome() const;

 private:
  CState& state_;
  bool empty_ = false;                 // only the globals need to be exchanged
  std::unique_ptr<ScriptImage> host_;  // null without a script
};

}  // namespace tolvik
