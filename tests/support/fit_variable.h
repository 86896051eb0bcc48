// SPDX-License-Identifier: GPL-2.0-or-later
// A fit variable of a test.
#pragma once

#include "tolvik/state.h"

namespace tolvik::testing {

/// A variable of kind id for the layer, row or function at index.
inline CFitVariable Vary(std::int32_t id, std::int32_t index, double value, double step, double lower = -1e10,
                         double upper = 1e10) {
  CFitVariable variable;
  variable.fit_id = id;
  variable.fit_additional_id = index;
  variable.fit_value = value;
  variable.fit_delta = step;
  variable.fit_lower_boundary = lower;
  variable.fit_upper_boundary = upper;
  return variable;
}

/// Appends that variable to a state.
inline void Vary(CState& state, std::int32_t id, std::int32_t index, double value, double step,
                 double lower = -1e10, double upper = 1e10) {
  state.fitvariables.Append(Vary(id, index, value, step, lower, upper));
}

}  // namespace tolvik::testing
