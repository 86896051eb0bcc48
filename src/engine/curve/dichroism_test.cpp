// SPDX-License-Identifier: GPL-2.0-or-later
#include <cmath>

#include "engine/curve/dichroism.tpp"
#include "support/precisions.h"
#include "support/states.h"
#include "tolvik/tolvik.h"

namespace tolvik::engine {
namespace {

using testing::Epsilon;
using testing::MakeGrid;
using testing::MakeScan;
using testing::MakeState;

constexpr double kReach = 2 * 2 * M_PI / 1.54;  // 2 k0

// A magnetic film of strong contrast; ray one sigma, ray two pi.
CState Film(int magnetizationmode) {
  CState state = MakeState({{.delta = 0.2, .beta = 0.05},
                            {.thickness = 4, .delta = 0.1, .beta = 0.03, .ddelta = 0.02, .dbeta = 0.01},
                            {}});
  state.magnetizationmode = magnetizationmode;
  return state;
}

template <class T>
class Dichroism : public ::testing::Test {
 protected:
  static std::int32_t Calculate(CSolution& solution, CState state) {
    state.precision = testing::PrecisionOf<T>();
    return CalcAsymmetryDLL(&solution, &state);
  }
  static double Plain(double qz, CState state) {
    state.precision = testing::PrecisionOf<T>();
    CSolution solution = MakeGrid({qz});
    EXPECT_EQ(CalcReflectivityDLL(&solution, &state), ReturnCode::kSuccess);
    return solution.dataset_R0[0];
  }
  static CState SecondRayAsFirst(CState state) {
    state.ray1sigmare = state.ray2sigmare;
    state.ray1sigmaim = state.ray2sigmaim;
    state.ray1pire = state.ray2pire;
    state.ray1piim = state.ray2piim;
    return state;
  }
};
TYPED_TEST_SUITE(Dichroism, testing::Precisions, testing::PrecisionNames);

TYPED_TEST(Dichroism, EachRaySeesItsOwnSenseOfTheMagnetisation) {
  const CState state = Film(1);
  CSolution solution = MakeGrid({1.0, 2.0, 3.0});
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
  CState reversed = this->SecondRayAsFirst(state);
  reversed.layers[1].layer_ddelta *= -1;
  reversed.layers[1].layer_dbeta *= -1;
  for (int i = 0; i < 3; ++i) {
    const double plus = this->Plain(1.0 + i, state), minus = this->Plain(1.0 + i, reversed);
    EXPECT_EQ(solution.dataset_Rp[i], plus);
    EXPECT_EQ(solution.dataset_Rm[i], minus);
    EXPECT_DOUBLE_EQ(solution.dataset_A[i], (plus - minus) / (plus + minus));
  }
}

TYPED_TEST(Dichroism, WithoutMagnetisationOnlyTheRaysDiffer) {
  const CState state = Film(0);
  CSolution solution = MakeGrid({2.0});
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
  EXPECT_EQ(solution.dataset_Rp[0], this->Plain(2.0, state));
  EXPECT_EQ(solution.dataset_Rm[0], this->Plain(2.0, this->SecondRayAsFirst(state)));
  EXPECT_NE(solution.dataset_Rp[0], solution.dataset_Rm[0]);
}

TYPED_TEST(Dichroism, EqualRaysWithoutMagnetisationHaveNoAsymmetry) {
  CState state = Film(0);
  for (bool pi : {false, true}) {
    testing::UsePi(state, pi);
    CSolution solution = MakeGrid({0.0, 1.0, 2.0});
    EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
    EXPECT_EQ(solution.dataset_Rp, solution.dataset_Rm);
    for (double asymmetry : solution.dataset_A) EXPECT_EQ(asymmetry, 0.0);
  }
}

TYPED_TEST(Dichroism, NoIntensityHasNoAsymmetry) {
  CState state = Film(1);
  state.ray1sigmare = state.ray2pire = 0;
  CSolution solution = MakeGrid({1.0});
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
  EXPECT_EQ(solution.dataset_A[0], 0.0);
}

TYPED_TEST(Dichroism, ANegativeAngleLeavesZeroOnTheSamplePath) {
  CState state = Film(1);
  CSolution solution = MakeGrid({-1.0, 1.0, -2 * kReach});  // below -1 there is no refusal
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
  for (int i : {0, 2}) {
    EXPECT_EQ(solution.dataset_Rp[i], 0.0);
    EXPECT_EQ(solution.dataset_Rm[i], 0.0);
    EXPECT_EQ(solution.dataset_A[i], 0.0);
  }
  state.fastresolution = true;
  CSolution fast = MakeGrid({-1.0, 1.0, -2 * kReach});
  EXPECT_EQ(this->Calculate(fast, state), ReturnCode::kSuccess) << "nor on the fast path";
}

TYPED_TEST(Dichroism, R0IsSizedOnly) {
  for (bool fast : {false, true}) {
    CState state = Film(1);
    state.fastresolution = fast;
    CSolution solution = MakeGrid({1.0, 2.0});
    EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
    EXPECT_EQ(solution.dataset_R0, MakeGrid({1.0, 1.0}).dataset_qz);
    solution.dataset_R0[1] = 4;
    EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
    EXPECT_EQ(solution.dataset_R0[1], 4.0);
  }
}

TYPED_TEST(Dichroism, APointOutOfReachIsCodeTwoAndKeepsItsValues) {
  CState state = Film(1);
  state.mulqz4 = 1;  // no finishing step
  CSolution solution = MakeGrid({2.0, 1.2 * kReach, 3.0});
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kWrongDataPoints);
  EXPECT_EQ(solution.dataset_Rp[0], [&] {
    CState plain = state;
    plain.mulqz4 = 0;
    return this->Plain(2.0, plain);
  }());
  EXPECT_EQ(solution.dataset_Rp[1], 1.0);
  EXPECT_EQ(solution.dataset_Rm[2], 1.0);
  EXPECT_EQ(solution.dataset_A[0], 0.0);
}

// A sample of the resolution above 1 refuses the whole point, those before it included.
TYPED_TEST(Dichroism, OneSampleOutOfReachRefusesThePoint) {
  CState state = Film(1);
  state.resolution = -0.5;  // one sample, below qz
  CSolution below = MakeGrid({kReach + 0.4});
  EXPECT_EQ(this->Calculate(below, state), ReturnCode::kSuccess);
  state.resolution = 0.5;
  CSolution above = MakeGrid({kReach - 0.4});
  EXPECT_EQ(this->Calculate(above, state), ReturnCode::kWrongDataPoints);
  EXPECT_EQ(above.dataset_Rp[0], 1.0);
}

// λ = 4π gives k0 = 0.5, so that s is qz to the last digit of every number type except for the rounding of λ.
TYPED_TEST(Dichroism, SineOneIsReachedBySamplesButNotOnTheFastPath) {
  using T = TypeParam;
  CState state = Film(1);
  Profile<T> profile;
  PrepareProfile<T>(state, profile);
  CSolution solution = MakeGrid({1.0});
  dichroism_detail::SizeCurves(solution);
  EXPECT_EQ(CalcDichroicPoint<T>(state, profile, 0, T(0.5), solution), ReturnCode::kSuccess);
  EXPECT_GT(solution.dataset_Rp[0], 0.0);
  EXPECT_NE(solution.dataset_Rp[0], 1.0);
  SampleBlock<T> block(true);
  const IntensityOptions<T> options = OptionsOfState<T>(state);
  const T k0(0.5);
  EXPECT_EQ(dichroism_detail::CalcOnce<T>(solution, {profile, k0, options, block}),
            ReturnCode::kWrongDataPoints);
}

TYPED_TEST(Dichroism, ThePointRoutinesAreTheCurve) {
  using T = TypeParam;
  CState state = Film(1);
  state.resolution = 0.05;
  Profile<T> profile;
  PrepareProfile<T>(state, profile);
  const T k0 = WavevectorFromLambda(T(state.lambda));
  CSolution curve = MakeGrid({1.0, 2.0}), points = curve, bare = curve;
  EXPECT_EQ(this->Calculate(curve, state), ReturnCode::kSuccess);
  dichroism_detail::SizeCurves(points);
  dichroism_detail::SizeCurves(bare);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(CalcDichroicPoint<T>(state, profile, i, k0, points), ReturnCode::kSuccess);
    EXPECT_EQ(CalcDichroicPointFast<T>(state, profile, i, k0, bare), ReturnCode::kSuccess);
  }
  EXPECT_EQ(points.dataset_Rp, curve.dataset_Rp);
  EXPECT_EQ(points.dataset_Rm, curve.dataset_Rm);
  state.resolution = 0;
  EXPECT_EQ(this->Calculate(curve, state), ReturnCode::kSuccess);
  EXPECT_EQ(bare.dataset_Rp, curve.dataset_Rp);
  EXPECT_EQ(bare.dataset_Rm, curve.dataset_Rm);
}

