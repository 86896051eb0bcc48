// SPDX-License-Identifier: GPL-2.0-or-later
// The constraints of examples/cookbook: each state is loaded, its script is run once, and the numbers that it
// sets are compared with numbers calculated by hand from the parameters in the file.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "tolvik/state_file.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

class Cookbook : public ::testing::Test {
 protected:
  void Open(const std::string& name) {
    ASSERT_TRUE(LoadState(state_, std::string(TOLVIK_COOKBOOK "/").append(name).append(".state")));
    ASSERT_FALSE(state_.scriptlines.IsEmpty());
    ASSERT_EQ(StartScriptDLL(&state_), ReturnCode::kSuccess);
  }

  // A second run, as in some commands, must not change anything more.
  void ExpectSettled() {
    const CState once = state_;
    StartScriptDLL(&state_);
    for (std::int32_t i = 0; i < once.layers.size; ++i) {
      EXPECT_EQ(state_.layers[i].layer_d, once.layers[i].layer_d);
      EXPECT_EQ(state_.layers[i].layer_delta, once.layers[i].layer_delta);
      EXPECT_EQ(state_.layers[i].layer_sigma, once.layers[i].layer_sigma);
    }
  }

  CState state_;
};

TEST_F(Cookbook, EqualThicknesses) {
  Open("01_equal_thicknesses");
  EXPECT_EQ(state_.layers[1].layer_d, 90);
  EXPECT_EQ(state_.layers[2].layer_d, 120);  // 300 - 2 * 90
  EXPECT_EQ(state_.layers[3].layer_d, 90);
  ExpectSettled();
}

TEST_F(Cookbook, Ratio) {
  Open("02_ratio");
  for (int i : {1, 3}) {
    EXPECT_DOUBLE_EQ(state_.layers[i].layer_d, 27.6);      // 0.4 * 69
    EXPECT_DOUBLE_EQ(state_.layers[i + 1].layer_d, 41.4);  // 0.6 * 69
  }
  ExpectSettled();
}

TEST_F(Cookbook, ConstantMoment) {
  Open("03_constant_moment");
  EXPECT_DOUBLE_EQ(state_.layers[1].layer_ddelta, 2e-6);  // 2.5e-4 / 125
  EXPECT_DOUBLE_EQ(state_.layers[1].layer_dbeta, 4e-7);
  state_.layers[1].layer_d = 250;  // twice the film, half the contrast
  StartScriptDLL(&state_);
  EXPECT_DOUBLE_EQ(state_.layers[1].layer_ddelta, 1e-6);
}

TEST_F(Cookbook, Superlattice) {
  Open("04_superlattice");
  ASSERT_EQ(state_.layers.size, 12);
  for (int i = 1; i <= 10; ++i) {
    EXPECT_EQ(state_.layers[i].layer_d, i % 2 == 1 ? 28 : 41);
    EXPECT_EQ(state_.layers[i].layer_sigma, 4);
  }
  EXPECT_EQ(state_.layers[0].layer_sigma, 3);
  EXPECT_EQ(state_.layers[11].layer_d, 0);
  ExpectSettled();
}

TEST_F(Cookbook, GrowingRoughness) {
  Open("05_growing_roughness");
  // 9 + 0.1 z at z = 0, 30, 70, 100, 140, 170, 210
  const double squares[] = {9, 12, 16, 19, 23, 26, 30};
  for (int i = 0; i < 7; ++i) EXPECT_DOUBLE_EQ(state_.layers[i].layer_sigma, std::sqrt(squares[i])) << i;
  EXPECT_EQ(state_.layers[7].layer_sigma, 0);
  ExpectSettled();
}

TEST_F(Cookbook, Density) {
  Open("06_density");
  EXPECT_DOUBLE_EQ(state_.layers[1].layer_delta, 2.31021e-05);  // 0.95 * 2.4318e-05
  EXPECT_DOUBLE_EQ(state_.layers[1].layer_beta, 4.70516e-07);
  ExpectSettled();
}

TEST_F(Cookbook, GradedFilm) {
  Open("07_graded_film");
  for (int i = 1; i <= 8; ++i) {
    EXPECT_EQ(state_.layers[i].layer_d, 10);
    EXPECT_EQ(state_.layers[i].layer_sigma, 5);
  }
  // 1/16, 7/16 and 15/16 of the way from 7.1239e-06 to 2.4318e-05
  EXPECT_NEAR(state_.layers[1].layer_delta, 8.19853125e-06, 1e-17);
  EXPECT_NEAR(state_.layers[4].layer_delta, 1.464631875e-05, 1e-17);
  EXPECT_NEAR(state_.layers[8].layer_delta, 2.324336875e-05, 1e-17);
  EXPECT_NEAR(state_.layers[8].layer_beta, 4.70113375e-07, 1e-19);
  ExpectSettled();
}

TEST_F(Cookbook, MagneticInterface) {
  Open("08_magnetic_interface");
  ASSERT_EQ(state_.gaussfunctions.size, 1);
  EXPECT_EQ(state_.gaussfunctions[0].gauss_z, 145);  // 150 - 5
  EXPECT_EQ(state_.gaussfunctions[0].gauss_variance, 12);
  state_.layers[1].layer_d = 160;
  StartScriptDLL(&state_);
  EXPECT_EQ(state_.gaussfunctions[0].gauss_z, 155);
}

TEST_F(Cookbook, Energy) {
  Open("09_energy");
  // (8048 / 6000)² = 1.79918..., from 64770304 / 36000000
  const double squared = 64770304.0 / 36000000.0;
  EXPECT_NEAR(state_.layers[1].layer_delta, 2.4318e-05 * squared, 1e-18);
  EXPECT_NEAR(state_.layers[1].layer_beta, 4.9528e-07 * squared * squared, 1e-20);
  EXPECT_NEAR(state_.layers[0].layer_delta, 7.5767e-06 * squared, 1e-18);
  EXPECT_NEAR(state_.lambda, 12398.326 / 6000, 1e-14);
  state_.lambda = 12398.326 / 16096;  // twice the energy: a quarter and a sixteenth
  StartScriptDLL(&state_);
  EXPECT_NEAR(state_.layers[1].layer_delta, 6.0795e-06, 1e-18);
  EXPECT_NEAR(state_.layers[1].layer_beta, 3.0955e-08, 1e-20);
}

TEST_F(Cookbook, Elements) {
  Open("10_elements");
  ASSERT_EQ(state_.elementlayers.size, 2);
  const CElementLayer& iron = state_.elementlayers[0];
  const CElementLayer& oxygen = state_.elementlayers[1];
  EXPECT_EQ(iron.slices[1].el_d, 30);
  EXPECT_EQ(oxygen.slices[0].el_d, 150);
  EXPECT_EQ(oxygen.slices[1].el_d, 30);
  EXPECT_EQ(oxygen.slices[0].el_sigma, 3);
  EXPECT_EQ(oxygen.slices[1].el_sigma, 5);
}

}  // namespace
}  // namespace tolvik
