// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/dataset.h"

#include <gtest/gtest.h>

#include "tolvik/state_file.h"

namespace tolvik {
namespace {

CDataset Measured() {
  CDataset dataset;
  for (double qz : {0.1, 0.2}) dataset.dataset_qz.Append(qz);
  for (double v : {1.0, 0.5}) dataset.dataset_R0.Append(v);
  dataset.dataset_A.Append(0.25);
  dataset.dataset_Rp.Append(2);
  dataset.dataset_Rm.Append(4);
  dataset.dataset_eng.Append(700);
  dataset.datasetqztranslation = 0.5;
  dataset.datasettranslator = 1;
  dataset.datasetmultiplicator = 2;
  dataset.datasettitle = "title";
  dataset.datasetactive = 1;
  return dataset;
}

TEST(Dataset, Defaults) {
  const CDataset dataset;
  EXPECT_EQ(dataset.datasetmultiplicator, 1.0);
  EXPECT_EQ(dataset.datasetactive, 0);
  EXPECT_EQ(dataset.datasetray1sigmare, 1);
  EXPECT_EQ(dataset.datasetray1pire, 0);
  EXPECT_EQ(dataset.datasetray2sigmare, 0);
  EXPECT_EQ(dataset.datasetray2pire, 1);
  EXPECT_EQ(dataset.datasettitle, "");
  EXPECT_EQ(dataset.datasetcomment, "");
  EXPECT_EQ(dataset.datasetfile, "");
  EXPECT_TRUE(dataset.dataset_qz.IsEmpty());
}

TEST(Dataset, TranslationShiftsTheGridAndScalesTheCurves) {
  CDataset dataset = Measured();
  TranslateDataset(dataset);
  EXPECT_DOUBLE_EQ(dataset.dataset_qz[0], 0.6);
  EXPECT_DOUBLE_EQ(dataset.dataset_qz[1], 0.7);
  EXPECT_DOUBLE_EQ(dataset.dataset_R0[0], 4);  // (1 + 1) * 2
  EXPECT_DOUBLE_EQ(dataset.dataset_R0[1], 3);
  EXPECT_DOUBLE_EQ(dataset.dataset_Rp[0], 6) << "arrays go by their own size";
  EXPECT_DOUBLE_EQ(dataset.dataset_Rm[0], 10);
  EXPECT_EQ(dataset.dataset_A[0], 0.25);
  EXPECT_EQ(dataset.dataset_eng[0], 700);
}

TEST(Dataset, TranslationOfNothingIsNothing) {
  CDataset dataset;
  dataset.datasettranslator = 3;
  TranslateDataset(dataset);
  EXPECT_TRUE(dataset.dataset_qz.IsEmpty());
  EXPECT_TRUE(dataset.dataset_R0.IsEmpty());
}

TEST(Dataset, AssignmentToItselfChangesNothing) {
  CDataset dataset = Measured();
  const CDataset& same = dataset;
  dataset = same;
  EXPECT_EQ(dataset.dataset_qz.size, 2);
  EXPECT_EQ(dataset.dataset_R0[1], 0.5);
  EXPECT_EQ(dataset.datasettitle, "title");
}

TEST(Dataset, CopyIsDeepWithTightArrays) {
  const CDataset source = Measured();
  EXPECT_EQ(source.dataset_qz.capacity, 16);
  CDataset copy = source;
  EXPECT_EQ(copy.dataset_qz.capacity, 2);
  copy.dataset_qz[0] = 9;
  copy.datasettitle = "other";
  EXPECT_EQ(source.dataset_qz[0], 0.1);
  EXPECT_EQ(source.datasettitle, "title");
}

TEST(Dataset, WithoutPointsItDisappearsOnLoad) {
  CState state;
  state.datasets.Append(CDataset());
  state.datasets[0].datasettitle = "Empty";
  state.datasets.Append(CDataset());
  state.datasets[1].datasettitle = "fresh";
  state.datasets.Append(Measured());
  CState loaded;
  ASSERT_TRUE(ReadState(loaded, FormatState(state), ""));
  ASSERT_EQ(loaded.datasets.size, 2);
  EXPECT_EQ(loaded.datasets[1].datasettitle, "title");
}

TEST(Dataset, WriterWritesOnlyArraysThatHoldValues) {
  CState state;
  CDataset dataset;
  dataset.datasettitle = "scan";
  for (double qz : {0.1, 0.2}) dataset.dataset_qz.Append(qz);
  for (double a : {0.5, -0.5}) dataset.dataset_A.Append(a);
  for (double energy : {700.0, 701.0}) dataset.dataset_eng.Append(energy);
  state.datasets.Append(dataset);
  const std::string text = FormatState(state);
  const std::string expected =
      "measurementdataversion = 2\n"
      "# dataset 0\n"
      "datasetnumber = 0\n"
      " datasettitle = scan\n"
      " datasetenergy = 0\n"
      " datasetresolution = 0\n"
      " datasetmultiplicator = 1\n"
      " datasettranslator = 0\n"
      " datasetqztranslation = 0\n"
      " datasetray1sigmare = 1\n"
      " datasetray1sigmaim = 0\n"
      " datasetray1pire = 0\n"
      " datasetray1piim = 0\n"
      " datasetray2sigmare = 0\n"
      " datasetray2sigmaim = 0\n"
      " datasetray2pire = 1\n"
      " datasetray2piim = 0\n"
      " datasetactive = 0\n"
      " datasetcomment = \n"
      " datasetfile = \n"
      " datasetpoints = 2\n"
      "  dataset_qz = 0.1\n"
      "  dataset_A = 0.5\n"
      "  dataset_eng = 700\n"
      "  dataset_qz = 0.2\n"
      "  dataset_A = -0.5\n"
      "  dataset_eng = 701\n"
      "\n";
  EXPECT_EQ(text.substr(text.find("measurementdataversion")), expected);
}

}  // namespace
}  // namespace tolvik
