// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/screening.h"

#include <cmath>
#include <numbers>

#include "analysis/resolution_rules.h"
#include "optics/energy.h"

namespace tolvik::analysis {
namespace {

using Counter = std::int32_t PointCount::*;

bool IsFinite(const std::vector<double>& column, std::size_t i) {
  return column.empty() || std::isfinite(column[i]);
}

bool IsFinite(const Measurement& m, const ScreenRules& rules, std::size_t i) {
  const bool values =
      std::isfinite(m.q[i]) && IsFinite(m.R, i) && IsFinite(m.R2, i) && IsFinite(m.energies, i);
  const bool errors = !rules.needs_errors || (IsFinite(m.dR, i) && IsFinite(m.dR2, i));
  return values && errors && (!rules.needs_widths || IsFinite(m.dq, i));
}

bool IsWithinReach(const Measurement& m, const ScreenRules& rules, std::size_t i) {
  double reach = rules.reach;
  if (IsEnergyScan(m.kind)) reach = 4 * std::numbers::pi / LambdaFromEnergy(m.energies[i]);
  const double width = rules.needs_widths ? kSigmaReach * m.dq[i] : rules.half_width;
  return m.q[i] >= 0 && m.q[i] + width < reach;
}

bool HasWidth(const Measurement& m, const ScreenRules& rules, std::size_t i) {
  return !rules.needs_widths || m.dq[i] >= 0;
}

bool HasErrors(const Measurement& m, const ScreenRules& rules, std::size_t i) {
  if (!rules.needs_errors) return true;
  return m.dR[i] > 0 && (m.dR2.empty() || m.dR2[i] > 0);
}

bool IsValueGood(const Measurement& m, const ScreenRules& rules, double value) {
  if (IsAsymmetry(m.kind)) return true;  // an asymmetry of 0 is a measured one
  if (rules.logarithmic) return value > 0;
  return m.counts ? value >= 0 : value != 0;
}

bool HasValues(const Measurement& m, const ScreenRules& rules, std::size_t i) {
  return IsValueGood(m, rules, m.R[i]) && (!HasTwoCurves(m.kind) || IsValueGood(m, rules, m.R2[i]));
}

Counter FateOf(const Measurement& m, const ScreenRules& rules, std::size_t i) {
  if (!m.masked.empty() && m.masked[i] != 0) return &PointCount::masked;
  if (!IsFinite(m, rules, i)) return &PointCount::not_finite;
  if (!(rules.window_min <= m.q[i] && m.q[i] <= rules.window_max)) return &PointCount::outside_window;
  if (!HasWidth(m, rules, i)) return &PointCount::zero_error;
  if (!IsWithinReach(m, rules, i)) return &PointCount::out_of_reach;
  if (!HasErrors(m, rules, i)) return &PointCount::zero_error;
  if (!HasValues(m, rules, i)) return &PointCount::zero_value;
  return &PointCount::used;
}

}  // namespace

std::vector<std::int32_t> Screen(const Measurement& measurement, const ScreenRules& rules,
                                 PointCount& count) {
  std::vector<std::int32_t> points;
  count = {};
  for (std::size_t i = 0; i < measurement.q.size(); ++i) {
    const Counter fate = FateOf(measurement, rules, i);
    ++(count.*fate);
    if (fate == &PointCount::used) points.push_back(static_cast<std::int32_t>(i));
  }
  return points;
}

std::string PointCount::Text() const {
  struct Row {
    std::int32_t number;
    const char* text;
  };
  const Row rows[] = {{masked, "masked"},
                      {not_finite, "with a value that is not finite"},
                      {outside_window, "outside of the fit window"},
                      {out_of_reach, "out of reach (q < 0 or q + its width >= 2 k0)"},
                      {zero_error, "with dR = 0"},
                      {zero_value, "with R = 0 or below"}};
  std::int32_t all = used;
  std::string reasons;
  for (const Row& row : rows) {
    all += row.number;
    if (row.number == 0) continue;
    reasons += (reasons.empty() ? " (" : ", ") + std::to_string(row.number) + " " + row.text;
  }
  if (!reasons.empty()) reasons += ")";
  return std::to_string(used) + " of " + std::to_string(all) + " points used" + reasons;
}

}  // namespace tolvik::analysis
