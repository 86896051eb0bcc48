// SPDX-License-Identifier: GPL-2.0-or-later
// One run of the program.
#pragma once

namespace tolvik {

/// Scans the arguments, loads the named states, runs the commands in their fixed order and flushes the
/// streams. Returns the exit value: 1 for the usage and the version, otherwise 0, even when a calculation
/// failed.
int RunProgram(int argc, const char* const* argv);

}  // namespace tolvik
