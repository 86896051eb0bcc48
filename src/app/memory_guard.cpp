// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/memory_guard.h"

#include <unistd.h>

#include <new>
#include <stdexcept>

namespace tolvik {

void CheckCurveFits(std::int64_t points, std::int64_t arrays) {
  if (points > INT32_MAX) throw std::length_error("too many points");
  const std::int64_t wanted = points * arrays * static_cast<std::int64_t>(sizeof(double));
  const std::int64_t pages = sysconf(_SC_PHYS_PAGES);
  if (pages > 0 && wanted / sysconf(_SC_PAGESIZE) > pages) throw std::bad_alloc();
}

}  // namespace tolvik
