// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/profile/profile.tpp"
#include "support/precisions.h"
#include "support/states.h"

namespace tolvik::engine {
namespace {

using testing::Epsilon;
using testing::MakeState;

template <class T>
class ProfileOf : public ::testing::Test {};
TYPED_TEST_SUITE(ProfileOf, testing::Precisions, testing::PrecisionNames);

TYPED_TEST(ProfileOf, LayersStandOnEachOther) {
  using T = TypeParam;
  CState state = MakeState({{.thickness = 99}, {.thickness = 10}, {.thickness = 2.5}, {.thickness = 7}});
  state.layers[0].layer_z = -4;
  state.layers[1].layer_z = 1234;
  Profile<T> profile;
  PrepareProfile<T>(state, profile);
  ASSERT_EQ(profile.size, 4);
  // Entry 0 keeps its height, and its thickness is not used.
  const double heights[] = {-4, 6, 8.5, 15.5};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(static_cast<double>(profile[i].layer_z), heights[i]);
}

TYPED_TEST(ProfileOf, CarriesAllNumbersInTheNumberType) {
  using T = TypeParam;
  CState state = MakeState(
      {{.thickness = 0.3, .delta = 0.1, .beta = 0.2, .sigma = 0.4, .ddelta = 0.5, .dbeta = 0.6}, {}});
  state.layers[0].magnetic = 1;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) state.layers[0].Epsilon(i, j) = {i + 0.1, j + 0.2};
  }
  state.layers[0].scalarindex = {9, 9};
  Profile<T> profile;
  PrepareProfile<T>(state, profile);
  const CLayer<T>& entry = profile[0];
  EXPECT_EQ(entry.layer_delta, T(0.1));
  EXPECT_EQ(entry.layer_beta, T(0.2));
  EXPECT_EQ(entry.layer_d, T(0.3));
  EXPECT_EQ(entry.layer_sigma, T(0.4));
  EXPECT_EQ(entry.layer_ddelta, T(0.5));
  EXPECT_EQ(entry.layer_dbeta, T(0.6));
  EXPECT_EQ(entry.magnetic, 1);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) EXPECT_EQ(entry.Epsilon(i, j), Cplx<T>(T(i + 0.1), T(j + 0.2)));
  }
  EXPECT_EQ(entry.scalarindex, Cplx<T>(T(1.0)));
  EXPECT_EQ(profile[1].magnetic, 0);
}

TYPED_TEST(ProfileOf, ReplacesWhatWasThere) {
  using T = TypeParam;
  Profile<T> profile;
  PrepareProfile<T>(MakeState({{.delta = 0.5}, {}, {}}), profile);
  profile[1].scalarindex = Cplx<T>(T(3.0));
  PrepareProfile<T>(MakeState({{}, {}, {}}), profile);
  EXPECT_EQ(profile[0].layer_delta, T(0.0));
  EXPECT_EQ(profile[1].scalarindex, Cplx<T>(T(1.0)));
  PrepareProfile<T>(MakeState({{}}), profile);
  EXPECT_EQ(profile.size, 1);
  PrepareProfile<T>(MakeState({}), profile);
  EXPECT_EQ(profile.size, 0);
}

}  // namespace
}  // namespace tolvik::engine
