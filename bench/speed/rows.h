// SPDX-License-Identifier: GPL-2.0-or-later
// The rows of the speed table.
#pragma once

#include <functional>
#include <vector>

namespace tolvik::bench {

/// Calculates the intensities of one row, one after the other.
using Work = std::function<void(std::vector<double>& intensities)>;

/// One kind of work. Both functions calculate the same intensities.
struct Row {
  const char* name;
  const char* title;
  double steps;      ///< angles times interfaces
  double tolerance;  ///< largest relative difference of the two that rounding explains
  Work measure;      ///< the textbook loop
  Work work;         ///< the engine with the lanes in use
};

std::vector<Row> AllRows();

/// The row of the recursion in MPFR, compared with the same recursion over a number on the heap.
Row MpfrRow();

}  // namespace tolvik::bench
