// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/kk_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#include "optics/kramers_kronig.h"

namespace tolvik {
namespace {

CColumnRow MakeRow(double energy, double column0, double column1) {
  CColumnRow row;
  row.energy = energy;
  row.values.Append(column0);
  row.values.Append(column1);
  return row;
}

CFitVariable Variable(std::int32_t id, std::int32_t row, double value) {
  CFitVariable variable;
  variable.fit_id = id;
  variable.fit_additional_id = row;
  variable.fit_value = value;
  variable.fit_lower_boundary = 0;
  variable.fit_upper_boundary = 0.1;
  return variable;
}

CColumnTable Zeros() {
  CColumnTable table(2);
  for (double E : {790.0, 800.0, 803.0, 806.0, 820.0}) table.Append(MakeRow(E, 0, 0));
  return table;
}

TEST(CKKFit, AddsAHatForBeta) {
  CKKFit fit(800, 900, Zeros(), Zeros());
  fit.fitvariables.Append(Variable(FitKind::kBetaKK, 2, 1e-3));
  fit.CalcError(fit.fitvariables);

  CColumnTable expected = Zeros();
  KramersKronigHat(expected, 2, 803.0 * 803.0 * 1e-3);
  for (std::uint32_t j = 0; j < expected.count; ++j) {
    const double square = expected.rows[j].energy * expected.rows[j].energy;
    EXPECT_NEAR(fit.worktable.rows[j].values[0], (expected.rows[j].values[0] + 1206.095) / square, 1e-18);
    EXPECT_NEAR(fit.worktable.rows[j].values[1], j == 2 ? 1e-3 : 0, 1e-18);
  }
}

TEST(CKKFit, SetsOneRowForDelta) {
  CKKFit fit(800, 900, Zeros(), Zeros());
  fit.fitvariables.Append(Variable(FitKind::kDeltaKK, 1, 2e-3));
  fit.CalcError(fit.fitvariables);
  EXPECT_NEAR(fit.worktable.rows[1].values[0], 2e-3 + 1206.095 / 640000, 1e-17);
  EXPECT_NEAR(fit.worktable.rows[2].values[0], 1206.095 / (803.0 * 803.0), 1e-17);
  EXPECT_EQ(fit.worktable.rows[1].values[1], 0);
}

TEST(CKKFit, BeginsEachEvaluationAnew) {
  CKKFit fit(800, 900, Zeros(), Zeros());
  fit.fitvariables.Append(Variable(FitKind::kBetaKK, 2, 1e-3));
  const double once = fit.CalcError(fit.fitvariables);
  EXPECT_EQ(fit.CalcError(fit.fitvariables), once);
  fit.fitvariables[0].fit_value = 2e-3;
  EXPECT_NE(fit.CalcError(fit.fitvariables), once);
}

TEST(CKKFit, ErrorIsThePlainSumOfSquares) {
  CColumnTable measured(2);
  measured.Append(MakeRow(800, 1206.095 / 640000 + 3e-3, 4e-3));
  measured.Append(MakeRow(820, 1206.095 / 672400 - 1e-3, -2e-3));
  CKKFit fit(800, 900, Zeros(), measured);
  ASSERT_EQ(fit.residuals.size, 4);
  EXPECT_NEAR(fit.CalcError(fit.fitvariables), 9e-6 + 16e-6 + 1e-6 + 4e-6, 1e-15);
  const double expected[] = {3e-3, -1e-3, 4e-3, -2e-3};  // delta of all rows, then beta of all rows
  for (std::int32_t i = 0; i < 4; ++i) EXPECT_NEAR(fit.residuals[i], expected[i], 1e-15);
}

TEST(CKKFit, PassesOverForeignVariables) {
  CKKFit fit(800, 900, Zeros(), Zeros());
  const double expected = fit.CalcError(fit.fitvariables);
  for (std::int32_t row : {-1, 0, 4, 5, INT32_MAX, INT32_MIN})
    fit.fitvariables.Append(Variable(FitKind::kBetaKK, row, 0.05));
  for (std::int32_t row : {-1, 5, INT32_MAX, INT32_MIN})
    fit.fitvariables.Append(Variable(FitKind::kDeltaKK, row, 0.05));
  fit.fitvariables.Append(Variable(FitKind::kDelta, 2, 0.05));
  EXPECT_EQ(fit.CalcError(fit.fitvariables), expected);
  EXPECT_EQ(fit.worktable.rows[0].values[1], 0);  // the end rows have no hat
  EXPECT_EQ(fit.worktable.rows[4].values[1], 0);
}

TEST(CKKFit, TakesEmptyTablesAndNoVariables) {
  const CColumnTable none(2);
  CKKFit fit(800, 900, none, none);
  fit.fitvariables.Append(Variable(FitKind::kBetaKK, 1, 0.05));
  fit.RestartFit();
  EXPECT_EQ(fit.CalcError(fit.fitvariables), 0);
  CKKFit nothing_to_vary(800, 900, Zeros(), Zeros());
  nothing_to_vary.RestartFit();
  nothing_to_vary.LevenbergStep();
  EXPECT_EQ(nothing_to_vary.parameters.size, 0);
  EXPECT_THROW(CKKFit(800, 900, CColumnTable(3), none), std::invalid_argument);
}

// The columns of a known spectrum: a smooth background that lies outside the window and an edge with a
// resonance in it. Its delta is calculated with the transform itself, so that the fit can reach it exactly.
CColumnTable KnownSpectrum() {
  CColumnTable table(2);
  for (double E = 700; E < 1000; E += E < 780 || E > 920 ? 10 : 2.5) {
    const double x = (E - 850) / 8;
    const bool window = E >= 800 && E <= 900;
    table.Append(MakeRow(E, 0, window ? 1e-3 * (std::atan(x) / 3.2 + 0.5) + 2e-3 / (1 + x * x) : 8e-4));
  }
  return table;
}

TEST(CKKFit, RecoversAnAbsorptionEdge) {
  const CColumnTable truth = KnownSpectrum();
  CColumnTable measured = truth;
  ToTransformForm(measured);
  KramersKronigAll(measured);
  FromTransformForm(measured, 1206.095);

  CColumnTable background = truth;
  CArray<CFitVariable> variables;
  for (std::int32_t i = 0; i < static_cast<std::int32_t>(background.count); ++i) {
    CColumnRow& row = background.rows[i];
    if (row.energy < 800 || row.energy > 900) continue;
    variables.Append(Variable(FitKind::kBetaKK, i, 1.5e-3));  // a flat start
    row.values[1] = 0;
  }
  ASSERT_EQ(variables.size, 41);
  ToTransformForm(background);
  KramersKronigAll(background);

  CKKFit fit(800, 900, background, measured);
  fit.fitvariables = variables;
  fit.RestartFit();
  const double start = fit.CalcError(fit.fitvariables);
  for (int i = 0; i < 3; ++i) fit.LevenbergStep();
  EXPECT_LT(fit.CalcError(fit.fitvariables), 1e-6 * start);
  for (const CFitVariable& variable : fit.fitvariables) {
    const CColumnRow& row = truth.rows[variable.fit_additional_id];
    EXPECT_NEAR(variable.fit_value, row.values[1], 1e-5) << "at " << row.energy;
  }
}

// A damped oscillator obeys the relation by itself: n - 1 = f / (w0² - w² - i γ w) = -delta + i beta. The
// constant of its delta E² is f (see kramers_kronig_test.cpp), so f = 1206.095 makes it a material of this
// class.
TEST(CKKFit, FindsDeltaAndBetaOfADampedOscillator) {
  const double f = 1206.095, w0 = 850, gamma = 20;
  const auto oscillator = [=](double w) {
    const double norm = (w0 * w0 - w * w) * (w0 * w0 - w * w) + gamma * gamma * w * w;
    return MakeRow(w, f * (w * w - w0 * w0) / norm, f * gamma * w / norm);
  };
  CColumnTable background(2), measured(2);
  CArray<CFitVariable> variables;
  for (double w = 1; w < 60000; w += w < 700 ? 5 : w < 1000 ? 1 : 0.01 * w) {
    background.Append(oscillator(w));
    CColumnRow& row = background.rows[background.count - 1];
    if (w > 790 && w < 910) measured.Append(row);
    if (w < 800 || w > 900) continue;
    row.values[1] = 0;
    variables.Append(Variable(FitKind::kBetaKK, static_cast<std::int32_t>(background.count) - 1, 0.02));
  }
  ToTransformForm(background);
  KramersKronigAll(background);

  CKKFit fit(800, 900, background, measured);
  fit.fitvariables = variables;
  fit.RestartFit();
  fit.LevenbergStep();
  const double tolerance =
      0.005 * f / (w0 * gamma);  // of the top; rows 1 eV apart on a peak of 20 eV: (1/20)²
  for (const CColumnRow& row : fit.worktable) {
    if (row.energy < 800 || row.energy > 900) continue;
    EXPECT_NEAR(row.values[0], oscillator(row.energy).values[0], tolerance) << "delta at " << row.energy;
    EXPECT_NEAR(row.values[1], oscillator(row.energy).values[1], tolerance) << "beta at " << row.energy;
  }
}

}  // namespace
}  // namespace tolvik
