// SPDX-License-Identifier: GPL-2.0-or-later
// The curve after an exception in its middle, tested by a number type whose square roots run out.
#include <gtest/gtest.h>

#include <stdexcept>

#include "engine/curve/curve.tpp"
#include "engine/curve/dichroism.tpp"
#include "engine/curve/escan.tpp"
#include "engine/number/complex.h"
#include "support/states.h"

namespace tolvik::engine {
namespace {

/// A double that throws from its square roots once a countdown has ended.
struct Fuse {
  double x = 0;
  inline static int roots_left = 0;

  Fuse() = default;
  explicit Fuse(double value) : x(value) {}
  explicit operator double() const { return x; }
  friend Fuse operator+(Fuse a, Fuse b) { return Fuse(a.x + b.x); }
  friend Fuse operator-(Fuse a, Fuse b) { return Fuse(a.x - b.x); }
  friend Fuse operator*(Fuse a, Fuse b) { return Fuse(a.x * b.x); }
  friend Fuse operator/(Fuse a, Fuse b) { return Fuse(a.x / b.x); }
  friend Fuse operator-(Fuse a) { return Fuse(-a.x); }
  Fuse& operator+=(Fuse b) { return *this = *this + b; }
  Fuse& operator-=(Fuse b) { return *this = *this - b; }
  Fuse& operator*=(Fuse b) { return *this = *this * b; }
  Fuse& operator/=(Fuse b) { return *this = *this / b; }
  friend auto operator<=>(const Fuse&, const Fuse&) = default;
  friend Fuse sin(Fuse a) { return Fuse(std::sin(a.x)); }
  friend Fuse cos(Fuse a) { return Fuse(std::cos(a.x)); }
  friend Fuse exp(Fuse a) { return Fuse(std::exp(a.x)); }
  friend Fuse log(Fuse a) { return Fuse(std::log(a.x)); }
  friend Fuse abs(Fuse a) { return Fuse(std::abs(a.x)); }
  [[maybe_unused]] friend Fuse asin(Fuse a) { return Fuse(std::asin(a.x)); }
  friend Fuse sqrt(Fuse a) {
    if (roots_left-- <= 0) throw std::runtime_error("out of roots");
    return Fuse(std::sqrt(a.x));
  }
  friend Fuse pow(Fuse a, Fuse b) { return Fuse(std::pow(a.x, b.x)); }
  friend Fuse atan2(Fuse a, Fuse b) { return Fuse(std::atan2(a.x, b.x)); }
  friend Fuse hypot(Fuse a, Fuse b) { return Fuse(std::hypot(a.x, b.x)); }
  friend Fuse copysign(Fuse a, Fuse b) { return Fuse(std::copysign(a.x, b.x)); }
  friend bool isnan(Fuse a) { return std::isnan(a.x); }
  friend bool isinf(Fuse a) { return std::isinf(a.x); }
  friend bool isfinite(Fuse a) { return std::isfinite(a.x); }
  friend bool signbit(Fuse a) { return std::signbit(a.x); }
  friend void SinCos(Fuse a, Fuse& sine, Fuse& cosine) {
    sine = sin(a);
    cosine = cos(a);
  }
};
static_assert(Number<Fuse>);

// One root for the angle and one for each of the two entries.
constexpr int kRootsPerSample = 3;

CState Substrate() {
  return testing::MakeState({{.delta = 0.3, .beta = 0.1}, {}});
}

TEST(CurveException, EndsTheExactPathLikeAPointOutOfReach) {
  CState state = Substrate();
  state.mulqz4 = 1;
  CSolution whole = testing::MakeGrid({0.1, 0.2, 0.3, -0.4, 0.5});
  Fuse::roots_left = 1000;
  state.mulqz4 = 0;
  EXPECT_EQ(CalcReflectivityCurve<Fuse>(whole, state), ReturnCode::kSuccess);

  state.mulqz4 = 1;  // no finishing step after the stop
  CSolution cut = testing::MakeGrid({0.1, 0.2, 0.3, -0.4, 0.5});
  Fuse::roots_left = 2 * kRootsPerSample + 1;
  EXPECT_EQ(CalcReflectivityCurve<Fuse>(cut, state), ReturnCode::kSuccess);
  EXPECT_EQ(cut.dataset_R0[0], whole.dataset_R0[0]);
  EXPECT_EQ(cut.dataset_R0[1], whole.dataset_R0[1]);
  EXPECT_EQ(cut.dataset_R0[2], 0.0);
  EXPECT_EQ(cut.dataset_R0[3], 1.0) << "never begun";
  EXPECT_EQ(cut.dataset_R0[4], 1.0);
}

TEST(CurveException, KeepsThePartialSumOfItsPoint) {
  CState state = Substrate();
  state.resolution = 0.01;
  Fuse::roots_left = 1000;
  CSolution first = testing::MakeGrid({0.11}), second = testing::MakeGrid({0.09});
  CState bare = Substrate();
  EXPECT_EQ(CalcReflectivityCurve<Fuse>(first, bare), ReturnCode::kSuccess);
  EXPECT_EQ(CalcReflectivityCurve<Fuse>(second, bare), ReturnCode::kSuccess);

  CSolution cut = testing::MakeGrid({0.1, 0.2});
  Fuse::roots_left = 2 * kRootsPerSample;  // the samples at 0.11 and 0.09
  EXPECT_EQ(CalcReflectivityCurve<Fuse>(cut, state), ReturnCode::kSuccess);
  EXPECT_DOUBLE_EQ(cut.dataset_R0[0], 0.027607 * first.dataset_R0[0] + 0.027607 * second.dataset_R0[0]);
  EXPECT_EQ(cut.dataset_R0[1], 1.0);
}

// Both happen: the exception is first in the order of the samples and decides.
TEST(CurveException, ComesBeforeALaterPointOutOfReach) {
  CState state = Substrate();
  CSolution cut = testing::MakeGrid({0.1, 0.2, 9.0});
  Fuse::roots_left = kRootsPerSample;
  EXPECT_EQ(CalcReflectivityCurve<Fuse>(cut, state), ReturnCode::kSuccess);
  EXPECT_EQ(cut.dataset_R0[1], 0.0);
  EXPECT_EQ(cut.dataset_R0[2], 1.0) << "never begun";

  state.fastresolution = true;
  CSolution fast = testing::MakeGrid({0.1, 0.2, 9.0});
  Fuse::roots_left = kRootsPerSample;
  EXPECT_EQ(CalcReflectivityCurve<Fuse>(fast, state), ReturnCode::kSuccess) << "not code 2";
}

TEST(CurveException, EndsTheFastPathWithWhatWasDone) {
  CState state = Substrate();
  state.fastresolution = true;
  state.mulqz4 = 1;
  CSolution cut = testing::MakeGrid({0.1, 0.2, 0.3});
  Fuse::roots_left = 2 * kRootsPerSample + 2;
  EXPECT_EQ(CalcReflectivityCurve<Fuse>(cut, state), ReturnCode::kSuccess);
  EXPECT_NE(cut.dataset_Rp[1], 1.0);
  EXPECT_EQ(cut.dataset_Rp[2], 1.0);
  EXPECT_EQ(cut.dataset_R0, testing::MakeGrid({1, 1, 1}).dataset_qz) << "neither folded nor finished";
}

// Algorithm 2 does not catch: the caller gets the exception, with the unfinished curve.
TEST(CurveException, TravelsOutOfAlgorithmTwo) {
  CState state = Substrate();
  for (int algorithm : {Algorithm::kMatrixOne, Algorithm::kMatrixTwo}) {
    state.algorithm = algorithm;
    CSolution cut = testing::MakeGrid({0.1, 0.2});
    Fuse::roots_left = 0;
    if (algorithm == 1) {
      EXPECT_EQ(CalcReflectivityCurve<Fuse>(cut, state), ReturnCode::kSuccess);
    } else {
      EXPECT_THROW(CalcReflectivityCurve<Fuse>(cut, state), std::runtime_error);
    }
    EXPECT_EQ(cut.dataset_R0[0], 0.0);
    EXPECT_EQ(cut.dataset_R0[1], 1.0);
  }
}

/// The substrate with tables that hold its constants at all energies.
CState Tabulated() {
  CState state = Substrate();
  state.layers[0].layer_db = "substrate";
  testing::AddTable(state, "substrate", {{1, 0.3, 0.1}, {90000, 0.3, 0.1}});
  testing::AddTable(state, "vacuum", {{1, 0, 0}, {90000, 0, 0}});
  return state;
}

TEST(CurveException, EndsAScanWithCodeFive) {
  CState state = Tabulated();
  CSolution scan = testing::MakeScan({0.1, 0.2, 0.3}, {8000, 8000, 8000});
  Fuse::roots_left = kRootsPerSample + 1;
  EXPECT_EQ(CalcEScanCurve<Fuse>(scan, state), ReturnCode::kUnknownError);
  EXPECT_GT(scan.dataset_R0[0], 0.0);
  EXPECT_LT(scan.dataset_R0[0], 1.0);
  EXPECT_EQ(scan.dataset_R0[1], 0.0);
  EXPECT_EQ(scan.dataset_R0[2], 1.0);
}

TEST(CurveException, EndsADichroicCurveWithCodeFive) {
  for (bool fast : {false, true}) {
    CState state = Substrate();
    state.fastresolution = fast;
    CSolution curve = testing::MakeGrid({0.1, 0.2, 9.0});
    Fuse::roots_left = 2 * kRootsPerSample;  // one more root for the second ray, and the next angle fails
    EXPECT_EQ(CalcAsymmetryCurve<Fuse>(curve, state), ReturnCode::kUnknownError)
        << "before the point out of reach";
    EXPECT_LT(curve.dataset_Rp[0], 1.0);
    EXPECT_EQ(curve.dataset_Rp[1], 1.0);
    EXPECT_EQ(curve.dataset_Rm[1], 1.0);
  }
  CState state = Tabulated();
  CSolution scan = testing::MakeScan({0.1, 0.2}, {8000, 8000});
  Fuse::roots_left = 2 * kRootsPerSample;
  EXPECT_EQ(CalcDicEScanCurve<Fuse>(scan, state), ReturnCode::kUnknownError);
  EXPECT_LT(scan.dataset_Rm[0], 1.0);
  EXPECT_EQ(scan.dataset_Rm[1], 1.0);
}

}  // namespace
}  // namespace tolvik::engine
