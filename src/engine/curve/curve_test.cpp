// SPDX-License-Identifier: GPL-2.0-or-later
#include <cmath>
#include <limits>

#include "engine/curve/curve.tpp"
#include "support/precisions.h"
#include "support/states.h"
#include "tolvik/tolvik.h"

namespace tolvik::engine {
namespace {

using testing::Epsilon;
using testing::MakeGrid;
using testing::MakeState;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// A rough silicon substrate under a thin film; Cu Kα. 2 k0 is 8.16 Å⁻¹.
CState Film() {
  return MakeState({{.delta = 7.6e-6, .beta = 1.7e-7, .sigma = 3},
                    {.thickness = 120, .delta = 2.5e-5, .beta = 2e-6, .sigma = 2},
                    {}});
}

template <class T>
class Curve : public ::testing::Test {
 protected:
  static std::int32_t Calculate(CSolution& solution, CState state) {
    state.precision = testing::PrecisionOf<T>();
    return CalcReflectivityDLL(&solution, &state);
  }
  static CArray<double> R0(CSolution solution, const CState& state) {
    EXPECT_EQ(Calculate(solution, state), ReturnCode::kSuccess);
    return solution.dataset_R0;
  }
  /// The intensity at one q as a batch of its own: a sample does not depend on its neighbours.
  static double Direct(const CState& state, double q) {
    Profile<T> profile;
    PrepareProfile<T>(state, profile);
    const T k0 = T(6.283185307179586) / T(state.lambda);
    const T s = T(q) / (T(2.0) * k0);
    T intensity(-1.0);
    IntensityWork<T> work;
    CalcIntensities<T>({profile, k0, OptionsOfState<T>(state), {&s, 1}, &intensity}, work);
    return static_cast<double>(intensity);
  }
};
TYPED_TEST_SUITE(Curve, testing::Precisions, testing::PrecisionNames);

TYPED_TEST(Curve, AnEmptyGridGivesAnEmptyCurve) {
  for (bool fast : {false, true}) {
    CState state = Film();
    state.fastresolution = fast;
    CSolution solution;
    solution.dataset_R0.Append(3);
    EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
    EXPECT_EQ(solution.dataset_R0.size, 0);
    EXPECT_EQ(solution.dataset_Rp.size, 0);
  }
}

TYPED_TEST(Curve, WithoutResolutionEachPointIsTheBareReflectivity) {
  const CSolution grid = MakeGrid(0.0, 0.6, 301);  // more than two blocks of points
  const CArray<double> curve = this->R0(grid, Film());
  for (int i = 0; i < grid.dataset_qz.size; ++i) {
    EXPECT_EQ(curve[i], this->Direct(Film(), grid.dataset_qz[i])) << grid.dataset_qz[i];
  }
}

TYPED_TEST(Curve, TheResolutionSumsNineSamples) {
  using T = TypeParam;
  CState state = Film();
  state.resolution = 0.004;
  const CArray<double> curve = this->R0(MakeGrid({0.05, 0.2}), state);
  for (int i = 0; i < 2; ++i) {
    double sum = 0;
    for (const ResolutionSample& sample : kResolutionRule) {
      sum += sample.weight * this->Direct(state, (i == 0 ? 0.05 : 0.2) + 0.004 * sample.offset);
    }
    // The positions differ by the rounding of r offset + qz; the curve falls as steeply as 1e4 per Å⁻¹ there.
    EXPECT_NEAR(curve[i], sum, 1e3 * Epsilon<T>() * sum);
  }
}

// Nine samples at almost one place weigh 0.999999; a smaller resolution gives the plain value.
TYPED_TEST(Curve, NineSamplesBeginAtOneTenBillionth) {
  using T = TypeParam;
  CState state = Film();
  const double bare = this->R0(MakeGrid({0.1}), state)[0];
  state.resolution = 1e-10;
  EXPECT_NEAR(this->R0(MakeGrid({0.1}), state)[0] / bare, 0.999999, 1e-8 + 8 * Epsilon<T>());
  state.resolution = 9e-11;
  EXPECT_NEAR(this->R0(MakeGrid({0.1}), state)[0] / bare, 1.0, 1e-8);
}

// The single sample lies at qz + r, also for a negative r.
TYPED_TEST(Curve, ASmallResolutionMovesTheSingleSample) {
  using T = TypeParam;
  CState state = Film();
  state.resolution = -0.03;
  const double moved = this->R0(MakeGrid({0.1}), state)[0];
  EXPECT_NEAR(moved, this->Direct(state, 0.07), 100 * Epsilon<T>() * moved);
}

TYPED_TEST(Curve, AnUnknownAlgorithmCalculatesNothing) {
  CState state = Film();
  for (int algorithm : {3, -1}) {
    state.algorithm = algorithm;
    state.fastresolution = false;
    EXPECT_EQ(this->R0(MakeGrid({0.1, 0.2}), state), this->R0(MakeGrid({-0.1, -0.2}), Film()));
    state.fastresolution = true;
    CSolution fast = MakeGrid({0.1, 0.2});
    EXPECT_EQ(this->Calculate(fast, state), ReturnCode::kSuccess);
    for (double value : fast.dataset_Rp) EXPECT_EQ(value, 1.0);
  }
}

TYPED_TEST(Curve, NegativeQzAddsNothing) {
  CState state = Film();
  CSolution exact = MakeGrid({-0.1, 0.1});
  EXPECT_EQ(this->Calculate(exact, state), ReturnCode::kSuccess);
  EXPECT_EQ(exact.dataset_R0[0], 0.0);
  EXPECT_GT(exact.dataset_R0[1], 0.0);
  state.fastresolution = true;
  CSolution fast = MakeGrid({-0.1, 0.1});
  EXPECT_EQ(this->Calculate(fast, state), ReturnCode::kSuccess);
  EXPECT_EQ(fast.dataset_Rp[0], 1.0) << "stays as it was";
  EXPECT_NE(fast.dataset_Rp[1], 1.0);
}

TYPED_TEST(Curve, TheExactPathLeavesRpAlone) {
  CSolution solution = MakeGrid({0.1, 0.2});
  EXPECT_EQ(this->Calculate(solution, Film()), ReturnCode::kSuccess);
  for (double value : solution.dataset_Rp) EXPECT_EQ(value, 1.0);
  EXPECT_EQ(solution.dataset_Rp.size, 2);
  solution.dataset_Rp[1] = 7;  // the right size: kept
  EXPECT_EQ(this->Calculate(solution, Film()), ReturnCode::kSuccess);
  EXPECT_EQ(solution.dataset_Rp[1], 7.0);
  EXPECT_EQ(solution.dataset_Rm.size, 0);
}

TYPED_TEST(Curve, APointOutOfReachEndsTheExactPathSilently) {
  CState state = Film();
  state.mulqz4 = 1;  // the finishing step is not done any more
  CSolution solution = MakeGrid({0.1, 9.0, 0.2});
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
  EXPECT_EQ(solution.dataset_R0[0], this->Direct(state, 0.1));
  EXPECT_EQ(solution.dataset_R0[1], 0.0);
  EXPECT_EQ(solution.dataset_R0[2], 1.0) << "the value of a fresh curve";
}

// Sample 0 lies above qz, so it is the first to be out of reach and nothing of the point is summed.
TYPED_TEST(Curve, AnySampleOutOfReachStopsTheCurve) {
  CState state = Film();
  state.resolution = 0.05;
  const double reach = 2 * 2 * M_PI / 1.54;
  CSolution solution = MakeGrid({0.1, reach - 0.04, 0.2});
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
  EXPECT_GT(solution.dataset_R0[0], 0.0);
  EXPECT_EQ(solution.dataset_R0[1], 0.0);
  EXPECT_EQ(solution.dataset_R0[2], 1.0);
}

// With a huge r, sample 0 is in reach, sample 1 negative and left out, and so on; on a grid far below zero
// the upper samples are in reach and all others have no angle.
TYPED_TEST(Curve, ASampleBelowMinusTwoK0StopsExceptInMpfr) {
  using T = TypeParam;
  CState state = Film();
  state.resolution = 9.0;
  CSolution solution = MakeGrid({-4.0, 0.1});  // samples at 5, -13, ...
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
  if (NumberTraits<T>::angle_by_asin) {
    // -13 has no angle and adds nothing; samples at 5, 2.75 and 0.5 count. Point 1 stops at 9.1.
    const double sum = 0.027607 * this->Direct(state, 5.0) + 0.066462 * this->Direct(state, 2.75) +
                       0.123722 * this->Direct(state, 0.5);
    EXPECT_NEAR(solution.dataset_R0[0], sum, 1e-14 * sum);
    EXPECT_EQ(solution.dataset_R0[1], 0.0);
  } else {
    const double partial = 0.027607 * this->Direct(state, 5.0);
    EXPECT_NEAR(solution.dataset_R0[0], partial, 8 * Epsilon<T>() * partial);
    EXPECT_EQ(solution.dataset_R0[1], 1.0);
  }
}

TYPED_TEST(Curve, NotANumberInTheGridStopsTheExactPathOnly) {
  CState state = Film();
  CSolution exact = MakeGrid({0.1, kNan, 0.2});
  EXPECT_EQ(this->Calculate(exact, state), ReturnCode::kSuccess);
  EXPECT_EQ(exact.dataset_R0[1], 0.0);
  EXPECT_EQ(exact.dataset_R0[2], 1.0);
  state.fastresolution = true;
  CSolution fast = MakeGrid({0.1, kNan, 0.2});
  EXPECT_EQ(this->Calculate(fast, state), ReturnCode::kSuccess);
  EXPECT_EQ(fast.dataset_Rp[1], 1.0);
  EXPECT_EQ(fast.dataset_Rp[2], this->Direct(state, 0.2));
}

TYPED_TEST(Curve, AStopFarIntoTheCurveKeepsAllBeforeIt) {
  CSolution solution = MakeGrid(0.01, 0.6, 300);
  solution.dataset_qz[200] = 20;
  EXPECT_EQ(this->Calculate(solution, Film()), ReturnCode::kSuccess);
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(solution.dataset_R0[i], this->Direct(Film(), solution.dataset_qz[i]));
  }
  EXPECT_EQ(solution.dataset_R0[200], 0.0);
  for (int i = 201; i < 300; ++i) EXPECT_EQ(solution.dataset_R0[i], 1.0);
}

TYPED_TEST(Curve, APointOutOfReachOnTheFastPathIsCodeTwo) {
  CState state = Film();
  state.fastresolution = true;
  state.mulqz4 = 1;
  CSolution solution = MakeGrid({0.1, 0.2, 9.0, 0.3});
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kWrongDataPoints);
  EXPECT_EQ(solution.dataset_Rp[0], this->Direct(state, 0.1));
  EXPECT_EQ(solution.dataset_Rp[1], this->Direct(state, 0.2));
  EXPECT_EQ(solution.dataset_Rp[2], 1.0);
  EXPECT_EQ(solution.dataset_R0, MakeGrid({1, 1, 1, 1}).dataset_qz) << "what it held";
  CSolution first = MakeGrid({9.0});
  EXPECT_EQ(this->Calculate(first, state), ReturnCode::kWrongDataPoints);
  state.fastresolution = false;
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess) << "the same grid without the fast path";
}

