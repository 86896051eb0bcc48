// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/dataset_errors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>

#include "support/film.h"

namespace tolvik {
namespace {

constexpr double kEnergyTimesWavelength = 12398.326;

// Fresnel reflectivity of a bare, smooth substrate for sigma light.
double Fresnel(double qz, double energy, double delta, double beta) {
  const double k0 = 6.283185307179586 / (kEnergyTimesWavelength / energy);
  const double sine = qz / (2 * k0);
  const std::complex<double> n(1 - delta, beta);
  const std::complex<double> below = std::sqrt(n * n - 1.0 + sine * sine);
  return std::norm((sine - below) / (sine + below));
}

CState MakeSubstrate() {
  CState state;
  state.disablescript = 1;
  state.layers[0].layer_delta = 7.58e-6;
  state.layers[0].layer_beta = 1.77e-7;
  return state;
}

// Points of the substrate at an energy, each times a factor.
CDataset MeasureSubstrate(double energy, double factor, double shift = 0) {
  CDataset dataset = testing::MakeGrid(10);
  dataset.datasetenergy = energy;
  for (const double q : dataset.dataset_qz) {
    dataset.dataset_R0.Append(factor * Fresnel(q + shift, energy, 7.58e-6, 1.77e-7));
  }
  return dataset;
}

double Evaluate(CState& state, CSolution& solution) {
  CArray<double> none;
  return SumDatasetErrors(state, solution, none);
}
double Evaluate(CState state) {
  CSolution solution;
  return Evaluate(state, solution);
}

TEST(DatasetErrors, OneDecadeAwayFromTheFresnelCurve) {
  CState state = MakeSubstrate();
  state.datasets.Append(MeasureSubstrate(8000, 10));
  EXPECT_NEAR(Evaluate(state), 1, 1e-9);
  state.datasets[0].datasetmultiplicator = 0.1;
  EXPECT_NEAR(Evaluate(state), 0, 1e-9);
}

TEST(DatasetErrors, DatasetsAddUpAndTheLastOneLeavesItsConditions) {
  CState state = MakeSubstrate();
  state.datasets.Append(MeasureSubstrate(8000, 10));
  state.datasets.Append(MeasureSubstrate(7000, 7));  // inactive
  state.datasets.Append(MeasureSubstrate(12000, 100));
  state.datasets[1].datasetactive = 0;
  state.datasets[2].datasetresolution = 0;
  state.datasets[2].datasetray1pire = 0.25;
  state.datasets[2].datasetray2sigmaim = -0.5;
  CSolution solution;
  // Sigma and pi light of the second measurement are reflected alike at these angles; their intensities add
  // up.
  const double second = std::pow(2 - std::log10(1 + 0.25 * 0.25), 2);
  EXPECT_NEAR(Evaluate(state, solution), 1 + second, 2e-3);
  EXPECT_DOUBLE_EQ(state.lambda, kEnergyTimesWavelength / 12000);
  EXPECT_EQ(state.activedatasetindex, 2);
  EXPECT_EQ(state.ray1sigmare, 1);
  EXPECT_EQ(state.ray1pire, 0.25);
  EXPECT_EQ(state.ray2sigmaim, -0.5);
  EXPECT_EQ(state.ray2pire, 1);
  EXPECT_EQ(solution.datasetenergy, 12000);
}

TEST(DatasetErrors, NoActiveDatasetIsZero) {
  CState state = MakeSubstrate();
  EXPECT_EQ(Evaluate(state), 0);
  state.datasets.Append(MeasureSubstrate(8000, 10));
  state.datasets[0].datasetactive = 0;
  EXPECT_EQ(Evaluate(state), 0);
  state.datasets[0] = CDataset();
  state.datasets[0].datasetactive = 1;  // active, but without points
  EXPECT_EQ(Evaluate(state), 0);
}

TEST(DatasetErrors, CalculatesAtShiftedPointsButTestsTheMeasuredOnes) {
  CState state = MakeSubstrate();
  state.datasets.Append(MeasureSubstrate(8000, 10, 0.01));
  state.datasets[0].datasetqztranslation = 0.01;
  CSolution solution;
  EXPECT_NEAR(Evaluate(state, solution), 1, 1e-9);
  EXPECT_EQ(solution.dataset_qz[0], 0.02 + 0.01);
  EXPECT_EQ(state.datasets[0].dataset_qz[0], 0.02);
  // The last point is at 0.3; the window does not use the shifted qz.
  state.datasets[0].dataset_R0[9] *= 10;
  state.fitqzmin = state.fitqzmax = state.datasets[0].dataset_qz[9];
  EXPECT_NEAR(Evaluate(state, solution), 4, 1e-9);
}

TEST(DatasetErrors, ResolutionComesFromTheDataset) {
  CState state = MakeSubstrate();
  state.datasets.Append(MeasureSubstrate(8000, 10));
  state.datasets[0].datasetresolution = 0.01;
  state.resolution = 0.5;
  CSolution solution;
  EXPECT_GT(std::abs(Evaluate(state, solution) - 1), 1e-3);
  EXPECT_EQ(state.resolution, 0.01);
}

TEST(DatasetErrors, ErrorFunctionThreeActsAsNone) {
  CState state = MakeSubstrate();
  state.datasets.Append(MeasureSubstrate(8000, 10));
  state.fiterrorfunction = 3;
  EXPECT_NEAR(Evaluate(state), 1, 1e-9);
}

TEST(DatasetErrors, RelativeErrorFunctionWritesNoResiduals) {
  CState state = MakeSubstrate();
  state.datasets.Append(MeasureSubstrate(8000, 10));
  state.fiterrorfunction = FitErrorFunction::kRelativeLog;
  CArray<double> residuals;
  residuals.Assign(10, -9.0);
  CSolution solution;
  double differences = 0;
  double squares = 0;
  for (const double m : state.datasets[0].dataset_R0) {
    differences += 1;
    squares += std::pow(std::log10(m), 2) + std::pow(std::log10(m) - 1, 2);
  }
  EXPECT_NEAR(SumDatasetErrors(state, solution, residuals), differences / squares, 1e-9);
  for (const double r : residuals) EXPECT_EQ(r, -9);
}

TEST(DatasetErrors, ScaledErrorStoresItsMultiplicator) {
  CState state = MakeSubstrate();
  state.datasets.Append(MeasureSubstrate(8000, 10));
  state.datasets[0].datasetmultiplicator = 123;
  state.fiterrorfunction = FitErrorFunction::kScaledLog;
  CSolution solution;
  const double shift = 1 + std::log10(std::exp(1.0));
  EXPECT_NEAR(Evaluate(state, solution), shift * shift, 1e-9);
  EXPECT_NEAR(state.datasets[0].datasetmultiplicator, std::exp(1.0), 1e-9);
  EXPECT_EQ(solution.datasetmultiplicator, 123);  // the curve was copied before
}

TEST(DatasetErrors, UnknownKindCalculatesNothing) {
  CState state = MakeSubstrate();
  state.datasets.Append(MeasureSubstrate(8000, 10));
  state.fitasymmetry = 6;
  CSolution solution;
  EXPECT_EQ(Evaluate(state, solution), 0);
  EXPECT_EQ(solution.dataset_R0, state.datasets[0].dataset_R0);  // the measurement as it was copied
  EXPECT_TRUE(solution.dataset_Rp.IsEmpty());
  state.fitasymmetry = -1;
  EXPECT_EQ(Evaluate(state, solution), 0);
}

TEST(DatasetErrors, LaterDatasetsOverwriteTheFrontOfTheResiduals) {
  CState state = MakeSubstrate();
  state.datasets.Append(MeasureSubstrate(8000, 10));
  CDataset shorter = MeasureSubstrate(8000, 100);
  shorter.dataset_qz.size = 4;
  shorter.dataset_R0.size = 4;
  state.datasets.Append(shorter);
  CArray<double> residuals;
  residuals.Assign(14, 0.0);
  CSolution solution;
  SumDatasetErrors(state, solution, residuals);
  for (std::int32_t i = 0; i < 14; ++i) EXPECT_NEAR(residuals[i], i < 4 ? 2 : i < 10 ? 1 : 0, 1e-9);
}

TEST(DatasetErrors, ColumnsOfUnequalLengthStayInside) {
  for (std::int32_t asymmetry = 0; asymmetry < 7; ++asymmetry) {
    CState state = MakeSubstrate();
    CDataset dataset = MeasureSubstrate(8000, 10);
    dataset.dataset_R0.size = 3;
    dataset.dataset_Rp.Assign(40, 0.5);
    dataset.dataset_Rm.Assign(2, 0.5);
    dataset.dataset_A.Assign(30, 0.5);
    dataset.dataset_eng.Assign(1, 8000);
    state.datasets.Append(dataset);
    state.fitasymmetry = asymmetry;
    for (state.averaging = 0; state.averaging < 3; ++state.averaging) {
      CArray<double> residuals;
      residuals.Assign(10, 0.0);
      CSolution solution;
      const double error = SumDatasetErrors(state, solution, residuals);
      if (asymmetry == 0 && state.averaging == 0) {
        EXPECT_NEAR(error, 1, 1e-9);  // three points
      }
    }
  }
}

TEST(DatasetErrors, DataThatAreNoNumbersAreLeftOut) {
  CState state = MakeSubstrate();
  CDataset dataset = MeasureSubstrate(8000, 10);
  dataset.dataset_R0[2] = NAN;
  dataset.dataset_R0[3] = INFINITY;
  dataset.dataset_qz[4] = NAN;  // stops the curve there; later points keep 1.0
  state.datasets.Append(dataset);
  EXPECT_EQ(Evaluate(state), INFINITY);
  state.datasets[0].dataset_R0[3] = -1;
  EXPECT_FALSE(std::isnan(Evaluate(state)));
}

// Ten points 1, 2, 4, 8 ... so that every window has a different sum.
CDataset MakePowers() {
  CDataset dataset = testing::MakeGrid(10);
  for (std::int32_t i = 0; i < 10; ++i) {
    dataset.dataset_R0.Append(std::ldexp(1.0, i));
    dataset.dataset_A.Append(-std::ldexp(1.0, i));
  }
  return dataset;
}

TEST(AverageDataset, WindowsShortenAtTheUpperEndOnly) {
  CDataset dataset = MakePowers();
  AverageDataset(dataset, 2);
  EXPECT_TRUE(std::isnan(dataset.dataset_R0[0]));
  EXPECT_TRUE(std::isnan(dataset.dataset_R0[1]));
  EXPECT_DOUBLE_EQ(dataset.dataset_R0[2], (1 + 2 + 4 + 8 + 16) / 5.0);
  EXPECT_DOUBLE_EQ(dataset.dataset_R0[5], (8 + 16 + 32 + 64 + 128) / 5.0);
  EXPECT_DOUBLE_EQ(dataset.dataset_R0[8], (64 + 128 + 256 + 512) / 4.0);
  EXPECT_DOUBLE_EQ(dataset.dataset_R0[9], (128 + 256 + 512) / 3.0);
  EXPECT_DOUBLE_EQ(dataset.dataset_A[9], -(128 + 256 + 512) / 3.0);
  EXPECT_TRUE(dataset.dataset_Rp.IsEmpty());
  EXPECT_EQ(dataset.dataset_qz, MakePowers().dataset_qz);
}

TEST(AverageDataset, WiderThanTheCurveAndNegative) {
  for (const std::int32_t width : {10, 11, INT32_MAX, -1, -10, INT32_MIN}) {
    CDataset dataset = MakePowers();
    AverageDataset(dataset, width);
    for (const double r : dataset.dataset_R0) EXPECT_TRUE(std::isnan(r)) << width;  // no window anywhere
  }
}

TEST(AverageDataset, ShortColumnIsAveragedAsFarAsItReaches) {
  CDataset dataset = MakePowers();
  dataset.dataset_R0.size = 4;
  AverageDataset(dataset, 1);
  EXPECT_DOUBLE_EQ(dataset.dataset_R0[1], (1 + 2 + 4) / 3.0);
  EXPECT_DOUBLE_EQ(dataset.dataset_R0[3], (4 + 8) / 2.0);
  EXPECT_DOUBLE_EQ(dataset.dataset_A[3], -(4 + 8 + 16) / 3.0);
}

TEST(DatasetErrors, AveragingLeavesTheStoredDataset) {
  CState state = MakeSubstrate();
  state.datasets.Append(MakePowers());
  state.averaging = 2;
  CSolution solution;
  Evaluate(state, solution);
  EXPECT_EQ(state.datasets[0].dataset_R0, MakePowers().dataset_R0);
}

TEST(DatasetErrors, AveragedAsymmetryIsNoNumberWithTheFirstPointsInTheWindow) {
  for (const std::int32_t asymmetry : {1, 5}) {
    CState state = MakeSubstrate();
    CDataset dataset = MeasureSubstrate(8000, 1);
    dataset.dataset_A.Assign(10, 0.0);
    dataset.dataset_eng.Assign(10, 8000.0);
    state.datasets.Append(dataset);
    state.fitasymmetry = asymmetry;
    EXPECT_FALSE(std::isnan(Evaluate(state))) << asymmetry;
    state.averaging = 2;
    EXPECT_TRUE(std::isnan(Evaluate(state))) << asymmetry;
    state.fitqzmin = dataset.dataset_qz[2];
    EXPECT_FALSE(std::isnan(Evaluate(state))) << asymmetry;
  }
}

// A magnetic substrate with tables at two energies, and points whose curves are those of the calculation
// itself.
class DatasetErrorsOfRays : public ::testing::Test {
 protected:
  DatasetErrorsOfRays() {
    state = MakeSubstrate();
    state.magnetizationmode = MagnetizationMode::kGaussFunctions;
    state.layers[0].layer_ddelta = 2e-6;
    state.layers[0].layer_dbeta = 1e-7;
    state.layers[0].layer_db = "si";
    AddTable("si", 7.58e-6);
    AddTable("vacuum", 0);
    CDataset dataset = testing::MakeGrid(10);
    dataset.dataset_eng.Assign(10, 8000.0);
    state.datasets.Append(dataset);
  }
  void AddTable(const char* name, double delta) {
    COpticalTable table;
    table.name = name;
    for (const double energy : {7000.0, 9000.0}) {
      CColumnRow row;
      row.energy = energy;
      row.values.Append(delta);
      row.values.Append(delta / 50);
      table.db.Append(row);
      row.values[0] = delta / 4;
      table.m.Append(row);
    }
    state.opticaltables.Append(table);
  }
  // Takes the calculated curves as the measurement.
  void TakeCurves(std::int32_t asymmetry) {
    state.fitasymmetry = asymmetry;
    CSolution solution;
    Evaluate(state, solution);
    CDataset& dataset = state.datasets[0];
    dataset.dataset_A = solution.dataset_A;
    dataset.dataset_R0 = solution.dataset_R0;
    dataset.dataset_Rp = solution.dataset_Rp;
    dataset.dataset_Rm = solution.dataset_Rm;
  }
  double At() {
    CSolution solution;
    return Evaluate(state, solution);
  }
  CState state;
};

TEST_F(DatasetErrorsOfRays, AsymmetryIsComparedLinearly) {
  for (const std::int32_t asymmetry : {1, 5}) {
    TakeCurves(asymmetry);
    EXPECT_GT(std::abs(state.datasets[0].dataset_A[3]), 1e-3);
    EXPECT_EQ(At(), 0);
    for (double& a : state.datasets[0].dataset_A) a += 0.1;
    EXPECT_NEAR(At(), 0.01, 1e-12);
    state.fiterrorfunction = FitErrorFunction::kRelativeLog;  // has no effect here
    EXPECT_NEAR(At(), 0.01, 1e-12);
    state.fiterrorfunction = FitErrorFunction::kLog;
  }
}

TEST_F(DatasetErrorsOfRays, CountsTheColumnThatTheKindNames) {
  TakeCurves(1);
  state.datasets[0].dataset_A.Append(7);  // after the last point: not accepted
  EXPECT_EQ(At(), 0);
  state.datasets[0].dataset_A.size = 2;
  state.datasets[0].dataset_A[0] += 1;
  EXPECT_NEAR(At(), 0.5, 1e-12);
  state.datasets[0].dataset_A.Clear();
  EXPECT_EQ(At(), 0);
}

TEST_F(DatasetErrorsOfRays, PairsAreComparedOnTheirDecades) {
  for (const std::int32_t asymmetry : {2, 4}) {
    TakeCurves(asymmetry);
    EXPECT_NEAR(At(), 0, 1e-25);
    for (double& r : state.datasets[0].dataset_Rp) r *= 10;
    for (double& r : state.datasets[0].dataset_Rm) r *= 0.01;
    EXPECT_NEAR(At(), 1 + 4, 1e-9);
    state.datasets[0].datasetmultiplicator = 10;
    EXPECT_NEAR(At(), 4 + 1, 1e-9);
    state.datasets[0].datasetmultiplicator = 1;
  }
}

TEST_F(DatasetErrorsOfRays, EnergyScanIsComparedOnItsDecades) {
  TakeCurves(3);
  EXPECT_NEAR(state.datasets[0].dataset_R0[9], Fresnel(0.3, 8000, 7.58e-6, 7.58e-6 / 50), 1e-3);
  EXPECT_EQ(At(), 0);
  for (double& r : state.datasets[0].dataset_R0) r *= 10;
  EXPECT_NEAR(At(), 1, 1e-9);
}

}  // namespace
}  // namespace tolvik
