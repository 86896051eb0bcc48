// SPDX-License-Identifier: GPL-2.0-or-later
// Files of old versions, whose sections were tables without keys.
#include "model/state_file/old_tables.h"

#include <gtest/gtest.h>

#include "optics/energy.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

CState Read(std::string_view text) {
  CState state;
  EXPECT_TRUE(ReadState(state, text, "old.state"));
  return state;
}

TEST(LayerTable, NameOfTheFirstRowTakesTheRestOfTheFile) {
  const CState state = Read(
      "qzmax = 0.2\nlayerversion = 1\n# layers\n3\n# z name\n#\n"
      "12.5 Si li\tcon 1 2 3 4 5\n20 vacuum 0 0 0 0 0\n30 x 0 0 0 0 0\n# ids\n1 2 3\nqzmax = 0.5\n");
  ASSERT_EQ(state.layers.size, 3);
  EXPECT_EQ(state.layers[0].layer_z, 12.5);
  EXPECT_EQ(state.layers[0].layer_db, "Silicon1234520vacuum0000030x00000#ids123qzmax=0.5");
  EXPECT_EQ(state.layers[0].layer_delta, 0);
  EXPECT_EQ(state.layers[1].layer_z, 0);
  EXPECT_EQ(state.layers[1].layer_db, "");
  EXPECT_EQ(state.layers[2].layer_db, "");
  EXPECT_EQ(state.layers[1].layer_d, -12.5) << "thicknesses follow from the heights";
  EXPECT_EQ(state.qzmax, 0.2) << "keys after the table are not read";
}

TEST(LayerTable, VersionTwoHasOneMoreLineAboveTheRows) {
  const std::string head = "layerversion = 2\n# layers\n1\n# a\n# b\n";
  EXPECT_EQ(Read(head + "# c\n7 Si 0 0 0 0 0\n").layers[0].layer_z, 7);
  EXPECT_EQ(Read("layerversion = 1\n# layers\n1\n# a\n# b\n7 Si 0 0 0 0 0\n").layers[0].layer_z, 7);
}

TEST(LayerTable, WithoutRowsTheFileGoesOn) {
  // After the rows two lines are skipped; version 1 then reads as many integers as rows: none.
  const CState one = Read("layerversion = 1\n#\n0\n#\n#\n#\n#\nqzmax = 1\n");
  EXPECT_EQ(one.layers.size, 0);
  EXPECT_EQ(one.qzmax, 1);
  const CState two = Read("layerversion = 2\n#\n0\n#\n#\n#\n#\n#\nqzmax = 1\n");
  EXPECT_EQ(two.qzmax, 1);
}

TEST(GaussTable, VersionOneHasOneAmplitudeAndADroppedFlag) {
  const CState state = Read(
      "magneticversion = 1\n# head\n2\n#\n#\n#\n#\n#\n"
      "1.5 2.5 3.5 1 0 1 0 1 1 2 0 10 1 11 #\n# x\n"
      "4 5 6 0 1 0 1 0 0 0\n\nqzmax = 9\n");
  ASSERT_EQ(state.gaussfunctions.size, 2);
  const CGaussFunction& first = state.gaussfunctions[0];
  EXPECT_EQ(first.gauss_delta, 1.5);
  EXPECT_EQ(first.gauss_beta, 1.5);
  EXPECT_EQ(first.gauss_variance, 2.5);
  EXPECT_EQ(first.gauss_z, 3.5);
  EXPECT_TRUE(first.gauss_fit);
  EXPECT_FALSE(first.gauss_fita);
  EXPECT_TRUE(first.gauss_fitvar);
  EXPECT_FALSE(first.gauss_fitz);
  EXPECT_TRUE(first.gauss_usespline) << "after the dropped flag";
  EXPECT_EQ(first.gauss_acoupling, -1);
  EXPECT_EQ(first.gauss_varcoupling, -1);
  ASSERT_EQ(first.gauss_splinex.size, 2);
  EXPECT_EQ(first.gauss_splinex[1], 1);
  EXPECT_EQ(first.gauss_spliney[1], 11);
  const CGaussFunction& second = state.gaussfunctions[1];
  EXPECT_EQ(second.gauss_delta, 4);
  EXPECT_TRUE(second.gauss_fita);
  EXPECT_FALSE(second.gauss_usespline);
  EXPECT_EQ(state.qzmax, 9) << "the file continues after the table";
}

TEST(GaussTable, VersionTwoAddsCouplings) {
  const CState state = Read(
      "magneticversion = 2\n# head\n1\n#\n#\n#\n#\n#\n1.5 2.5 3.5 0 0 0 0 1 0 3 4 1 0.5 0.25\n#\nqzmax = "
      "9\n");
  ASSERT_EQ(state.gaussfunctions.size, 1);
  const CGaussFunction& function = state.gaussfunctions[0];
  EXPECT_EQ(function.gauss_beta, 1.5);
  EXPECT_FALSE(function.gauss_usespline);
  EXPECT_EQ(function.gauss_acoupling, 3);
  EXPECT_EQ(function.gauss_varcoupling, 4);
  EXPECT_EQ(function.gauss_spliney[0], 0.25);
  EXPECT_EQ(state.qzmax, 9);
}

