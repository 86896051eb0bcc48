// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/profile/segmentation.tpp"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "engine/number/cnumber.h"
#include "engine/number/complex.h"
#include "engine/profile/profile.tpp"
#include "support/stacks.h"

namespace tolvik::engine {
namespace {

using testing::MakeProfile;
using testing::Slab;

const Slab kVacuum;
const CArray<CGaussFunction> kNoFunctions;

template <class T>
Profile<T> Slice(Profile<T> profile, SliceRule rule, std::int32_t model = 2) {
  rule.model = model;
  SegmentProfile(profile, kNoFunctions, 1, 0, rule);
  return profile;
}

Profile<double> Film(double sigma = 3) {
  return MakeProfile<double>({{0, 0.02, 0.01, sigma}, {50, 0.05, 0.02, sigma, 0.003, 0.001}, kVacuum});
}

TEST(Segmentation, ModeZeroLeavesTheStackAlone) {
  auto profile = Film();
  CArray<CGaussFunction> functions;
  functions.Append(CGaussFunction());
  functions[0].gauss_delta = 5;
  SegmentProfile(profile, functions, 0, 2, {1, 1, 0, 2});
  ASSERT_EQ(profile.size, 3);
  EXPECT_EQ(profile[1].layer_ddelta, 0.003);
  EXPECT_EQ(profile[2].layer_z, 50.0);
  EXPECT_EQ(profile[1].layer_sigma, 3.0);
}

TEST(Segmentation, WithoutGradientAllStepsAreTheMinimum) {
  const auto slices = Slice(Film(), {0.5, 10, 0});
  // From -30 to 50 + 30 in steps of 0.5, both ends included.
  ASSERT_EQ(slices.size, 221);
  for (std::int32_t i = 0; i < slices.size; ++i) {
    EXPECT_NEAR(slices[i].layer_z, -29.75 + 0.5 * i, 1e-12);
    EXPECT_NEAR(slices[i].layer_d, i == 0 ? 0.0 : 0.5, 1e-12);
    EXPECT_EQ(slices[i].layer_sigma, 0.0);
  }
}

TEST(Segmentation, LowerBoundWinsWhereTheBoundsCross) {
  const auto slices = Slice(Film(), {2, 0.5, 1e-6});
  EXPECT_NEAR(slices[7].layer_d, 2, 1e-12);
}

TEST(Segmentation, SlicesAreThinWhereTheProfileIsSteep) {
  const auto slices = Slice(Film(), {0.2, 8, 1e-3});
  double thinnest = 100, thickest = 0, at = 0;
  for (std::int32_t i = 1; i < slices.size; ++i) {
    if (slices[i].layer_d < thinnest) {
      thinnest = slices[i].layer_d;
      at = slices[i].layer_z;
    }
    thickest = std::max(thickest, slices[i].layer_d);
  }
  EXPECT_NEAR(thickest, 8, 1e-9);
  EXPECT_LT(thinnest, 2);
  EXPECT_NEAR(at, 50, 1.5);  // the step of 0.05 in delta is steeper than that of 0.03
  // At the upper interface d delta/dz is 0.05/(3√(2π)), up to the curvature within a slice.
  EXPECT_NEAR(thinnest, 1 / (0.05 / (3 * std::sqrt(2 * M_PI)) * 1e-3 * 100000), 0.1);
}

TEST(Segmentation, ASliceHoldsTheMiddleBetweenTheHeights) {
  auto stack = Film();
  const auto slices = Slice(stack, {0.7, 0.7, 0});
  for (std::int32_t i = 1; i < slices.size; ++i) {
    CLayer<double> expected;
    CalcSegmentedValues(stack, 2, (slices[i - 1].layer_z + slices[i].layer_z) / 2, expected);
    EXPECT_NEAR(slices[i].layer_delta, expected.layer_delta, 1e-16);
    EXPECT_NEAR(slices[i].layer_dbeta, expected.layer_dbeta, 1e-16);
    EXPECT_NEAR(std::abs(slices[i].epsilon[8] - expected.epsilon[8]), 0, 1e-15);
  }
  CLayer<double> first;  // the lowest keeps the middle of its own range
  CalcSegmentedValues(stack, 2, -30 + 0.35, first);
  EXPECT_NEAR(slices[0].layer_delta, first.layer_delta, 1e-16);
}

TEST(Segmentation, MarginIsThirtyUpToARoughnessOfTen) {
  for (const auto& [sigma, margin] : {std::pair{10.0, 30.0}, std::pair{10.5, 31.5}}) {
    EXPECT_EQ(segmentation::Margin(sigma), margin);
    const auto slices = Slice(Film(sigma), {0.25, 0.25, 0});
    EXPECT_EQ(slices[0].layer_z, -margin + 0.125);
    EXPECT_NEAR(slices.Last().layer_z, 50 + margin + 0.125, 1e-9);
  }
}

TEST(Segmentation, TheHeightOfTheSubstrateShiftsTheStackButNotTheLowerEnd) {
  auto stack = Film();
  stack[0].layer_z = -15;
  const auto slices = Slice(stack, {0.5, 0.5, 0});
  EXPECT_EQ(slices[0].layer_z, -29.75);
  EXPECT_NEAR(slices.Last().layer_z, 65.25, 1e-9);
}

TEST(Segmentation, AStackWhoseRangeEndsBelowItsBeginIsEmpty) {
  auto stack = Film();
  stack[0].layer_z = -200;
  EXPECT_EQ(Slice(stack, {0.5, 0.5, 0}).size, 0);
}

TEST(Segmentation, ASingleEntryAndNoneStayAsTheyAre) {
  EXPECT_EQ(Slice(MakeProfile<double>({{5, 0.02, 0.01, 3}}), {0.5, 0.5, 0}).size, 1);
  EXPECT_EQ(Slice(Profile<double>(), {0.5, 0.5, 0}).size, 0);
}

TEST(Segmentation, TheAmbientIsPushedAway) {
  auto stack = Film();
  Profile<double> slices;
  CalcSliceGrid(stack, 2, 0.5, 0.5, 0.0, slices);
  EXPECT_EQ(stack[2].layer_z, 1e100);
  EXPECT_EQ(stack[2].layer_sigma, 1e-10);
}

TEST(Segmentation, MagneticFlagComesFromAllButTheAmbient) {
  for (std::int32_t magnetic = 0; magnetic < 3; ++magnetic) {
    auto stack = Film();
    stack[magnetic].magnetic = 1;
    EXPECT_EQ(Slice(stack, {5, 5, 0})[3].magnetic, magnetic < 2 ? 1 : 0);
  }
}

TEST(Segmentation, NumberTypesGiveTheSameSlices) {
  const auto reference = Slice(Film(), {0.5, 4, 1e-3});
  const auto check = [&]<class T>(T, double tolerance) {
    const auto slices = Slice(
        MakeProfile<T>({{0, 0.02, 0.01, 3}, {50, 0.05, 0.02, 3, 0.003, 0.001}, kVacuum}), {0.5, 4, 1e-3});
    ASSERT_EQ(slices.size, reference.size);
    for (std::int32_t i = 0; i < slices.size; ++i) {
      EXPECT_NEAR(static_cast<double>(slices[i].layer_z), reference[i].layer_z, tolerance);
      EXPECT_NEAR(static_cast<double>(slices[i].layer_delta), reference[i].layer_delta, tolerance);
    }
  };
  check(0.0L, 1e-7);
  check(CNumber(), 1e-7);
  const auto even = Slice(Film(), {0.5, 0.5, 0});
  const auto single = Slice(
      MakeProfile<float>({{0, 0.02, 0.01, 3}, {50, 0.05, 0.02, 3, 0.003, 0.001}, kVacuum}), {0.5, 0.5, 0});
  ASSERT_EQ(single.size, even.size);
  EXPECT_NEAR(single[70].layer_delta, even[70].layer_delta, 1e-7);
}

// Runs the slicing in a process of its own and checks whether it ends within half a second.
bool Ends(const SliceRule& rule) {
  const pid_t child = fork();
  if (child == 0) {
    Slice(Film(), rule);
    _exit(0);
  }
  for (int tenth = 0; tenth < 5; ++tenth) {
    usleep(100000);
    if (waitpid(child, nullptr, WNOHANG) == child) return true;
  }
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  return false;
}

TEST(Segmentation, StepsOfZeroNeverEnd) {
  EXPECT_FALSE(Ends({0, 10, 0}));
  EXPECT_TRUE(Ends({0.5, 10, 0}));
}

TEST(Segmentation, SlicesBeyondMemoryThrow) {
  EXPECT_THROW(CheckProfileSize<double>(1e8), std::bad_alloc);
  EXPECT_NO_THROW(CheckProfileSize<double>(1e6));
}

}  // namespace
}  // namespace tolvik::engine
