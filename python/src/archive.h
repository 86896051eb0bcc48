// SPDX-License-Identifier: GPL-2.0-or-later
// Every member of a state as bytes, for pickle, equality and digests. The bytes are those of this machine's
// numbers.
#pragma once

#include <string>
#include <string_view>

#include "tolvik/state.h"

namespace tolvik::python {

/// The bytes of a state, a version first. Equal states, bit by bit, have equal bytes.
std::string WriteArchive(const CState& state);

/// Fills a state from such bytes. False when they are of another version, too short or too long; the state
/// then is unspecified. Lengths are checked before anything is allocated.
bool ReadArchive(CState& state, std::string_view bytes);

}  // namespace tolvik::python
