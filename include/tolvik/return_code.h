// SPDX-License-Identifier: GPL-2.0-or-later
// Return codes of the exported functions.
#pragma once

#include <cstdint>

namespace tolvik {

/// CalcReflectivityDLL(&curve, &state) == ReturnCode::kSuccess.
struct ReturnCode {
  enum Value : std::int32_t {
    kDone = 0,  ///< of the functions of a fit and of StartWebserver, which do not fail
    kSuccess = 1,
    kWrongDataPoints = 2,  ///< a point out of reach: |qz / (2 k0)| >= 1
    kScriptCompilation = 3,
    kScriptExecution = 4,
    kUnknownError = 5,   ///< an exception inside a calculation
    kTablesMissing = 6,  ///< optical tables are missing; of the map command only
  };
};

}  // namespace tolvik
