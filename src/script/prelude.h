// SPDX-License-Identifier: GPL-2.0-or-later
// Definitions for a script: the arrays and elements of the state, and its own lines as the function Start.
#pragma once

#include <string>
#include <string_view>

#include "tolvik/state.h"

namespace tolvik {

/// Lua text that defines a global for each element of the state, then all arrays.
std::string PreludeText(const CState& state);

/// Lua text "function Start() ... end" around the lines, written over chunk.
void BuildMainChunk(const CArray<CCharArray>& lines, std::string& chunk);

/// True when PreludeText does nothing but define globals: every element name is a plain Lua name, none is
/// `array` or `element`, and there are not too many for one Lua function.
bool IsPreludePlain(const CState& state);

/// True when the lines contain no code: blanks and whole-line comments only.
bool AreLinesEmpty(const CArray<CCharArray>& lines);

/// True when the text names no part of Lua that can create a finalizer, open a file or load a library; then a
/// Lua state that ran it may be dropped without a close. When in doubt, false.
bool IsTextFreeOfFinalizers(std::string_view text);

}  // namespace tolvik
