// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/lanes/parratt_repeats.h"

#include <cstddef>
#include <cstdint>

#include "engine/lanes/limits.h"

namespace tolvik::engine::lanes {

namespace {

template <class T>
bool IsSameWave(const ParrattEntry<T>& a, const ParrattEntry<T>& b) {
  return a.index_real == b.index_real && a.index_imag == b.index_imag && a.chi_real == b.chi_real &&
         a.chi_imag == b.chi_imag && a.ddelta == b.ddelta && a.dbeta == b.dbeta;
}

// The number of the first of up to kMaxShared earlier items that equals this one; a new number if none does;
// kMaxShared when there are too many different ones.
template <class Equals>
int NumberOf(int item, int& different, std::int32_t (&first)[kMaxShared], Equals equals) {
  for (int number = 0; number < different; ++number) {
    if (equals(first[number])) return number;
  }
  if (different < kMaxShared)
    first[different++] = item;
  else
    return kMaxShared;
  return different - 1;
}

}  // namespace

template <class T>
bool NumberEqualEntries(std::span<ParrattEntry<T>> entries) {
  const auto at = [entries](std::int32_t j) -> ParrattEntry<T>& {
    return entries[static_cast<std::size_t>(j)];
  };
  const auto size = static_cast<std::int32_t>(entries.size());
  std::int32_t wave[kMaxShared], passage[kMaxShared], interface[kMaxShared];
  int waves = 0, passages = 0, interfaces = 0;
  if (size < kFewestShared) return false;
  for (std::int32_t j = 0; j < size; ++j) {
    ParrattEntry<T>& entry = at(j);
    const int number =
        NumberOf(j, waves, wave, [&](std::int32_t first) { return IsSameWave(at(first), entry); });
    if (number == kMaxShared) return false;
    entry.wave = static_cast<std::int8_t>(number);
  }
  for (std::int32_t j = 0; j + 1 < size; ++j) {
    ParrattEntry<T>& entry = at(j);
    const int through = j == 0 ? 0 : NumberOf(j, passages, passage, [&](std::int32_t first) {
      return at(first).wave == entry.wave && at(first).phase == entry.phase;
    });
    const int over = NumberOf(j, interfaces, interface, [&](std::int32_t first) {
      return at(first).wave == entry.wave && at(first + 1).wave == at(j + 1).wave &&
             at(first).roughness == entry.roughness;
    });
    if (through == kMaxShared || over == kMaxShared) return false;
    entry.passage = static_cast<std::int8_t>(through);
    entry.interface = static_cast<std::int8_t>(over);
  }
  return 2 * interfaces <= size;
}

template bool NumberEqualEntries(std::span<ParrattEntry<float>>);
template bool NumberEqualEntries(std::span<ParrattEntry<double>>);

}  // namespace tolvik::engine::lanes
