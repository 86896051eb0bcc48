// SPDX-License-Identifier: GPL-2.0-or-later
// A script host that starts from a saved image of an opened Lua.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "script/arena.h"
#include "script/host.h"

namespace tolvik {

/// A Lua host for many calculations, one after the other. The libraries, types and arrays are the same for
/// every state, so they are built once and reset for each; only the bounds of the arrays and the elements are
/// new. A state whose element names need the text of the prelude gets a host from scratch.
class ScriptImage {
 public:
  /// An unused image of this thread, or a new one. Throws std::bad_alloc.
  static std::unique_ptr<ScriptImage> Take();

  /// Keeps image for the next Take of this thread.
  static void Leave(std::unique_ptr<ScriptImage> image) noexcept;

  ScriptImage() = default;
  ~ScriptImage() { End(); }
  ScriptImage(const ScriptImage&) = delete;
  ScriptImage& operator=(const ScriptImage&) = delete;

  /// Opens the host for a state and compiles its script, as InitScriptHost does. Without memory for Lua the
  /// host stays closed, and Run does nothing.
  void Begin(CState& state);

  /// As RunScript.
  void Run();

  /// How the script was compiled and ended its latest run.
  const ScriptOutcome& Outcome() const { return outcome_; }

  /// Closes the host, with all finalizers of the script.
  void End() noexcept;

  /// Bytes that Lua may hold from the next Begin on.
  void SetMemoryLimit(std::size_t bytes) { arena_.limit = bytes; }

 private:
  bool BuildImage();
  bool BeginFromImage(CState& state);
  bool OpenLua();
  static int FillImage(lua_State* L);
  static int BindState(lua_State* L);

  LuaArena arena_;
  CScriptPointer record_;
  lua_State* image_lua_ = nullptr;
  std::vector<std::int32_t*> array_sizes_;  // inside the userdata of the image, one for each field
  std::string chunk_;
  ScriptOutcome outcome_;
  bool needs_close_ = true;
};

}  // namespace tolvik
