// SPDX-License-Identifier: GPL-2.0-or-later
// Helpers of the error functions: safe access to columns of unequal length, logarithms and sums.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

#include "tolvik/dataset.h"

namespace tolvik {

/// Decadic logarithm in extended precision, from the binary one.
inline long double Log10(long double x) {
  constexpr long double kLog10Of2 = std::numbers::ln2_v<long double> / std::numbers::ln10_v<long double>;
  return std::log2(x) * kLog10Of2;
}

/// log10 x - log10 y as one logarithm, since besides the curve an evaluation spends most of its time on
/// logarithms. NaN and infinite where the difference is; y > 0.
inline long double Log10Ratio(long double x, long double y) {
  // a negative x over an infinite y would be a zero, whose logarithm is infinite
  return x < 0 ? std::numeric_limits<long double>::quiet_NaN() : Log10(x / y);
}

/// Natural logarithm in extended precision, from the binary one.
inline long double Ln(long double x) {
  return std::log2(x) * std::numbers::ln2_v<long double>;
}

/// The closed window of the abscissa in which points count.
struct FitWindow {
  double min;
  double max;
  /// True for a point of the abscissa inside; a NaN and a point beyond its end are outside.
  bool Holds(const CArray<double>& qz, std::int32_t i) const {
    return i < qz.size && min <= qz[i] && qz[i] <= max;
  }
};

/// True where both columns have a point i.
inline bool HaveBoth(const CArray<double>& measured, const CArray<double>& calculated, std::int32_t i) {
  return i < measured.size && i < calculated.size;
}

/// True where both columns have a positive point i, as logarithms require. False for NaN.
inline bool ArePositive(const CArray<double>& measured, const CArray<double>& calculated, std::int32_t i) {
  return HaveBoth(measured, calculated, i) && calculated[i] > 0 && measured[i] > 0;
}

/// Sum of squares of differences over the accepted points; the result is their mean, 0 without any.
struct MeanOfSquares {
  long double sum = 0;
  std::int32_t count = 0;
  void Add(long double square) {
    sum += square;
    ++count;
  }
  double Value() const { return count == 0 ? 0.0 : static_cast<double>(sum / count); }
};

/// Squared differences relative to the squares of both sides; the numerator alone where the denominator is 0.
struct RelativeSquares {
  long double differences = 0;
  long double squares = 0;
  void Add(long double a, long double b) {
    differences += (a - b) * (a - b);
    squares += a * a + b * b;
  }
  double Value() const { return static_cast<double>(squares == 0 ? differences : differences / squares); }
};

inline void StoreResidual(CArray<double>& residuals, std::int32_t i, long double value) {
  if (i < residuals.size) residuals[i] = static_cast<double>(value);
}

}  // namespace tolvik
