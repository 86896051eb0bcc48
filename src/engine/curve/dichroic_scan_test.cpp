// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/energy.h"
#include "support/precisions.h"
#include "support/states.h"
#include "tolvik/tolvik.h"

namespace tolvik::engine {
namespace {

using testing::MakeGrid;
using testing::MakeScan;

CState Sample() {
  CState state = testing::MakeState({{}, {.thickness = 60, .ddelta = 1e-3, .dbeta = 5e-4}, {}});
  state.lambda = LambdaFromEnergy(650);
  state.magnetizationmode = MagnetizationMode::kLayers;
  state.layers[0].layer_db = "substrate";
  state.layers[1].layer_db = "film";
  testing::AddTable(state, "substrate", {{500, 1e-3, 1e-4}, {900, 3e-3, 5e-4}});
  testing::AddTable(state, "film", {{600, 4e-3, 1e-3}, {800, 2e-3, 3e-3}});
  testing::AddTable(state, "vacuum", {{0, 0, 0}, {30000, 0, 0}});
  return state;
}

template <class T>
class DicEScan : public ::testing::Test {
 protected:
  static std::int32_t Scan(CSolution& solution, CState& state) {
    state.precision = testing::PrecisionOf<T>();
    return CalcDicEScanDLL(&solution, &state);
  }
  /// Both curves at one energy, with the tables read for a curve.
  static CSolution Point(double qz, double energy) {
    CState state = Sample();
    state.precision = testing::PrecisionOf<T>();
    state.lambda = LambdaFromEnergy(energy);
    state.ocautomatic = 1;
    CSolution solution = MakeGrid({qz});
    EXPECT_EQ(CalcAsymmetryDLL(&solution, &state), ReturnCode::kSuccess);
    return solution;
  }
};
TYPED_TEST_SUITE(DicEScan, testing::Precisions, testing::PrecisionNames);

TYPED_TEST(DicEScan, EachPointHasItsOwnEnergyAndConstants) {
  CState state = Sample();
  CSolution scan = MakeScan({0.1, 0.2}, {650, 750});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  for (int i = 0; i < 2; ++i) {
    const CSolution point = this->Point(scan.dataset_qz[i], scan.dataset_eng[i]);
    EXPECT_EQ(scan.dataset_Rp[i], point.dataset_Rp[0]);
    EXPECT_EQ(scan.dataset_Rm[i], point.dataset_Rm[0]);
    EXPECT_EQ(scan.dataset_A[i], point.dataset_A[0]);
    EXPECT_NE(scan.dataset_A[i], 0.0);
    EXPECT_EQ(scan.dataset_R0[i], 1.0) << "sized only";
  }
  EXPECT_EQ(state.lambda, LambdaFromEnergy(750));
}

TYPED_TEST(DicEScan, APointBeyondATableKeepsItsValues) {
  CState state = Sample();
  CSolution scan = MakeScan({0.1, 0.1, 0.1}, {1000, 700, 5});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  EXPECT_EQ(scan.dataset_Rp[0], 1.0);
  EXPECT_EQ(scan.dataset_Rm[0], 1.0);
  EXPECT_EQ(scan.dataset_A[0], 0.0);
  EXPECT_EQ(scan.dataset_Rp[1], this->Point(0.1, 700).dataset_Rp[0]);
}

TYPED_TEST(DicEScan, APointOutOfReachEndsTheScanWithCodeTwo) {
  CState state = Sample();
  state.averaging = 1;
  CSolution scan = MakeScan({0.1, 0.8, 0.1}, {650, 700, 750});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kWrongDataPoints);
  EXPECT_EQ(scan.dataset_Rp[0], this->Point(0.1, 650).dataset_Rp[0]) << "not averaged";
  EXPECT_EQ(scan.dataset_Rp[1], 1.0);
  EXPECT_EQ(scan.dataset_Rm[2], 1.0);
}

// Only plain scans read the choice of a map's wavelength.
TYPED_TEST(DicEScan, KeepLambdaIsNotRead) {
  CState state = Sample();
  state.maprange.keeplambda = 1;
  CSolution scan = MakeScan({0.1}, {750});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  EXPECT_EQ(scan.dataset_Rp[0], this->Point(0.1, 750).dataset_Rp[0]);
}

TYPED_TEST(DicEScan, TheScriptRunsForTheScanAndForEachPoint) {
  CState state = Sample();
  state.scriptlines.Append("par[0] = par[0] + 1");
  state.scriptparameters.Append(0);
  CSolution scan = MakeScan({0.1, 0.1, 0.1}, {650, 1000, 750});
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  EXPECT_EQ(state.scriptparameters[0], 3);
}

TYPED_TEST(DicEScan, PointsWithoutEnergyAndEmptyScansAreHarmless) {
  CState state = Sample();
  CSolution scan = MakeScan({0.1, 0.2}, {700}), empty;
  EXPECT_EQ(this->Scan(scan, state), ReturnCode::kSuccess);
  EXPECT_EQ(scan.dataset_Rp[1], 1.0);
  EXPECT_EQ(this->Scan(empty, state), ReturnCode::kSuccess);
  EXPECT_EQ(empty.dataset_A.size, 0);
}

}  // namespace
}  // namespace tolvik::engine
