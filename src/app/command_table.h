// SPDX-License-Identifier: GPL-2.0-or-later
// The commands of the program in the order in which they run.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/options.h"
#include "tolvik/state.h"

namespace tolvik {

/// The data of the commands of one run.
struct Project {
  std::vector<CState> states;      ///< at least one; most commands work on the first
  std::vector<std::string> names;  ///< the state files, by the same index
  CMapRange maprange;              ///< points of -map
};

/// True when an option of that spelling names a command.
bool IsCommand(std::string_view option);

/// Runs the commands whose options are in flags, in the order of the table, not of the command
/// line. A command that fails reports it and the next one runs.
void RunCommands(const std::set<std::string>& flags, Project& project);

}  // namespace tolvik
