// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/first_within.h"

#include <algorithm>
#include <cmath>

namespace tolvik {
namespace {

constexpr std::int32_t kNone = INT32_MAX;

}  // namespace

FirstWithin::FirstWithin(std::vector<double> keys, double tolerance)
    : keys_(std::move(keys)), tolerance_(tolerance) {
  std::erase_if(keys_, [](double key) { return std::isnan(key); });
  std::sort(keys_.begin(), keys_.end());
  keys_.erase(std::unique(keys_.begin(), keys_.end()), keys_.end());
  lowest_.assign(2 * keys_.size(), kNone);
}

std::int32_t FirstWithin::Find(double value) const {
  // Rounding keeps the order of the differences, so the keys near a value are consecutive.
  const auto is_near = [=, this](double key) { return std::abs(key - value) <= tolerance_; };
  const auto begin = std::partition_point(keys_.begin(), keys_.end(),
                                          [&](double key) { return key < value && !is_near(key); });
  const auto end = std::partition_point(begin, keys_.end(), is_near);
  std::int32_t first = kNone;
  std::size_t left = static_cast<std::size_t>(begin - keys_.begin()) + keys_.size();
  std::size_t right = static_cast<std::size_t>(end - keys_.begin()) + keys_.size();
  for (; left < right; left /= 2, right /= 2) {
    if (left % 2 == 1) first = std::min(first, lowest_[left++]);
    if (right % 2 == 1) first = std::min(first, lowest_[--right]);
  }
  return first == kNone ? -1 : first;
}

void FirstWithin::Add(double key, std::int32_t index) {
  const auto leaf = std::lower_bound(keys_.begin(), keys_.end(), key);
  if (leaf == keys_.end() || *leaf != key) return;
  std::size_t node = static_cast<std::size_t>(leaf - keys_.begin()) + keys_.size();
  for (; node > 0; node /= 2) lowest_[node] = std::min(lowest_[node], index);
}

}  // namespace tolvik
