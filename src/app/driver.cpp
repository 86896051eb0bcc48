// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/driver.h"

#include <cstdio>
#include <exception>
#include <utility>

#include "app/command_table.h"
#include "app/options.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

int EndWithUsage() {
  PrintUsage();
  return 1;
}

// Stops at the first state that cannot be loaded or does not fit into memory.
bool LoadStates(Project& project) {
  for (const std::string& name : project.names) {
    std::fprintf(stderr, "# Loading state %s\n", name.c_str());
    bool loaded = false;
    try {
      CState state;
      loaded = LoadState(state, name);
      project.states.push_back(std::move(state));
    } catch (const std::exception&) {
      loaded = false;
    }
    if (!loaded) {
      std::fprintf(stderr, "Error: Could not open file %s\n", name.c_str());
      return false;
    }
  }
  return true;
}

}  // namespace

int RunProgram(int argc, const char* const* argv) {
  if (argc <= 1) return EndWithUsage();
  Options options;
  switch (ScanArguments(argc, argv, options)) {
    case ScanResult::usage:
      return EndWithUsage();
    case ScanResult::failed:
      return 1;
    case ScanResult::done:
      return 0;
    case ScanResult::go_on:
      break;
  }
  if (argc == 2) return EndWithUsage();

  Project project{{}, std::move(options.names), options.maprange};
  if (!LoadStates(project)) return 0;
  if (project.states.empty()) return EndWithUsage();
  RunCommands(options.flags, project);
  std::fflush(stderr);
  std::fflush(stdout);
  return 0;
}

}  // namespace tolvik
