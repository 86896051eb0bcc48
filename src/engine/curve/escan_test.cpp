// SPDX-License-Identifier: GPL-2.0-or-later
#include <cmath>

#include "model/status.h"
#include "optics/energy.h"
#include "support/precisions.h"
#include "support/states.h"
#include "tolvik/tolvik.h"

namespace tolvik::engine {
namespace {

using testing::MakeGrid;
using testing::MakeScan;
using testing::MakeState;

// A film on a substrate around 700 eV, with tables that are straight lines.
CState Sample() {
  CState state = MakeState({{.sigma = 3}, {.thickness = 60, .sigma = 2}, {}});
  state.lambda = LambdaFromEnergy(650);
  state.layers[0].layer_db = "substrate";
  state.layers[1].layer_db = "film";
  testing::AddTable(state, "substrate", {{500, 1e-3, 1e-4}, {900, 3e-3, 5e-4}});
  testing::AddTable(state, "film", {{600, 4e-3, 1e-3}, {800, 2e-3, 3e-3}});
  testing::AddTable(state, "vacuum", {{0, 0, 0}, {30000, 0, 0}});
  return state;
}

// The same sample with the constants of one energy written down.
CState SampleAt(double energy) {
  CState state = Sample();
  state.lambda = LambdaFromEnergy(energy);
  state.layers[0].layer_delta = 1e-3 + 2e-3 * (energy - 500) / 400;
  state.layers[0].layer_beta = 1e-4 + 4e-4 * (energy - 500) / 400;
  state.layers[1].layer_delta = 4e-3 - 2e-3 * (energy - 600) / 200;
  state.layers[1].layer_beta = 1e-3 + 2e-3 * (energy - 600) / 200;
  return state;
}

template <class T>
class EScan : public ::testing::Test {
 protected:
  static CState WithPrecision(CState state) {
    state.precision = testing::PrecisionOf<T>();
    return state;
  }
  static std::int32_t Scan(CSolution& solution, CState& state) {
    state.precision = testing::PrecisionOf<T>();
    return CalcEScanDLL(&solution, &state);
  }
  static double Reflectivity(double qz, CState state) {
    state.precision = testing::PrecisionOf<T>();
    CSolution solution = MakeGrid({qz});
    EXPECT_EQ(CalcReflectivityDLL(&solution, &state), ReturnCode::kSuccess);
    return solution.dataset_R0[0];
  }
  // Interpolated constants may differ in the last digit, which float amplifies.
  static void ExpectClose(double value, double expected) {
    EXPECT_NEAR(value, expected, (std::is_same_v<T, float> ? 1e-3 : 1e-11) * expected);
  }
};
TYPED_TEST_SUITE(EScan, testing::Precisions, testing::PrecisionNames);

TYPED_TEST(EScan, EachPointHasItsOwnEnergyAndConstants) {
  CState state = Sample();
  CSolution scan = MakeScan({0.1, 0.2, 0.1}, {650, 700, 780});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  this->ExpectClose(scan.dataset_R0[0], this->Reflectivity(0.1, SampleAt(650)));
  this->ExpectClose(scan.dataset_R0[1], this->Reflectivity(0.2, SampleAt(700)));
  this->ExpectClose(scan.dataset_R0[2], this->Reflectivity(0.1, SampleAt(780)));
  EXPECT_EQ(state.lambda, LambdaFromEnergy(780)) << "stays at the last point";
  EXPECT_EQ(scan.dataset_Rp.size, 0);
}

TYPED_TEST(EScan, TheResolutionIsTheExactOne) {
  CState state = Sample();
  state.resolution = 0.01;
  state.fastresolution = true;  // has no effect on a scan
  CSolution scan = MakeScan({0.1}, {700});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  CState at = SampleAt(700);
  at.resolution = 0.01;
  this->ExpectClose(scan.dataset_R0[0], this->Reflectivity(0.1, at));
}

TYPED_TEST(EScan, ASmallResolutionMovesTheSingleSample) {
  CState state = Sample();
  state.resolution = -0.02;
  CSolution scan = MakeScan({0.1}, {700});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  this->ExpectClose(scan.dataset_R0[0], this->Reflectivity(0.08, SampleAt(700)));
}

TYPED_TEST(EScan, APointBeyondATableKeepsItsValue) {
  CState state = Sample();
  CSolution scan = MakeScan({0.1, 0.1, 0.1}, {650, 1000, 700});
  for (double value : {5.0, 6.0, 7.0}) scan.dataset_R0.Append(value);
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  EXPECT_EQ(scan.dataset_R0[1], 6.0);
  this->ExpectClose(scan.dataset_R0[2], this->Reflectivity(0.1, SampleAt(700)));
}

TYPED_TEST(EScan, APointOutOfReachEndsTheScanWithCodeTwo) {
  CState state = Sample();
  state.mulqz4 = 1;                                             // the finishing step is not done
  CSolution scan = MakeScan({0.1, 0.8, 0.1}, {650, 700, 750});  // 2 k0 is 0.71 at 700 eV
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kWrongDataPoints);
  this->ExpectClose(scan.dataset_R0[0], this->Reflectivity(0.1, SampleAt(650)));
  EXPECT_EQ(scan.dataset_R0[1], 0.0);
  EXPECT_EQ(scan.dataset_R0[2], 1.0);
  EXPECT_EQ(state.lambda, LambdaFromEnergy(700));
}

TYPED_TEST(EScan, NegativeAndUndefinedQzAddNothing) {
  CState state = Sample();
  CSolution scan = MakeScan({-0.1, std::nan(""), 0.1}, {650, 700, 750});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  EXPECT_EQ(scan.dataset_R0[0], 0.0);
  EXPECT_EQ(scan.dataset_R0[1], 0.0);
  EXPECT_GT(scan.dataset_R0[2], 0.0);
}

TYPED_TEST(EScan, KeptWavelengthServesTheProfileNotTheTables) {
  CState state = Sample();
  state.maprange.keeplambda = 1;
  CSolution scan = MakeScan({0.1}, {780});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  CState expected = SampleAt(780);
  expected.lambda = LambdaFromEnergy(650);
  this->ExpectClose(scan.dataset_R0[0], this->Reflectivity(0.1, expected));
  EXPECT_EQ(state.lambda, LambdaFromEnergy(650));
}

TYPED_TEST(EScan, TheScriptRunsOnceForTheScanAndOnceForEachPoint) {
  CState state = Sample();
  state.scriptlines.Append("calls = (calls or 0) + 1");
  state.scriptlines.Append("seen = energy");
  state.scriptlines.Append("par[0] = calls; par[calls] = seen");
  for (int i = 0; i < 8; ++i) state.scriptparameters.Append(-1);
  CSolution scan = MakeScan({0.1, 0.1, 0.1}, {700, 1000, 750});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  EXPECT_EQ(state.scriptparameters[0], 3) << "globals live through the scan; no run where the tables fail";
  EXPECT_NEAR(state.scriptparameters[1], 650, 1e-9);
  EXPECT_NEAR(state.scriptparameters[2], 700, 1e-9);
  EXPECT_NEAR(state.scriptparameters[3], 750, 1e-9);
}

TYPED_TEST(EScan, AScriptChangesTheCallersState) {
  CState state = Sample();
  state.scriptlines.Append("thickness[1] = 80");
  CSolution scan = MakeScan({0.1}, {700});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  EXPECT_EQ(state.layers[1].layer_d, 80);
  CState expected = SampleAt(700);
  expected.layers[1].layer_d = 80;
  this->ExpectClose(scan.dataset_R0[0], this->Reflectivity(0.1, expected));
}

// k0 is that of the point; a script that changes the energy runs after k0 is set.
TYPED_TEST(EScan, AScriptThatSetsTheEnergyDoesNotMoveTheWavevector) {
  CState state = Sample();
  state.scriptlines.Append("energy = 400");
  CSolution scan = MakeScan({0.1}, {700});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  this->ExpectClose(scan.dataset_R0[0], this->Reflectivity(0.1, SampleAt(700)));
}

TYPED_TEST(EScan, ADisabledScriptDoesNotRun) {
  CState state = Sample();
  state.scriptlines.Append("thickness[1] = 80");
  state.disablescript = 1;
  CSolution scan = MakeScan({0.1}, {700});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  EXPECT_EQ(state.layers[1].layer_d, 60);
}

TYPED_TEST(EScan, AnEmptyScanIsASuccess) {
  CState state = Sample();
  CSolution scan;
  scan.dataset_R0.Append(4);
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  EXPECT_EQ(scan.dataset_R0.size, 0);
  EXPECT_EQ(state.lambda, Sample().lambda);
}

// Fewer energies than points would be read past their end.
TYPED_TEST(EScan, PointsWithoutEnergyKeepTheirValues) {
  CState state = Sample();
  CSolution scan = MakeScan({0.1, 0.2, 0.3}, {700});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  EXPECT_NE(scan.dataset_R0[0], 1.0);
  EXPECT_EQ(scan.dataset_R0[1], 1.0);
  EXPECT_EQ(scan.dataset_R0[2], 1.0);
}

TYPED_TEST(EScan, TheFinishingStepTakesTheWholeScan) {
  CState state = Sample(), averaged = Sample();
  averaged.averaging = 1;
  averaged.mulqz4 = state.mulqz4 = 1;
  CSolution bare = MakeScan({0.1, 0.1}, {650, 750}), smooth = bare;
  EXPECT_EQ(this->Scan(bare, state), ReturnCode::kSuccess);
  EXPECT_EQ(this->Scan(smooth, averaged), ReturnCode::kSuccess);
  EXPECT_DOUBLE_EQ(smooth.dataset_R0[0], (bare.dataset_R0[0] + bare.dataset_R0[1]) / 2);
  this->ExpectClose(bare.dataset_R0[0], 1e-4 * this->Reflectivity(0.1, SampleAt(650)));
}

TYPED_TEST(EScan, AnUnknownAlgorithmGivesZeros) {
  CState state = Sample();
  state.algorithm = 9;
  CSolution scan = MakeScan({0.1}, {700});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  EXPECT_EQ(scan.dataset_R0[0], 0.0);
}

}  // namespace
}  // namespace tolvik::engine
