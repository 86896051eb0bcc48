// SPDX-License-Identifier: GPL-2.0-or-later
// The state file: the one text format of a project, "key = value" lines in versioned sections.
//
// Reader and writer are not symmetric: the reader accepts all older versions, silently ignores unknown keys
// and bad numbers, and rebuilds the derived members that the writer omits (tensors, heights of interfaces,
// the empty dataset).
#pragma once

#include <string>
#include <string_view>

#include "tolvik/state.h"

namespace tolvik {

/// Fills a state that was default-constructed. False when the file cannot be read, does not fit into memory,
/// or has a fileversion other than "1"; the state then holds the part read so far. An unknown key or a bad
/// number does not fail.
bool LoadState(CState& state, const std::string& file_name);

/// How many digits of a number a state file gets.
enum class StateDigits {
  kSix,    ///< 6 significant ones, as the program writes
  kExact,  ///< 17: the file reads back as the same numbers, the wavelength included
};

/// Writes the state. An existing file is replaced as a whole or stays as it is. False when the file cannot be
/// opened or written.
bool SaveState(const CState& state, const std::string& file_name, StateDigits digits = StateDigits::kSix);

/// LoadState on a text in memory. file_name: becomes the file of the measurements inside the text.
bool ReadState(CState& state, std::string_view text, std::string_view file_name);

/// The text that SaveState writes.
std::string FormatState(const CState& state, StateDigits digits = StateDigits::kSix);

}  // namespace tolvik
