// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve/resolution.tpp"
#include "support/precisions.h"
#include "support/states.h"

namespace tolvik::engine {
namespace {

using testing::Epsilon;
using testing::MakeGrid;

TEST(ResolutionRuleTable, IsAGaussianOfHalfTheWidth) {
  double sum = 0;
  for (const ResolutionSample& sample : kResolutionRule) {
    sum += sample.weight;
    // Standard deviation r/2: ordinate exp(-2 offset²), to the three digits of the table.
    EXPECT_NEAR(sample.weight * 4.89, std::exp(-2 * sample.offset * sample.offset), 3e-3);
  }
  EXPECT_NEAR(sum, 0.999999, 1e-15);
}

template <class T>
class Resolution : public ::testing::Test {
 protected:
  /// The curve y = 10 q on an uneven grid with one value twice.
  static CSolution Line() {
    CSolution solution = MakeGrid({0.1, 0.2, 0.4, 0.4, 0.5, 0.8, 1.0});
    for (double q : solution.dataset_qz) solution.dataset_Rp.Append(10 * q);
    return solution;
  }
  static double ReadRp(const CSolution& solution, double q, int i) {
    InterpolatedPoint<T> out;
    InterpolateSolution<T>(out, solution, T(q), i, solution.dataset_qz);
    return static_cast<double>(out.Rp);
  }
  static constexpr double kTolerance = 32 * 1.2e-7;  // float; the values are near 10
};
TYPED_TEST_SUITE(Resolution, testing::Precisions, testing::PrecisionNames);

TYPED_TEST(Resolution, UsesNineSamplesFromOneTenBillionthOn) {
  using T = TypeParam;
  EXPECT_EQ(RuleOfResolution<T>(1e-10).samples, 9);
  EXPECT_EQ(RuleOfResolution<T>(0.01).samples, 9);
  EXPECT_EQ(RuleOfResolution<T>(0.01).weight[0], T(0.027607));
  for (double r : {9e-11, 0.0, -0.5, std::nan("")}) {
    const ResolutionRule<T> rule = RuleOfResolution<T>(r);
    EXPECT_EQ(rule.samples, 1);
    EXPECT_EQ(rule.weight[0], T(1.0));
    if (std::isnan(r)) continue;
    EXPECT_EQ(rule.shift[0], T(r)) << "the single sample moves by the resolution";
  }
}

TYPED_TEST(Resolution, InterpolatesUpwardsAndDownwards) {
  const CSolution line = this->Line();
  for (int i = 0; i < 5; ++i) {
    for (double q : {0.15, 0.3, 0.45, 0.6}) {
      EXPECT_NEAR(this->ReadRp(line, q, i), 10 * q, this->kTolerance) << q << " from " << i;
    }
  }
  EXPECT_NEAR(this->ReadRp(line, 0.3, 6), 3.0, this->kTolerance) << "down from the last point";
}

TYPED_TEST(Resolution, NeverUsesTheLastIntervalFromBelow) {
  const CSolution line = this->Line();
  EXPECT_NEAR(this->ReadRp(line, 0.9, 3), 4.0, this->kTolerance) << "value of point 3 itself";
  EXPECT_NEAR(this->ReadRp(line, 0.9, 5), 8.0, this->kTolerance);
  EXPECT_NEAR(this->ReadRp(line, 0.8, 4), 5.0, this->kTolerance) << "0.8 itself ends the search, too";
}

TYPED_TEST(Resolution, BeyondTheGridReadsThePointItself) {
  const CSolution line = this->Line();
  EXPECT_NEAR(this->ReadRp(line, 5.0, 2), 4.0, this->kTolerance);
  EXPECT_NEAR(this->ReadRp(line, 5.0, 6), 10.0, this->kTolerance);
  EXPECT_NEAR(this->ReadRp(line, 0.01, 2), 4.0, this->kTolerance);
  EXPECT_NEAR(this->ReadRp(line, 0.01, 0), 1.0, this->kTolerance);
}

TYPED_TEST(Resolution, ARepeatedGridValueIsHarmless) {
  const CSolution line = this->Line();
  EXPECT_NEAR(this->ReadRp(line, 0.4, 1), 4.0, this->kTolerance);
  EXPECT_NEAR(this->ReadRp(line, 0.4, 3), 4.0, this->kTolerance);
  EXPECT_NEAR(this->ReadRp(line, 0.4, 5), 4.0, this->kTolerance);
}

TYPED_TEST(Resolution, ReadsEveryCurveThatIsThere) {
  using T = TypeParam;
  CSolution line = this->Line();
  for (double q : line.dataset_qz) line.dataset_Rm.Append(-q);
  line.dataset_R0.Append(77);  // too short for the grid: not read
  InterpolatedPoint<T> out;
  out.R0 = T(5.0);
  InterpolateSolution<T>(out, line, T(0.3), 1, line.dataset_qz);
  EXPECT_NEAR(static_cast<double>(out.Rp), 3.0, this->kTolerance);
  EXPECT_NEAR(static_cast<double>(out.Rm), -0.3, this->kTolerance);
  EXPECT_EQ(out.R0, T(5.0));
}

TYPED_TEST(Resolution, FoldWithoutResolutionLosesAMillionth) {
  using T = TypeParam;
  const CSolution line = this->Line();
  for (int i = 0; i < 7; ++i) {
    const double folded = static_cast<double>(FoldResolution(line, i, FullRule<T>(0.0)).Rp);
    EXPECT_NEAR(folded, 0.999999 * line.dataset_Rp[i], 32 * Epsilon<T>() * 10);
  }
}

// At 0.1 with r = 0.16 the samples at -1 and -0.75 are below 0. Below the first point the value of the point
// itself is read, above it the line. The weights sum to 1 - w(-1) - w(-0.75).
TYPED_TEST(Resolution, FoldLeavesOutNegativePositions) {
  using T = TypeParam;
  const CSolution line = this->Line();
  const double r = 0.16;
  const double expected = 10 * (0.027607 * (0.1 + r) + 0.066462 * (0.1 + 0.75 * r) +
                                0.123722 * (0.1 + 0.5 * r) + 0.179959 * (0.1 + 0.25 * r)) +
                          1.0 * (0.123722 + 0.179959 + 0.204499);
  EXPECT_NEAR(static_cast<double>(FoldResolution(line, 0, FullRule<T>(r)).Rp), expected, this->kTolerance);
}

}  // namespace
}  // namespace tolvik::engine
