// SPDX-License-Identifier: GPL-2.0-or-later
// Expected values are closed forms on values that are powers of ten, where the logarithms are whole numbers.
#include "fit/error_functions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>

namespace tolvik {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kTolerance = 1e-15;

CArray<double> Column(std::initializer_list<double> values) {
  CArray<double> column;
  for (const double value : values) column.Append(value);
  return column;
}

// Four points; measured and calculated reflectivity differ by whole decades.
class ErrorFunctions : public ::testing::Test {
 protected:
  ErrorFunctions() {
    dataset.dataset_qz = Column({0.1, 0.2, 0.3, 0.4});
    dataset.dataset_R0 = Column({1e-1, 1e-2, 1e-3, 1e-4});
    solution.dataset_qz = dataset.dataset_qz;
    solution.dataset_R0 = Column({1e-1, 1e-3, 1e-5, 1e-7});  // L - log c = 0, 1, 2, 3
    dataset.dataset_Rp = dataset.dataset_R0;
    dataset.dataset_Rm = dataset.dataset_R0;
    solution.dataset_Rp = solution.dataset_R0;
    solution.dataset_Rm = Column({1e-2, 1e-2, 1e-2, 1e-2});  // differences 1, 0, -1, -2
    dataset.dataset_A = Column({0.5, 0.25, -0.25, 0});
    solution.dataset_A = Column({0.25, 0.25, 0.25, 1});  // differences 1/4, 0, -1/2, -1
    residuals.Assign(4, -9.0);
  }

  double Log(double lo = 0, double hi = 1, double multiplicator = 1, double translator = 0) {
    return CalcLogError(solution, dataset, residuals, lo, hi, multiplicator, translator);
  }
  double Asymmetry(double lo = 0, double hi = 1) {
    return CalcAsymmetryError(solution, dataset, residuals, lo, hi, dataset.dataset_A.size);
  }
  double Pair(double lo = 0, double hi = 1, double multiplicator = 1, double translator = 0) {
    return CalcPairLogError(solution, dataset, residuals, lo, hi, multiplicator, translator,
                            dataset.dataset_Rp.size);
  }
  double Relative(double lo = 0, double hi = 1) {
    return CalcRelativeLogError(solution, dataset, lo, hi, 1, 0);
  }

