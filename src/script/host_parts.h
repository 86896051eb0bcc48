// SPDX-License-Identifier: GPL-2.0-or-later
// The steps of a script host, shared by the plain host and the one that starts from a saved image.
#pragma once

#include <string_view>

#include "script/host.h"

namespace tolvik {

/// Opens the libraries in L, registers types and functions and leaves the pointers of host. May raise a Lua
/// error.
void SetUpHost(lua_State* L, CScriptPointer& host, void* debugwindow, void* chart);

/// Sets the registry entry and the global that point to the state and to host. May raise a Lua error.
void PushHostPointers(lua_State* L, CScriptPointer& host);

/// Compiles and runs a text as the chunk "line". False on any error, of which outcome takes the message; it
/// may be null.
bool RunText(lua_State* L, std::string_view text, ScriptOutcome* outcome = nullptr);

/// The lines that host.scriptselect selects.
const CArray<CCharArray>& SelectedLines(const CScriptPointer& host);

}  // namespace tolvik
