// SPDX-License-Identifier: GPL-2.0-or-later
// The number of processors.
#pragma once

#include <cstdint>

namespace tolvik::engine {

/// Facts about the machine.
struct SystemInfo {
  std::int32_t processors = 1;  ///< that this process may run on, at least 1
};

void GetSystemInfo(SystemInfo& info);

/// Makes GetSystemInfo report count processors; 0 asks the platform again. For tests and benchmarks.
void ForceProcessorCount(std::int32_t count);

}  // namespace tolvik::engine