TYPED_TEST(Dichroism, TheFastPathFoldsBothCurves) {
  using T = TypeParam;
  CState state = Film(1);
  CSolution once = MakeGrid(0.5, 4.0, 200), folded = once;
  EXPECT_EQ(this->Calculate(once, state), ReturnCode::kSuccess);
  state.fastresolution = true;
  state.resolution = 0.1;
  EXPECT_EQ(this->Calculate(folded, state), ReturnCode::kSuccess);
  for (int i = 0; i < 200; ++i) {
    const InterpolatedPoint<T> expected = FoldResolution(once, i, FullRule<T>(0.1));
    EXPECT_EQ(folded.dataset_Rp[i], static_cast<double>(expected.Rp));
    EXPECT_EQ(folded.dataset_Rm[i], static_cast<double>(expected.Rm));
  }
}

TYPED_TEST(Dichroism, APointOutOfReachOnTheFastPathIsCodeTwo) {
  CState state = Film(1);
  state.fastresolution = true;
  state.resolution = 0.1;
  CSolution solution = MakeGrid({2.0, 1.2 * kReach, 3.0});
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kWrongDataPoints);
  EXPECT_EQ(solution.dataset_Rp[0], this->Plain(2.0, Film(1))) << "calculated, not folded";
  EXPECT_EQ(solution.dataset_Rp[1], 1.0);
}