  CSolution solution;
  CDataset dataset;
  CArray<double> residuals;
};

TEST_F(ErrorFunctions, LogErrorIsAMeanOfSquaredDecades) {
  EXPECT_NEAR(Log(), 14.0 / 4, kTolerance);
  for (std::int32_t i = 0; i < 4; ++i) EXPECT_NEAR(residuals[i], i, kTolerance);
}

TEST_F(ErrorFunctions, BothEndsOfTheWindowCount) {
  EXPECT_NEAR(Log(0.2, 0.3), (1.0 + 4) / 2, kTolerance);
  EXPECT_NEAR(Log(std::nextafter(0.2, 1), std::nextafter(0.4, 0)), 4, kTolerance);
  EXPECT_NEAR(Asymmetry(0.2, 0.3), 0.125, kTolerance);
  EXPECT_NEAR(Pair(0.3, 0.3), 5, kTolerance);
}

TEST_F(ErrorFunctions, PointsOutsideKeepTheirOldResidual) {
  Log(0.2, 0.3);
  EXPECT_EQ(residuals[0], -9);
  EXPECT_NEAR(residuals[1], 1, kTolerance);
  EXPECT_NEAR(residuals[2], 2, kTolerance);
  EXPECT_EQ(residuals[3], -9);
}

TEST_F(ErrorFunctions, EmptyResidualsStayEmpty) {
  residuals.Clear();
  EXPECT_NEAR(Log(), 3.5, kTolerance);
  EXPECT_NEAR(Asymmetry(), 0.328125, kTolerance);
  EXPECT_NEAR(Pair(), 5, kTolerance);
  EXPECT_TRUE(residuals.IsEmpty());
}

TEST_F(ErrorFunctions, ShortResidualsAreWrittenAsFarAsTheyReach) {
  residuals.Assign(2, -9.0);
  Log();
  EXPECT_NEAR(residuals[1], 1, kTolerance);
  EXPECT_EQ(residuals.size, 2);
}

TEST_F(ErrorFunctions, EmptyDatasetGivesZero) {
  const CDataset empty;
  double multiplicator = 5;
  EXPECT_EQ(CalcLogError(solution, empty, residuals, 0, 1, 1, 0), 0);
  EXPECT_EQ(CalcScaledLogError(solution, empty, residuals, 0, 1, multiplicator, 0), 0);
  EXPECT_TRUE(std::isnan(multiplicator));
  EXPECT_EQ(CalcRelativeLogError(solution, empty, 0, 1, 1, 0), 0);
  EXPECT_EQ(CalcAsymmetryError(solution, empty, residuals, 0, 1, 0), 0);
  EXPECT_EQ(CalcPairLogError(solution, empty, residuals, 0, 1, 1, 0, 0), 0);
  EXPECT_EQ(CalcExtremaError(empty, empty), 0);
  EXPECT_EQ(CalcLinearError(solution, empty, residuals, 0, 1, 1), 0);
  EXPECT_EQ(CalcWindowLogError(solution, empty, residuals, 0, 1, 1), 0);
  EXPECT_EQ(CalcDevianceError(solution, empty, 0, 1, 1, 0), 0);
  EXPECT_EQ(CalcRelativeAsymmetryError(solution, empty, 0, 1), 0);
  EXPECT_EQ(CalcRelativePairLogError(solution, empty, 0, 1, 1, 0, 0), 0);
}

TEST_F(ErrorFunctions, WindowWithoutAPointIsAPerfectFit) {
  double multiplicator = 5;
  EXPECT_EQ(Log(0.6, 0.9), 0);
  EXPECT_EQ(Log(0.4, 0.1), 0);  // crossed
  EXPECT_EQ(CalcScaledLogError(solution, dataset, residuals, 0.6, 0.9, multiplicator, 0), 0);
  EXPECT_TRUE(std::isnan(multiplicator));
  EXPECT_EQ(Relative(0.6, 0.9), 0);
  EXPECT_EQ(Asymmetry(0.6, 0.9), 0);
  EXPECT_EQ(Pair(0.6, 0.9), 0);
  EXPECT_EQ(residuals[0], -9);
}

TEST_F(ErrorFunctions, AbscissaThatIsNoNumberIsOutside) {
  dataset.dataset_qz[3] = kNaN;
  EXPECT_NEAR(Log(), 5.0 / 3, kTolerance);
}

TEST_F(ErrorFunctions, PointsWithoutALogarithmAreSkippedOnEitherSide) {
  dataset.dataset_R0[0] = 0;
  EXPECT_NEAR(Log(), 14.0 / 3, kTolerance);
  dataset.dataset_R0[0] = -1;
  EXPECT_NEAR(Log(), 14.0 / 3, kTolerance);
  solution.dataset_R0[3] = 0;
  EXPECT_NEAR(Log(), 5.0 / 2, kTolerance);
  solution.dataset_R0[3] = kNaN;
  EXPECT_NEAR(Log(), 5.0 / 2, kTolerance);
  dataset.dataset_R0[1] = kNaN;
  EXPECT_NEAR(Log(), 4.0, kTolerance);
}

TEST_F(ErrorFunctions, MissingValuesAreNotAccepted) {
  dataset.dataset_R0 = Column({1e-1, 1e-2, 1e-3});
  EXPECT_NEAR(Log(), 5.0 / 3, kTolerance);
  solution.dataset_R0 = Column({1e-1, 1e-3});
  EXPECT_NEAR(Log(), 1.0 / 2, kTolerance);
  EXPECT_NEAR(CalcPairLogError(solution, dataset, residuals, 0, 1, 1, 0, 4000), 5, kTolerance);
  dataset.dataset_qz.Assign(1, 0.1);
  EXPECT_NEAR(Asymmetry(), 0.0625, kTolerance);  // points without an abscissa
  EXPECT_NEAR(CalcAsymmetryError(solution, dataset, residuals, 0, 1, 4000), 0.0625, kTolerance);
}

TEST_F(ErrorFunctions, SumWithTheTranslatorIsNotTested) {
  EXPECT_TRUE(std::isnan(Log(0, 1, 1, -1e-2)));  // 1e-3 - 1e-2 < 0
  EXPECT_EQ(Log(0, 0.2, 1, -1e-2), kInfinity);   // 1e-2 - 1e-2 = 0
  EXPECT_TRUE(std::isnan(Pair(0, 1, 1, -1e-2)));
  solution.dataset_R0[2] = kInfinity;  // the logarithm of a NaN minus an infinite one is still NaN
  EXPECT_TRUE(std::isnan(Log(0.3, 0.3, 1, -1e-2)));
}

TEST_F(ErrorFunctions, TranslatorIsAddedBeforeTheScale) {
  // 10 (1e-1 + 9e-1) = 10 against 1e-1: two decades.
  EXPECT_NEAR(Log(0.1, 0.1, 10, 0.9), 4, kTolerance);
}

TEST_F(ErrorFunctions, MultiplicatorTwoShiftsEveryPointByLogTwo) {
  Log(0, 1, 2);
  for (std::int32_t i = 0; i < 4; ++i) EXPECT_NEAR(residuals[i], i + 0.30102999566398119521, kTolerance);
}

TEST_F(ErrorFunctions, RelativeErrorOfIdenticalCurvesIsZero) {
  solution.dataset_R0 = dataset.dataset_R0;
  EXPECT_EQ(Relative(), 0);
}

TEST_F(ErrorFunctions, RelativeErrorDividesByBothSquares) {
  // a = -1, -2, -3, -4; b = -1, -3, -5, -7: 14 / (30 + 84).
  EXPECT_NEAR(Relative(), 14.0 / 114, kTolerance);
  // Both logarithms 0: the denominator is 0 and so is the numerator.
  dataset.dataset_R0[0] = solution.dataset_R0[0] = 1;
  EXPECT_EQ(Relative(0.1, 0.1), 0);
}

TEST_F(ErrorFunctions, ScaledErrorOfACurveEqualToTheData) {
  solution.dataset_R0 = dataset.dataset_R0;
  double multiplicator = 5;
  EXPECT_EQ(CalcScaledLogError(solution, dataset, residuals, 0, 1, multiplicator, 0), 0);
  EXPECT_EQ(multiplicator, 1);
}

TEST_F(ErrorFunctions, ScaledErrorTakesTheNaturalExponentialOfTheMeanDecade) {
  double multiplicator = 5;
  const double error = CalcScaledLogError(solution, dataset, residuals, 0, 1, multiplicator, 0);
  EXPECT_DOUBLE_EQ(multiplicator, std::exp(1.5));     // mean of 0, 1, 2, 3
  const double shift = 1.5 * 0.43429448190325182765;  // log10(e)
  double expected = 0;
  for (int i = 0; i < 4; ++i) {
    expected += (i + shift) * (i + shift) / 4;
    EXPECT_NEAR(residuals[i], i + shift, 2 * kTolerance);
  }
  EXPECT_NEAR(error, expected, 4 * kTolerance);
}

TEST_F(ErrorFunctions, ScaledErrorLeavesTheTranslatorOutOfTheMultiplicator) {
  double multiplicator = 5;
  const double error = CalcScaledLogError(solution, dataset, residuals, 0.1, 0.1, multiplicator, 0.9);
  EXPECT_EQ(multiplicator, 1);        // 1e-1 against 1e-1
  EXPECT_NEAR(error, 1, kTolerance);  // but 1e-1 + 0.9 is a decade higher
}

TEST_F(ErrorFunctions, AsymmetryIsComparedLinearly) {
  EXPECT_NEAR(Asymmetry(), (1.0 / 16 + 0 + 1.0 / 4 + 1) / 4, kTolerance);
  EXPECT_EQ(residuals[0], 0.25);
  EXPECT_EQ(residuals[1], 0);
  EXPECT_EQ(residuals[2], -0.5);
  EXPECT_EQ(residuals[3], -1);
  dataset.dataset_A[1] = kNaN;
  EXPECT_TRUE(std::isnan(Asymmetry()));
}

TEST_F(ErrorFunctions, CallerSaysHowManyPointsCount) {
  EXPECT_NEAR(CalcAsymmetryError(solution, dataset, residuals, 0, 1, 3), 0.3125 / 3, kTolerance);
  EXPECT_EQ(residuals[3], -9);
  EXPECT_NEAR(CalcPairLogError(solution, dataset, residuals, 0, 1, 1, 0, 2), 1, kTolerance);
}

TEST_F(ErrorFunctions, PairErrorDividesByPointsAndAddsMagnitudes) {
  EXPECT_NEAR(Pair(), (0 + 1 + 4 + 9 + 1 + 0 + 1 + 4) / 4.0, kTolerance);
  EXPECT_NEAR(residuals[0], 1, kTolerance);
  EXPECT_NEAR(residuals[2], 3, kTolerance);
  EXPECT_NEAR(residuals[3], 5, kTolerance);
}

TEST_F(ErrorFunctions, PairNeedsAllFourValuesPositive) {
  const CSolution good = solution;
  const CDataset measured = dataset;
  const double without_last = (1.0 + 1 + 5) / 3;
  dataset.dataset_Rp[3] = 0;
  EXPECT_NEAR(Pair(), without_last, kTolerance);
  dataset = measured;
  dataset.dataset_Rm[3] = -1;
  EXPECT_NEAR(Pair(), without_last, kTolerance);
  dataset = measured;
  solution.dataset_Rp[3] = 0;
  EXPECT_NEAR(Pair(), without_last, kTolerance);
  solution = good;
  solution.dataset_Rm[3] = kNaN;
  EXPECT_NEAR(Pair(), without_last, kTolerance);
}

TEST_F(ErrorFunctions, ExtremaAreComparedByPosition) {
  CDataset measured;
  measured.dataset_qz = Column({0, 1, 2, 3, 4, 5, 6});
  measured.dataset_R0 = Column({0, 2, 1, 2, 0, 3, 1});  // maxima 1, 3, 5; minima 2, 4
  CSolution curve;
  curve.dataset_qz = Column({0, 1.5, 3.5, 6, 7});
  curve.dataset_R0 = Column({0, 1, 0, 1, 0});  // maxima 1.5, 6; minimum 3.5
  EXPECT_DOUBLE_EQ(CalcExtremaError(curve, measured), (0.5 + 1.5 + 1) + (1.5 + 0.5));
  curve.dataset_R0 = Column({0, 1, 2, 3, 4});  // no extremum: each of the five costs 1e99
  EXPECT_DOUBLE_EQ(CalcExtremaError(curve, measured), 5e99);
  measured.dataset_qz = Column({0, 1, 2});
  EXPECT_DOUBLE_EQ(CalcExtremaError(curve, measured), 2e99);  // points without an abscissa do not count
}

TEST_F(ErrorFunctions, LinearErrorListsTheWindow) {
  dataset.dataset_R0 = Column({9, 1, 2, 9});
  solution.dataset_R0 = Column({9, 1, 5, 9});
  EXPECT_DOUBLE_EQ(CalcLinearError(solution, dataset, residuals, 0.2, 0.3, 2), (1.0 + 1) / 2);
  EXPECT_EQ(residuals[0], 1);   // 2·1 - 1
  EXPECT_EQ(residuals[1], -1);  // 2·2 - 5
  EXPECT_EQ(residuals[2], -9);
}

TEST_F(ErrorFunctions, WindowLogErrorListsTheWindowAndTestsNoSign) {
  EXPECT_NEAR(CalcWindowLogError(solution, dataset, residuals, 0.2, 0.3, 10), (4.0 + 9) / 2, kTolerance);
  EXPECT_NEAR(residuals[0], 2, kTolerance);
  EXPECT_NEAR(residuals[1], 3, kTolerance);
  dataset.dataset_R0[1] = -1;
  EXPECT_TRUE(std::isnan(CalcWindowLogError(solution, dataset, residuals, 0.2, 0.3, 10)));
}

TEST_F(ErrorFunctions, Deviance) {
  // a = -2, b = -3: 2 (b - a - b ln(b/a)) = 2 (-1 + 3 ln 1.5).
  EXPECT_NEAR(CalcDevianceError(solution, dataset, 0.2, 0.2, 1, 0), -2 + 6 * std::log(1.5), kTolerance);
  dataset.dataset_R0[1] = 0;
  EXPECT_EQ(CalcDevianceError(solution, dataset, 0.2, 0.2, 1, 0), 0);
}

TEST_F(ErrorFunctions, RelativeAsymmetry) {
  // 1/16 + 0 + 1/4 + 1 over (1/4 + 2/16 + 0) + (3/16 + 1).
  EXPECT_NEAR(CalcRelativeAsymmetryError(solution, dataset, 0, 1), 1.3125 / 1.5625, kTolerance);
  dataset.dataset_A[0] = solution.dataset_A[0] = 0;
  EXPECT_EQ(CalcRelativeAsymmetryError(solution, dataset, 0.1, 0.1), 0);
}

TEST_F(ErrorFunctions, RelativePair) {
  // Differences 14 + 6; squares 30 + 84 of Rp and 30 + 16 of Rm.
  EXPECT_NEAR(CalcRelativePairLogError(solution, dataset, 0, 1, 1, 0, 4), 20.0 / 160, kTolerance);
  // First point only: 0 + 1 over (1 + 1) + (1 + 4).
  EXPECT_NEAR(CalcRelativePairLogError(solution, dataset, 0, 1, 1, 0, 1), 1.0 / 7, kTolerance);
}

}  // namespace
}  // namespace tolvik
