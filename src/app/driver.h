// SPDX-License-Identifier: GPL-2.0-or-later
// One run of the program.
#pragma once

namespace tolvik {

/// Scans the arguments, loads every state named, runs the commands in their fixed order and flushes the
/// streams. Gives the exit value: 1 for the usage and the version, 0 for all else, a failed calculation
/// included.
int RunProgram(int argc, const char* const* argv);

}  // namespace tolvik
