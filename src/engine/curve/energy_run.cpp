// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve/energy_run.h"

#include <algorithm>
#include <bit>
#include <unordered_map>

#include "engine/curve/with_number_type.h"
#include "optics/column_table.h"
#include "script/host.h"

namespace tolvik::engine {
namespace {

/// Numbers the different energies in the order of their first points. By their bits: the two zeros are two
/// energies, and a NaN is one.
class EnergyNumbers {
 public:
  std::int32_t NumberOf(double energy) {
    const auto bits = std::bit_cast<std::uint64_t>(energy);
    if (IsAt(last_, bits)) return last_;
    // A grid repeats its energies again and again.
    const std::int32_t next = last_ + 1 < Count() ? last_ + 1 : 0;
    last_ = IsAt(next, bits) ? next : Find(bits);
    return last_;
  }
  std::int32_t Count() const { return static_cast<std::int32_t>(bits_.size()); }

 private:
  bool IsAt(std::int32_t number, std::uint64_t bits) const {
    return number < Count() && bits_[static_cast<std::size_t>(number)] == bits;
  }
  std::int32_t Find(std::uint64_t bits) {
    const auto [found, is_new] = numbers_.try_emplace(bits, Count());
    if (is_new) bits_.push_back(bits);
    return found->second;
  }

  std::vector<std::uint64_t> bits_;
  std::unordered_map<std::uint64_t, std::int32_t> numbers_;
  std::int32_t last_ = 0;
};

bool IsAscending(const COpticalTable& material) {
  return IsColumnTableAscending(material.db) && IsColumnTableAscending(material.m) &&
         IsColumnTableAscending(material.e) && IsColumnTableAscending(material.ff);
}

}  // namespace

bool MayReorderPoints(const CState& state) {
  // a negative average has no member, not even at a single point
  return IsScriptIdle(state) && state.maprange.keeplambda == 0 && state.averaging >= 0 &&
         std::all_of(state.opticaltables.begin(), state.opticaltables.end(), IsAscending);
}

bool CollectEnergyRuns(const CSolution& scan, std::int32_t longest, EnergyRuns& runs) {
  const std::int32_t count = scan.dataset_qz.size;
  if (count < 2 || scan.dataset_eng.size < count || scan.dataset_R0.size < count) return false;
  EnergyNumbers energies;
  std::vector<std::int32_t> number(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < number.size(); ++i) {
    number[i] = energies.NumberOf(scan.dataset_eng[static_cast<std::int32_t>(i)]);
    if (energies.Count() > count / 2) return false;
  }

  std::vector<std::int32_t> place(static_cast<std::size_t>(energies.Count()) + 1);
  for (const std::int32_t n : number) ++place[static_cast<std::size_t>(n) + 1];
  for (std::size_t n = 1; n < place.size(); ++n) {
    const std::int32_t first = place[n - 1], end = first + place[n];
    for (std::int32_t i = first; i < end; i += longest) runs.runs.push_back({i, std::min(end, i + longest)});
    place[n] = end;
  }
  runs.points.resize(number.size());
  for (std::size_t i = 0; i < number.size(); ++i) {
    std::int32_t& next = place[static_cast<std::size_t>(number[i])];
    runs.points[static_cast<std::size_t>(next++)] = static_cast<std::int32_t>(i);
  }
  return true;
}

void CalcRunOfPoints(CSolution& points, CState& state) {
  WithNumberType(state.precision, [&]<class T>() { CalcEnergyRun<T>(points, state); });
}

}  // namespace tolvik::engine
