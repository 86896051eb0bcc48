// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/threads/processors.h"

#include <sched.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace tolvik::engine {
namespace {

std::atomic<std::int32_t> forced_count = 0;

// A process that is bound to some processors gains nothing from threads for the others.
std::int32_t UsableProcessors() {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) return CPU_COUNT(&allowed);
  return static_cast<std::int32_t>(std::thread::hardware_concurrency());
}

}  // namespace

void GetSystemInfo(SystemInfo& info) {
  const std::int32_t count = forced_count;
  info.processors = std::max(1, count > 0 ? count : UsableProcessors());
}

void ForceProcessorCount(std::int32_t count) {
  forced_count = count;
}

}  // namespace tolvik::engine