TYPED_TEST(Dichroism, AnUnknownAlgorithmGivesZeros) {
  CState state = Film(1);
  state.algorithm = 5;
  CSolution solution = MakeGrid({1.0});
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
  EXPECT_EQ(solution.dataset_Rp[0], 0.0);
  EXPECT_EQ(solution.dataset_Rm[0], 0.0);
}

TYPED_TEST(Dichroism, TheMatrixAlgorithmsGiveBothRaysAtOnce) {
  for (int algorithm : {Algorithm::kMatrixOne, Algorithm::kMatrixTwo}) {
    CState state = Film(0);
    state.algorithm = algorithm;
    CSolution solution = MakeGrid({2.0});
    EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
    EXPECT_EQ(solution.dataset_Rp[0], this->Plain(2.0, state));
    EXPECT_EQ(solution.dataset_Rm[0], this->Plain(2.0, this->SecondRayAsFirst(state)));
  }
}

TYPED_TEST(Dichroism, AnEmptyGridIsASuccess) {
  for (bool fast : {false, true}) {
    CState state = Film(1);
    state.fastresolution = fast;
    CSolution solution;
    EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
    EXPECT_EQ(solution.dataset_Rp.size, 0);
  }
}

TYPED_TEST(Dichroism, TheScriptRunsOnce) {
  CState state = Film(1);
  state.scriptlines.Append("par[0] = par[0] + 1");
  state.scriptparameters.Append(0);
  state.precision = testing::PrecisionOf<TypeParam>();
  CSolution solution = MakeGrid({1.0, 2.0});
  EXPECT_EQ(CalcAsymmetryDLL(&solution, &state), ReturnCode::kSuccess);
  EXPECT_EQ(state.scriptparameters[0], 1);
}

}  // namespace
}  // namespace tolvik::engine
