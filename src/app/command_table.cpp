// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/command_table.h"

#include <algorithm>
#include <cstdio>
#include <exception>

#include "app/calc_commands.h"
#include "app/fit_commands.h"
#include "app/fitmap_command.h"
#include "app/kk_command.h"
#include "app/map_file.h"
#include "app/report.h"
#include "app/scan_commands.h"

namespace tolvik {
namespace {

struct Command {
  std::string_view option;
  void (*run)(Project&);
};

constexpr const char* kMapFile = "Map.dat";

void FitMeasuredMap(Project& project) {
  CMapFile map(project.states[0]);
  LoadMapFile(map, kMapFile);
  FitMapCommand(map);
}

void PrintMeasuredMap(Project& project) {
  std::fflush(stderr);
  CMapFile map(project.states[0]);
  LoadMapFile(map, kMapFile);
  std::fflush(stderr);
  PrintMapFile(map);
}

// A row without a function does nothing.
constexpr Command kCommands[] = {
    {"-refl", [](Project& project) { CalcReflectivityCommand(project.states[0]); }},
    {"-escan", [](Project& project) { CalcEnergyScanCommand(project.states[0]); }},
    {"-dicrefl", [](Project& project) { CalcDichroicCommand(project.states[0]); }},
    {"-fit", [](Project& project) { FitCommand(project.states, project.names); }},
    {"-bruteforcefit", [](Project& project) { BruteForceFitCommand(project.states[0]); }},
    {"-map", [](Project& project) { CalcMapCommand(project.states[0], project.maprange); }},
    {"-fitmap", FitMeasuredMap},
    {"-fitkk", [](Project&) { FitKramersKronigCommand("LSAT2.db"); }},
    {"-plotmap", PrintMeasuredMap},
};

}  // namespace

bool IsCommand(std::string_view option) {
  return std::ranges::any_of(kCommands, [&](const Command& command) { return command.option == option; });
}

void RunCommands(const std::set<std::string>& flags, Project& project) {
  for (const Command& command : kCommands) {
    if (command.run == nullptr || !flags.contains(std::string(command.option))) continue;
    try {
      command.run(project);
    } catch (const std::exception&) {  // mostly out of memory: the other commands may need less
      ReportFailure(ReturnCode::kUnknownError);
    }
  }
}

}  // namespace tolvik