TYPED_TEST(Curve, TheFastPathFoldsTheBareCurve) {
  using T = TypeParam;
  CState state = Film();
  state.fastresolution = true;
  CSolution solution = MakeGrid(0.01, 0.6, 300);
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
  for (int i = 0; i < 300; ++i) {
    const double bare = this->Direct(state, solution.dataset_qz[i]);
    EXPECT_EQ(solution.dataset_Rp[i], bare);
    // A read at a grid point is a + (b - a), so the rounding of the neighbour enters.
    const double scale = std::max(bare, i > 0 ? solution.dataset_Rp[i - 1] : bare);
    EXPECT_NEAR(solution.dataset_R0[i], 0.999999 * bare, 8 * Epsilon<T>() * scale);
  }
  state.resolution = 0.02;
  EXPECT_EQ(this->Calculate(solution, state), ReturnCode::kSuccess);
  const ResolutionRule<T> rule = FullRule<T>(0.02);
  for (int i : {0, 1, 150, 299}) {
    EXPECT_EQ(solution.dataset_R0[i], static_cast<double>(FoldResolution(solution, i, rule).Rp));
  }
}

// Strong contrast, so that float can be compared; the shift is the constants times cos θ.
TYPED_TEST(Curve, MagnetisationShiftsTheIndexOnlyWhenItIsOn) {
  using T = TypeParam;
  CState state = MakeState({{.delta = 0.3, .beta = 0.1}, {.thickness = 2, .delta = 0.1, .beta = 0.05}, {}});
  const CState plain = state;
  state.layers[1].layer_ddelta = 0.04;
  state.layers[1].layer_dbeta = 0.02;
  EXPECT_EQ(this->R0(MakeGrid({3.0}), state), this->R0(MakeGrid({3.0}), plain));
  state.magnetizationmode = MagnetizationMode::kLayers;
  const double magnetic = this->R0(MakeGrid({3.0}), state)[0];
  EXPECT_EQ(magnetic, this->Direct(state, 3.0));
  const double c = std::cos(std::asin(3.0 * 1.54 / (4 * M_PI)));
  CState shifted = plain;
  shifted.layers[1].layer_delta -= 0.04 * c;
  shifted.layers[1].layer_beta -= 0.02 * c;
  EXPECT_NEAR(magnetic, this->R0(MakeGrid({3.0}), shifted)[0], 100 * Epsilon<T>() * magnetic);
}

