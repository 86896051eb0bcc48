// SPDX-License-Identifier: GPL-2.0-or-later
// The choice of the number type by the precision of a state.
#pragma once

#include <cstdint>

#include "engine/number/number.h"
#include "tolvik/choices.h"

namespace tolvik::engine {

/// Calls call.operator()<T>() with the number type T of a precision and returns what it returns; an unknown
/// precision is double.
template <class Call>
auto WithNumberType(std::int32_t precision, Call call) {
  switch (precision) {
    case Precision::kFloat:
      return call.template operator()<float>();
    case Precision::kLongDouble:
      return call.template operator()<long double>();
    case Precision::kMpfr:
      return call.template operator()<CNumber>();
    default:
      return call.template operator()<double>();
  }
}

}  // namespace tolvik::engine