TEST(GaussTable, VersionThreeHasTwoAmplitudesAndNoDroppedFlag) {
  const CState state = Read(
      "magneticversion = 3\n# head\n1\n#\n#\n#\n#\n#\n0.8 0.1 7.5 40.25 1 1 0 1 1 2 3 0 #\n# x\nqzmax = 9\n");
  ASSERT_EQ(state.gaussfunctions.size, 1);
  const CGaussFunction& function = state.gaussfunctions[0];
  EXPECT_EQ(function.gauss_delta, 0.8);
  EXPECT_EQ(function.gauss_beta, 0.1);
  EXPECT_EQ(function.gauss_variance, 7.5);
  EXPECT_EQ(function.gauss_z, 40.25);
  EXPECT_TRUE(function.gauss_fit && function.gauss_fita && function.gauss_fitz && function.gauss_usespline);
  EXPECT_FALSE(function.gauss_fitvar);
  EXPECT_EQ(function.gauss_acoupling, 2);
  EXPECT_EQ(function.gauss_varcoupling, 3);
  EXPECT_EQ(state.qzmax, 9);
}

TEST(GaussTable, TokensRunAcrossLineEnds) {
  const CState state =
      Read("magneticversion=3\n\n1\n\n\n\n\n\n1\r\n2\r\n3\n4 1\n1 1 1 1\n-1 -1\n0\n\nqzmax=9");
  EXPECT_EQ(state.gaussfunctions[0].gauss_z, 4);
  EXPECT_EQ(state.qzmax, 9);
}

TEST(GaussTable, ATokenThatDoesNotFitEndsTheFile) {
  const CState state =
      Read("magneticversion = 3\n#\n3\n#\n#\n#\n#\n#\n1 2 3 4 oops\n#\n1 2 3 4\nqzmax = 9\n");
  ASSERT_EQ(state.gaussfunctions.size, 3) << "all functions of the count";
  EXPECT_EQ(state.gaussfunctions[0].gauss_z, 4);
  EXPECT_EQ(state.gaussfunctions[1].gauss_variance, 1) << "defaults";
  EXPECT_EQ(state.qzmax, 0) << "nothing after it is read";
}

TEST(GaussTable, OtherVersionsAreKeys) {
  EXPECT_EQ(Read("magneticversion = 0\nqzmax=1\n").qzmax, 1);
  EXPECT_EQ(Read("magneticversion = 5\nqzmax=1\n").qzmax, 1);
}

TEST(MeasurementTable, BecomesDatasetOne) {
  const CState state = Read(
      "energy = 700\nresolution = 0.01\nmeasurementdataversion = 1\n# head\n2\n# rows\n"
      "0.1 0.9 0.2\n0.2 0.8 -0.3\nqzmax = 9\n");
  ASSERT_EQ(state.datasets.size, 2);
  EXPECT_EQ(state.datasets[0].datasettitle, "Empty");
  const CDataset& dataset = state.datasets[1];
  ASSERT_EQ(dataset.dataset_qz.size, 2);
  EXPECT_EQ(dataset.dataset_qz[1], 0.2);
  EXPECT_EQ(dataset.dataset_R0[1], 0.8);
  EXPECT_EQ(dataset.dataset_A[1], -0.3);
  EXPECT_DOUBLE_EQ(dataset.datasetenergy, 700);
  EXPECT_EQ(dataset.datasetresolution, 0.01);
  EXPECT_EQ(dataset.datasettitle, "data1");
  EXPECT_EQ(dataset.datasetfile, "old.state");
  EXPECT_EQ(dataset.datasetcomment, "Measurement data from state file. (version 1)");
  EXPECT_EQ(state.activedatasetindex, 1);
  EXPECT_EQ(state.qzmax, 9);
}

TEST(MeasurementTable, OfNoPointsIsDropped) {
  for (const char* count : {"0", "-5", "x"}) {
    const CState state = Read("measurementdataversion = 1\n# head\n" + std::string(count) + "\n# rows\n");
    EXPECT_EQ(state.datasets.size, 1) << count;
    EXPECT_EQ(state.activedatasetindex, 0);
  }
}

TEST(MeasurementTable, MissingPointsAreZero) {
  const CState state = Read("measurementdataversion = 1\n#\n5\n#\n0.1 0.9 0.2\n0.2 0.8");
  ASSERT_EQ(state.datasets[1].dataset_qz.size, 5);
  EXPECT_EQ(state.datasets[1].dataset_R0[1], 0.8);
  EXPECT_EQ(state.datasets[1].dataset_qz[4], 0);
}

TEST(TextStream, CountsWhatIsLeft) {
  TextStream in("12 34\n56");
  int value = 0;
  in >> value;
  EXPECT_EQ(value, 12);
  EXPECT_EQ(in.Remaining(), 6u);
  in >> value >> value;
  EXPECT_EQ(value, 56);
  EXPECT_EQ(in.Remaining(), 0u);
}

}  // namespace
}  // namespace tolvik
