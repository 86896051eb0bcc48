// SPDX-License-Identifier: GPL-2.0-or-later
// Finds the lowest index among all keys within a tolerance of a value.
#pragma once

#include <cstdint>
#include <vector>

namespace tolvik {

/// Keys get an index; Find returns the smallest index of the keys within a tolerance of a value. Find and Add
/// take log n steps, even where the keys are dense.
class FirstWithin {
 public:
  /// keys: all that will ever be added, in any order. tolerance: in the unit of the keys.
  FirstWithin(std::vector<double> keys, double tolerance);

  /// The smallest index added so far whose key has |key - value| <= tolerance; -1 when there is none, as for
  /// values and keys that are NaN or infinite.
  std::int32_t Find(double value) const;

  /// Gives a key an index. If a key gets several, the smallest counts.
  void Add(double key, std::int32_t index);

 private:
  std::vector<double> keys_;          // ascending, no NaN
  std::vector<std::int32_t> lowest_;  // segment tree over keys_: leaf i is lowest_[i + keys_.size()]
  double tolerance_;
};

}  // namespace tolvik
