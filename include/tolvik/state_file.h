// SPDX-License-Identifier: GPL-2.0-or-later
// The state file: the one text format of a project, "key = value" lines in versioned sections.
//
// Reader and writer are no mirror images: the reader knows all older versions, keeps silent about unknown
// keys and bad numbers, and rebuilds what the writer leaves out (tensors, heights of interfaces, the empty
// dataset).
#pragma once

#include <string>
#include <string_view>

#include "tolvik/state.h"

namespace tolvik {

/// Fills a state that was default-constructed. False when the file cannot be read, does not fit into memory,
/// or has a fileversion other than "1"; the state then is as far as it was read. An unknown key or a bad
/// number is no failure.
bool LoadState(CState& state, const std::string& file_name);

/// Writes the state, numbers with 6 significant digits. An existing file is replaced as a whole or stays as
/// it is. False when the file cannot be opened or written.
bool SaveState(const CState& state, const std::string& file_name);

/// LoadState on a text in memory. file_name: what a measurement inside the text names as its file.
bool ReadState(CState& state, std::string_view text, std::string_view file_name);

/// The text that SaveState writes.
std::string FormatState(const CState& state);

}  // namespace tolvik
