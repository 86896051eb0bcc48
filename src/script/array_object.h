// SPDX-License-Identifier: GPL-2.0-or-later
// The Lua type `array`: a view of one numeric field across all layers, gauss functions, elements, parameters
// or points of the solution.
#pragma once

#include <cstdint>

#include "script/host.h"

namespace tolvik {

/// The userdata of an array; it has no data of its own, each access goes to the live record.
struct ArrayObject {
  std::int32_t size;  ///< highest valid index; -1: that of the solution at each access
  std::int32_t code;  ///< of a ScriptField
};

/// Registers the type and the global table `array` in L, bound to host. May raise a Lua error.
void RegisterArrayType(lua_State* L, CScriptPointer& host);

/// Pushes a new array. May raise a Lua error. The pointer is valid as long as the value lives.
ArrayObject* PushArray(lua_State* L, std::int32_t size, std::int32_t code);

}  // namespace tolvik
