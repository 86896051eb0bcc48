// SPDX-License-Identifier: GPL-2.0-or-later
// The rows of the speed table.
#pragma once

#include <functional>
#include <vector>

namespace tolvik::bench {

/// One kind of work. Both functions calculate the same intensities.
struct Row {
  const char* name;
  const char* title;
  double steps;                   ///< angles times interfaces
  std::function<void()> measure;  ///< the textbook loop; for the matrix algorithms the plain path
  std::function<void()> work;     ///< the engine with the lanes in use
};

std::vector<Row> AllRows();

}  // namespace tolvik::bench
