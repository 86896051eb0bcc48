// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/startup.h"

#include <cstdio>
#include <cstdlib>

#include "optics/layer_constants.h"

namespace tolvik {
namespace {

[[noreturn]] void EndProcess(const char* message) {
  std::fputs(message, stderr);
  std::exit(1);
}

}  // namespace

void PrepareLayerConstantsOrExit(CState& state) {
  switch (PrepareLayerConstants(state, TablesToLoad::kIfNone)) {
    case LayerConstantsStatus::kReady:
      return;
    case LayerConstantsStatus::kMissingTables:
      EndProcess("Error: You need .db-files and/or .e-files for all layers\n");
    case LayerConstantsStatus::kMissingMagneticTables:
      EndProcess("Error: You need .m-files and/or .e files for all layers\n");
    case LayerConstantsStatus::kEnergyOutOfRange:
      std::fputs("Error: Check if you chose the right energy!\n", stderr);
      return;
  }
}

}  // namespace tolvik
