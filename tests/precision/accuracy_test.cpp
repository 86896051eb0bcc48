// SPDX-License-Identifier: GPL-2.0-or-later
// The accuracy of curves in each precision, on three usual samples: prints the table of docs/numerics.md and
// compares the errors with a bound from the contrast.
//
// The optical contrast enters as n² - cos²θ, rounded relative to 1. An interface reflects by the difference
// of two such numbers, about 2 delta, so a rounding ε of 1 makes the amplitude uncertain by ε / (2 delta),
// and the intensity by twice that; a stack adds some of these.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

#include "support/states.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

using testing::MakeState;
using testing::Slab;

constexpr Slab kSilicon{.delta = 7.6e-6, .beta = 1.73e-7, .sigma = 3};
constexpr Slab kMolybdenum{.thickness = 28, .delta = 2.87e-5, .beta = 1.9e-6, .sigma = 3};
constexpr double kSmallestContrast = 7.6e-6;

struct Sample {
  const char* name;
  CState state;
};

std::vector<Sample> Samples() {
  CState mirror = MakeState({kSilicon});
  for (int i = 0; i < 40; ++i) {
    mirror.layers.Append(MakeState({kMolybdenum}).layers[0]);
    Slab spacer = kSilicon;
    spacer.thickness = 41;
    mirror.layers.Append(MakeState({spacer}).layers[0]);
  }
  mirror.layers.Append(CLayer());
  return {{"bare substrate", MakeState({kSilicon, {}})},
          {"film of 300 A",
           MakeState({kSilicon, {.thickness = 300, .delta = 2.25e-5, .beta = 2.9e-6, .sigma = 5}, {}})},
          {"mirror, 40 periods", mirror}};
}

struct Range {
  double first, last;
};

CArray<double> Curve(CState state, CSolution grid, int precision) {
  state.precision = precision;
  EXPECT_EQ(CalcReflectivityDLL(&grid, &state), ReturnCode::kSuccess);
  return grid.dataset_R0;
}

struct Errors {
  double median = 0, worst = 0;
};

Errors RelativeErrors(const CArray<double>& curve, const CArray<double>& reference) {
  std::vector<double> errors;
  for (int i = 0; i < curve.size; ++i) errors.push_back(std::abs(curve[i] / reference[i] - 1));
  std::sort(errors.begin(), errors.end());
  return {errors[errors.size() / 2], errors.back()};
}

TEST(Accuracy, OfUsualCurves) {
  constexpr double kEpsilons[] = {std::numeric_limits<float>::epsilon(),
                                  std::numeric_limits<double>::epsilon(),
                                  static_cast<double>(std::numeric_limits<long double>::epsilon())};
  std::printf("%-20s %-12s  %21s  %21s  %21s\n", "sample", "qz", "float", "double", "long double");
  for (const Sample& sample : Samples()) {
    for (const Range range : {Range{0.001, 0.03}, Range{0.03, 0.1}, Range{0.1, 0.6}}) {
      const CSolution grid = testing::MakeGrid(range.first, range.last, 500);
      const CArray<double> reference = Curve(sample.state, grid, 3);
      std::printf("%-20s %5g .. %-4g ", sample.name, range.first, range.last);
      for (int precision = 0; precision < 3; ++precision) {
        const Errors errors = RelativeErrors(Curve(sample.state, grid, precision), reference);
        std::printf("  %9.1e (%9.1e)", errors.median, errors.worst);
        // The record holds doubles, so a double's rounding is there in any case.
        const double expected =
            4 * (kEpsilons[precision] / kSmallestContrast + std::numeric_limits<double>::epsilon());
        EXPECT_LT(errors.median, expected) << sample.name;
      }
      std::printf("\n");
    }
  }
  std::printf("median (worst) relative error of R against 200 bits, 500 points each\n");
}

}  // namespace
}  // namespace tolvik
