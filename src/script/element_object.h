// SPDX-License-Identifier: GPL-2.0-or-later
// The Lua type `element`: one chemical element of the sample, with its scattering factors and slices.
#pragma once

#include <cstdint>

#include "script/host.h"

namespace tolvik {

/// Registers the type and the global table `element` in L, bound to host. May raise a Lua error.
void RegisterElementType(lua_State* L, CScriptPointer& host);

/// Pushes a new object for the element record of that index. May raise a Lua error.
void PushElement(lua_State* L, std::int32_t index);

}  // namespace tolvik
