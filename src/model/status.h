// SPDX-License-Identifier: GPL-2.0-or-later
// Return codes of the calculations and what they are called.
#pragma once

#include <cstdint>

namespace tolvik {

inline constexpr std::int32_t kSuccess = 1;
inline constexpr std::int32_t kWrongDataPoints = 2;  ///< a point out of reach: |qz / (2 k0)| >= 1
inline constexpr std::int32_t kScriptCompilation = 3;
inline constexpr std::int32_t kScriptExecution = 4;
inline constexpr std::int32_t kUnknownError = 5;   ///< an exception inside a calculation
inline constexpr std::int32_t kTablesMissing = 6;  ///< of the map command alone; has no message

/// The message of a code, without a line end; empty for success and for a code without a message.
const char* StatusMessage(std::int32_t code);

}  // namespace tolvik