TYPED_TEST(Curve, ScatteringIsNoMatterToThisAlgorithm) {
  CState state = Film();
  state.scattering = Scattering::kTransmission;
  EXPECT_EQ(this->R0(MakeGrid({0.05, 0.1}), state), this->R0(MakeGrid({0.05, 0.1}), Film()));
}

TYPED_TEST(Curve, AFreshRecordIsSigmaForThePolarisationCorrection) {
  CState state = Film();
  testing::UsePi(state);
  state.polcorrection = 1;
  CState plain = Film();
  testing::UsePi(plain);
  CSolution solution = MakeGrid({0.5, 3.0});
  solution.datasetenergy = 8048;
  EXPECT_EQ(this->R0(solution, state), this->R0(solution, plain));
}

TYPED_TEST(Curve, TheFinishingStepRunsAtTheEnd) {
  CState state = Film();
  state.mulqz4 = 1;
  for (bool fast : {false, true}) {
    state.fastresolution = fast;
    CState plain = state;
    plain.mulqz4 = 0;
    const double expected = this->R0(MakeGrid({0.5}), plain)[0] * 0.0625;
    EXPECT_DOUBLE_EQ(this->R0(MakeGrid({0.5}), state)[0], expected);
  }
}

TYPED_TEST(Curve, AgreesWithTheBestPrecision) {
  using T = TypeParam;
  CState best = Film();
  CSolution solution = MakeGrid({0.1, 0.3});
  best.precision = Precision::kMpfr;
  EXPECT_EQ(CalcReflectivityDLL(&solution, &best), ReturnCode::kSuccess);
  const CArray<double> mine = this->R0(MakeGrid({0.1, 0.3}), Film());
  for (int i = 0; i < 2; ++i) {
    // n² - cos²θ loses 1/sin²θ, here up to 1e4 roundings.
    EXPECT_NEAR(mine[i], solution.dataset_R0[i], 1e5 * Epsilon<T>() * solution.dataset_R0[i]);
  }
}

