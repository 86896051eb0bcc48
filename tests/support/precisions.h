// SPDX-License-Identifier: GPL-2.0-or-later
// The four number types of the engine as a list for typed tests.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "engine/number/cnumber.h"
#include "engine/number/complex.h"
#include "engine/number/number.h"
#include "tolvik/choices.h"

namespace tolvik::testing {

using Precisions = ::testing::Types<float, double, long double, engine::CNumber>;

/// Names the tests of a typed suite.
struct PrecisionNames {
  template <class T>
  static std::string GetName(int) {
    if constexpr (std::is_same_v<T, float>) return "Float";
    if constexpr (std::is_same_v<T, double>) return "Double";
    if constexpr (std::is_same_v<T, long double>) return "LongDouble";
    if constexpr (std::is_same_v<T, engine::CNumber>) return "Mpfr";
  }
};

/// Value of `precision` in a state that gives T.
template <class T>
constexpr int PrecisionOf() {
  if constexpr (std::is_same_v<T, float>) return Precision::kFloat;
  if constexpr (std::is_same_v<T, long double>) return Precision::kLongDouble;
  if constexpr (std::is_same_v<T, engine::CNumber>) return Precision::kMpfr;
  return Precision::kDouble;
}

/// Relative spacing of T at 1, but not below that of the double that holds the results.
template <class T>
double Epsilon() {
  if constexpr (std::is_same_v<T, float>) return std::numeric_limits<float>::epsilon();
  return std::numeric_limits<double>::epsilon();
}

}  // namespace tolvik::testing
