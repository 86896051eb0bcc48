// SPDX-License-Identifier: GPL-2.0-or-later
// The command line: commands and state files.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "tolvik/state.h"

namespace tolvik {

/// The result of the scan of the arguments.
struct Options {
  std::set<std::string> flags;     ///< the commands asked for, as spelt: "-refl"
  std::vector<std::string> names;  ///< state files, in the order of the command line
  CMapRange maprange;              ///< points of -map
};

/// The next action after the scan of the arguments.
enum class ScanResult {
  go_on,   ///< load the states and run the commands
  usage,   ///< print the usage and end with 1
  failed,  ///< end with 1: the version was asked for
  done,    ///< end with 0: the option has done its work
};

/// Scans the arguments once, from the first to the last. -v, -test and -convert act when the scan reaches
/// them; -map reports its range to standard error. Unknown options are ignored.
ScanResult ScanArguments(int argc, const char* const* argv, Options& options);

/// Prints the usage to standard output.
void PrintUsage();

}  // namespace tolvik
