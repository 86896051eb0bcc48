// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/layer_constants.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "optics/energy.h"
#include "optics/material.h"
#include "support/scratch.h"

namespace tolvik {
namespace {

using testing::ScratchFolder;

class LayerConstants : public ::testing::Test {
 protected:
  // Two layers of one stem with a .db table from 700 to 800 eV.
  CState TwoLayers() {
    folder_.Write("Co.db", "700 0.001 0.0002\n800 0.003 0.0004\n");
    CState state;
    for (CLayer& layer : state.layers) layer.layer_db.Set(folder_.Path("Co"));
    state.lambda = LambdaFromEnergy(750);
    return state;
  }

  static CState InElementMode(const std::string& stem) {
    CState state;
    state.mode = Mode::kElement;
    CElementLayer element;
    element.element.Set(stem);
    element.el_f1 = -3;
    state.elementlayers.Append(element);
    return state;
  }

  const ScratchFolder folder_;
};

TEST_F(LayerConstants, LastEnergyOfTheTableIsInside) {
  CState state = TwoLayers();
  ASSERT_TRUE(LoadOpticalTables(state));
  // 12398.326 / (12398.326 / 800) is 800 exactly; checked, since the rule turns on it.
  state.lambda = LambdaFromEnergy(800);
  ASSERT_EQ(EnergyFromLambda(state.lambda), 800);
  EXPECT_TRUE(SetLayerConstantsForEnergy(state));
  EXPECT_EQ(state.layers[1].layer_delta, 0.003);
  EXPECT_EQ(state.layers[1].layer_beta, 0.0004);

  state.layers[0].layer_delta = 42;
  state.lambda = LambdaFromEnergy(800.001);
  EXPECT_FALSE(SetLayerConstantsForEnergy(state));
  EXPECT_EQ(state.layers[0].layer_delta, 42);
  EXPECT_EQ(state.layers[1].layer_delta, 0.003);
}

TEST_F(LayerConstants, EnergiesThatAreNoEnergiesChangeNothing) {
  CState state = TwoLayers();
  ASSERT_TRUE(LoadOpticalTables(state));
  state.layers[0].layer_delta = 42;
  for (double lambda :
       {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    state.lambda = lambda;
    EXPECT_FALSE(SetLayerConstantsForEnergy(state));
    EXPECT_EQ(state.layers[0].layer_delta, 42);
  }
}

TEST_F(LayerConstants, TensorOfATableIgnoresTheMagnetisation) {
  folder_.Write("Co.e", "750 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18\n");
  CState state = TwoLayers();
  state.magnetizationmode = MagnetizationMode::kLayers;
  state.maggamma = 90;
  state.magphi = 90;
  ASSERT_TRUE(LoadOpticalTables(state));
  EXPECT_TRUE(SetLayerConstantsForEnergy(state));
  EXPECT_EQ(state.layers[0].Epsilon(0, 2), std::complex<double>(5, 6));
  state.maggamma = 10;
  state.magnetizationmode = MagnetizationMode::kNone;
  EXPECT_TRUE(SetLayerConstantsForEnergy(state));
  EXPECT_EQ(state.layers[0].Epsilon(0, 2), std::complex<double>(5, 6));
  EXPECT_EQ(state.layers[0].magnetic, 1);
}

TEST_F(LayerConstants, WithoutMagnetisationTheTensorIsDiagonal) {
  folder_.Write("Co.m", "700 0.1 0.2\n");
  CState state = TwoLayers();
  state.maggamma = 90;
  state.magphi = 90;
  ASSERT_TRUE(LoadOpticalTables(state));
  EXPECT_TRUE(SetLayerConstantsForEnergy(state));
  const CLayer& layer = state.layers[0];
  EXPECT_EQ(layer.layer_ddelta, 0.1);  // the single row of .m is used at every energy
  EXPECT_EQ(layer.layer_dbeta, 0.2);
  EXPECT_EQ(layer.magnetic, 0);
  EXPECT_EQ(layer.Epsilon(0, 2), 0.0);
  // n² with n = 1 - 0.002 + 0.0003i
  EXPECT_NEAR(layer.Epsilon(1, 1).real(), 0.998 * 0.998 - 0.0003 * 0.0003, 1e-15);
  EXPECT_NEAR(layer.Epsilon(1, 1).imag(), 2 * 0.998 * 0.0003, 1e-15);
}

TEST_F(LayerConstants, PolarMagnetisationFillsOnlyXy) {
  folder_.Write("Co.m", "700 0.1 0.2\n");
  CState state = TwoLayers();
  state.magnetizationmode = MagnetizationMode::kLayers;
  ASSERT_TRUE(LoadOpticalTables(state));
  EXPECT_TRUE(SetLayerConstantsForEnergy(state));
  const CLayer& layer = state.layers[0];
  EXPECT_EQ(layer.magnetic, 1);
  // xy = -2i n² (deltam - i betam)
  const std::complex<double> n(0.998, 0.0003);
  const std::complex<double> xy = std::complex<double>(0, -2) * n * n * std::complex<double>(0.1, -0.2);
  EXPECT_NEAR(std::abs(layer.Epsilon(0, 1) - xy), 0, 1e-15);
  EXPECT_EQ(layer.Epsilon(1, 0), -layer.Epsilon(0, 1));
  for (auto [row, column] : {std::pair{0, 2}, {2, 0}, {1, 2}, {2, 1}}) {
    EXPECT_EQ(layer.Epsilon(row, column), 0.0);
  }
}

TEST_F(LayerConstants, MissingMaterialLeavesItsLayerAndSetsTheOthers) {
  CState state = TwoLayers();
  state.layers[0].layer_db = "";
  state.layers[0].layer_delta = 42;
  EXPECT_FALSE(LoadOpticalTables(state));
  EXPECT_FALSE(SetLayerConstantsForEnergy(state));
  EXPECT_EQ(state.layers[0].layer_delta, 42);
  EXPECT_NEAR(state.layers[1].layer_delta, 0.002, 1e-15);
}

TEST_F(LayerConstants, OtherModesLoadNothingAndThenFail) {
  CState state = TwoLayers();
  state.mode = 2;
  EXPECT_TRUE(LoadOpticalTables(state));
  EXPECT_FALSE(SetLayerConstantsForEnergy(state));
  state.layers.Clear();
  EXPECT_TRUE(SetLayerConstantsForEnergy(state));
}

TEST_F(LayerConstants, ElementsTakeTheirScatteringFactors) {
  folder_.Write("Fe.ff", "700 20 2\n720 30 4\n");
  CState state = InElementMode(folder_.Path("Fe"));
  state.lambda = LambdaFromEnergy(705);
  EXPECT_FALSE(SetLayerConstantsForEnergy(state));  // nothing is loaded
  ASSERT_TRUE(LoadOpticalTables(state));
  EXPECT_TRUE(SetLayerConstantsForEnergy(state));
  const CElementLayer& element = state.elementlayers[0];
  EXPECT_NEAR(element.el_f1, 22.5, 1e-12);
  EXPECT_NEAR(element.el_f2, 2.5, 1e-12);
  for (double spare : element.spare) EXPECT_EQ(spare, -1.0);
  state.lambda = LambdaFromEnergy(730);
  EXPECT_FALSE(SetLayerConstantsForEnergy(state));
  EXPECT_NEAR(element.el_f1, 22.5, 1e-12);
}

TEST_F(LayerConstants, EmptyListsSucceed) {
  CState state;
  state.layers.Clear();
  EXPECT_TRUE(SetLayerConstantsForEnergy(state));
  state.mode = Mode::kElement;
  EXPECT_TRUE(SetLayerConstantsForEnergy(state));
}

TEST_F(LayerConstants, PrepareTellsWhatIsMissing) {
  CState state = TwoLayers();
  state.magnetizationmode = MagnetizationMode::kLayers;
  folder_.Write("Co.e", "750 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18\n");
  EXPECT_EQ(PrepareLayerConstants(state, TablesToLoad::kIfNone),
            LayerConstantsStatus::kMissingMagneticTables);  // .e does not count
  state.magnetizationmode = MagnetizationMode::kNone;
  EXPECT_EQ(PrepareLayerConstants(state, TablesToLoad::kIfNone), LayerConstantsStatus::kReady);
  EXPECT_NEAR(state.layers[0].layer_delta, 0.002, 1e-15);
  state.lambda = 1;
  EXPECT_EQ(PrepareLayerConstants(state, TablesToLoad::kIfNone), LayerConstantsStatus::kEnergyOutOfRange);
  state.layers[0].layer_db.Set(folder_.Path("gone"));
  state.lambda = LambdaFromEnergy(750);
  // the list is not empty, so nothing is loaded and the layer keeps its constants
  EXPECT_EQ(PrepareLayerConstants(state, TablesToLoad::kIfNone), LayerConstantsStatus::kEnergyOutOfRange);
  state.opticaltables.Clear();
  EXPECT_EQ(PrepareLayerConstants(state, TablesToLoad::kIfNone), LayerConstantsStatus::kMissingTables);
}

}  // namespace
}  // namespace tolvik