TEST(CurveDispatch, AnUnknownPrecisionIsDouble) {
  for (int precision : {7, -1, 4}) {
    CState odd = Film();
    odd.precision = precision;
    CState state = Film();
    CSolution a = MakeGrid(0.01, 0.5, 20), b = a;
    EXPECT_EQ(CalcReflectivityDLL(&a, &odd), ReturnCode::kSuccess);
    EXPECT_EQ(CalcReflectivityDLL(&b, &state), ReturnCode::kSuccess);
    EXPECT_EQ(a.dataset_R0, b.dataset_R0);
  }
}

// The number types give different last digits, which shows that each precision has its own.
TEST(CurveDispatch, EachPrecisionHasItsOwnNumberType) {
  CSolution curves[4];
  for (int precision = 0; precision < 4; ++precision) {
    CState state = Film();
    state.precision = precision;
    curves[precision] = MakeGrid(0.01, 0.5, 200);
    EXPECT_EQ(CalcReflectivityDLL(&curves[precision], &state), ReturnCode::kSuccess);
    for (int other = 0; other < precision; ++other) {
      EXPECT_FALSE(curves[precision].dataset_R0 == curves[other].dataset_R0) << precision << " " << other;
    }
  }
}

// A contrast below the rounding of 1 vanishes in float: 1 - 1e-9 is 1.
TEST(CurveDispatch, FloatRoundsEveryStoredValue) {
  CState state = MakeState({{.delta = 1e-9}, {}});
  state.precision = Precision::kFloat;
  CSolution solution = MakeGrid({0.1});
  EXPECT_EQ(CalcReflectivityDLL(&solution, &state), ReturnCode::kSuccess);
  EXPECT_EQ(solution.dataset_R0[0], 0.0);
  state.precision = Precision::kDouble;
  EXPECT_EQ(CalcReflectivityDLL(&solution, &state), ReturnCode::kSuccess);
  EXPECT_GT(solution.dataset_R0[0], 0.0);
}

}  // namespace
}  // namespace tolvik::engine
