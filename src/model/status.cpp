// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/status.h"

namespace tolvik {
namespace {

struct Row {
  std::int32_t code;  // 0 ends the table
  const char* message;
};

constexpr Row kMessages[] = {
    {ReturnCode::kWrongDataPoints,
     "Error: Wrong data points in measurement. Please remove all data points that fulfill the condition "
     "qz/2/k0 > 1."},
    {ReturnCode::kScriptCompilation, "Error: Script Compilation"},
    {ReturnCode::kScriptExecution, "Error: Script Execution"},
    {ReturnCode::kUnknownError, "Error: Unknown Error"},
    {0, nullptr},
    // After the end, so that it is never printed: the map command words missing tables itself.
    {ReturnCode::kTablesMissing, "Error: db-files for all layers are needed"},
};

}  // namespace

const char* StatusMessage(std::int32_t code) {
  for (const Row* row = kMessages; row->code != 0; ++row) {
    if (row->code == code) return row->message;
  }
  return "";
}

}  // namespace tolvik
