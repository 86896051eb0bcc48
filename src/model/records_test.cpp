// SPDX-License-Identifier: GPL-2.0-or-later
// Defaults, growth and copies of the records.
#include "tolvik/state.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace tolvik {
namespace {

TEST(CArray, GrowsByHalfAndSixteen) {
  CArray<int> array;
  EXPECT_EQ(array.capacity, 0);
  EXPECT_EQ(array.data, nullptr);
  const std::pair<int, int> growth[] = {{1, 16}, {16, 16}, {17, 40}, {40, 40}, {41, 76}, {77, 130}};
  for (auto [size, capacity] : growth) {
    while (array.size < size) array.Append(array.size);
    EXPECT_EQ(array.capacity, capacity) << size;
  }
  for (int i = 0; i < array.size; ++i) ASSERT_EQ(array[i], i);
}

TEST(CArray, CopyIsDeepWithCapacityEqualToSize) {
  CArray<double> source;
  for (int i = 0; i < 3; ++i) source.Append(i);
  CArray<double> copy(source);
  EXPECT_EQ(copy.capacity, 3);
  copy[0] = 9;
  EXPECT_EQ(source[0], 0);
  CArray<double> assigned;
  assigned.Append(7);
  assigned = source;
  EXPECT_EQ(assigned.size, 3);
  EXPECT_EQ(assigned.capacity, 3);
  assigned = copy;  // a block of the right size is used again
  EXPECT_EQ(assigned[0], 9);
  EXPECT_NE(assigned.data, copy.data);
  assigned = CArray<double>(CArray<double>());
  EXPECT_EQ(assigned.data, nullptr);
  EXPECT_EQ(assigned.capacity, 0);
}

TEST(CArray, AppendsAnElementOfItself) {
  CArray<CCharArray> texts;
  texts.Append("first");
  while (texts.size < 41) texts.Append(texts[0]);
  EXPECT_EQ(texts[40], "first");
}

TEST(CArray, AssignmentToItselfChangesNothing) {
  CArray<CCharArray> texts;
  texts.Append("x");
  auto& same = texts;
  texts = same;
  texts = std::move(same);
  ASSERT_EQ(texts.size, 1);
  EXPECT_EQ(texts[0], "x");
}

TEST(CCharArray, EmptyTextHoldsOneNul) {
  const CCharArray text;
  EXPECT_EQ(text.size, 1);
  EXPECT_EQ(text.capacity, 1);
  EXPECT_EQ(text.data[0], '\0');
}

TEST(CCharArray, SizeCountsTheNul) {
  CCharArray text = "vacuum";
  EXPECT_EQ(text.size, 7);
  EXPECT_EQ(text.capacity, 7);
  EXPECT_STREQ(text.CStr(), "vacuum");
  text.Set(std::string_view("ab\0cd", 5));
  EXPECT_EQ(text, "ab") << "a NUL ends the text";
}

TEST(CCharArray, ClearedTextReadsAsEmpty) {
  CCharArray text = "abc";
  text.Clear();
  EXPECT_EQ(text.size, 0);
  EXPECT_EQ(text.data, nullptr);
  EXPECT_EQ(text.View(), "");
  EXPECT_STREQ(text.CStr(), "");
  EXPECT_TRUE(text == CCharArray());
}

TEST(CCharArray, ComparesBytes) {
  EXPECT_TRUE(CCharArray("Fe") == CCharArray("Fe"));
  EXPECT_FALSE(CCharArray("Fe") == CCharArray("FeO"));
  EXPECT_FALSE(CCharArray("Fe") == "fe");
}

TEST(CState, Defaults) {
  const CState state;
  ASSERT_EQ(state.layers.size, 2);
  for (const CLayer& layer : state.layers) {
    EXPECT_EQ(layer.layer_db, "vacuum");
    EXPECT_EQ(layer.layer_material, "");
    EXPECT_EQ(layer.scalarindex, std::complex<double>(1, 0));
    EXPECT_EQ(layer.layer_d, 0);
    EXPECT_EQ(layer.magnetic, 0);
    for (auto element : layer.epsilon) EXPECT_EQ(element, std::complex<double>(0, 0));
  }
  EXPECT_EQ(state.datasets.size, 0);
  EXPECT_EQ(state.currentelement, -1);
  EXPECT_EQ(state.precision, Precision::kDouble);
  EXPECT_EQ(state.numberofpoints, 200);
  EXPECT_EQ(state.fitqzmax, 10);
  EXPECT_EQ(state.segmentationmodel, SegmentationModel::kSteps);
  EXPECT_EQ(state.evo_population, 50);
  EXPECT_EQ(state.epsilon, 5e-05);
  EXPECT_EQ(state.kktableindex, -1);
  EXPECT_EQ(state.kktable.columns, 2);
  EXPECT_EQ(state.maprange.id1, MapAxis::kEnergy);
  EXPECT_EQ(state.maprange.id2, MapAxis::kQz);
  EXPECT_EQ(state.maprange.n1, 1);
  EXPECT_EQ(state.maprange.n2, 1);
  EXPECT_FALSE(state.fitresolution || state.fitmeasmult || state.fitdeltaqz || state.gausscoupling ||
               state.usemeasurementqz || state.fastresolution || state.evo_takeeliteasparents ||
               state.evo_evorestrictfitparameters);
}

TEST(CState, RaysDefaultToPureSigmaAndPurePi) {
  const CState state;
  const double rays[] = {state.ray1sigmare, state.ray1sigmaim, state.ray1pire, state.ray1piim,
                         state.ray2sigmare, state.ray2sigmaim, state.ray2pire, state.ray2piim};
  const double expected[] = {1, 0, 0, 0, 0, 0, 1, 0};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(rays[i], expected[i]) << i;
}

TEST(CState, RecordsOfListsHaveTheirDefaults) {
  const CGaussFunction gauss;
  EXPECT_EQ(gauss.gauss_variance, 1);
  EXPECT_EQ(gauss.gauss_acoupling, -1);
  EXPECT_EQ(gauss.gauss_varcoupling, -1);
  EXPECT_EQ(gauss.gauss_bindtolayer, -1);
  EXPECT_FALSE(gauss.gauss_fit || gauss.gauss_fita || gauss.gauss_fitvar || gauss.gauss_fitz ||
               gauss.gauss_usespline);
  const CFitVariable variable;
  EXPECT_EQ(variable.fit_upper_boundary, 1e10);
  EXPECT_EQ(variable.fit_lower_boundary, -1e10);
  EXPECT_EQ(variable.fit_additional_id, -1);
  EXPECT_EQ(variable.fit_element_id, -1);
  EXPECT_EQ(variable.fit_dataset1, -1);
  EXPECT_EQ(variable.fit_dataset2, -1);
}

CState FullState() {
  CState state;
  state.layers[0].layer_db = "Si";
  state.elementlayers.Append(CElementLayer());
  state.elementlayers[0].slices.Append(CElementSlice());
  state.fitvariables.Append(CFitVariable());
  state.datasets.Append(CDataset());
  state.datasets[0].dataset_qz.Append(0.1);
  state.gaussfunctions.Append(CGaussFunction());
  state.gaussfunctions[0].gauss_splinex.Append(2);
  state.opticaltables.Append(COpticalTable());
  state.opticaltables[0].db.Append({700, {}});
  state.kktable.Append({710, {}});
  state.scriptparameters.Append(3);
  state.scriptlines.Append("script");
  state.defaultscriptlines.Append("default");
  return state;
}

void ExpectFullState(const CState& state) {
  EXPECT_EQ(state.layers[0].layer_db, "Si");
  EXPECT_EQ(state.elementlayers[0].slices.size, 1);
  EXPECT_EQ(state.fitvariables.size, 1);
  EXPECT_EQ(state.datasets[0].dataset_qz[0], 0.1);
  EXPECT_EQ(state.gaussfunctions[0].gauss_splinex[0], 2);
  ASSERT_EQ(state.opticaltables[0].db.count, 1u);
  EXPECT_EQ(state.opticaltables[0].db.rows[0].energy, 700);
  EXPECT_EQ(state.kktable.rows[0].energy, 710);
  EXPECT_EQ(state.scriptparameters[0], 3);
  EXPECT_EQ(state.scriptlines[0], "script");
  EXPECT_EQ(state.defaultscriptlines[0], "default");
}

TEST(CState, CopiesAreDeep) {
  const CState state = FullState();
  CState copy;
  copy = state;
  copy.layers[0].layer_db = "Ge";
  copy.elementlayers[0].slices.Clear();
  copy.fitvariables.Clear();
  copy.datasets[0].dataset_qz[0] = 0;
  copy.gaussfunctions[0].gauss_splinex[0] = 0;
  copy.opticaltables[0].db.rows[0].energy = 0;
  copy.kktable.rows[0].energy = 0;
  copy.scriptparameters[0] = 0;
  copy.scriptlines[0] = "other";
  copy.defaultscriptlines[0] = "other";
  ExpectFullState(state);
  ExpectFullState(CState(state));
}

TEST(CState, AssignmentToItselfChangesNothing) {
  CState state = FullState();
  const CState& same = state;
  state = same;
  ExpectFullState(state);
}

TEST(CColumnTable, CopiesKeepColumnsAndCursor) {
  CColumnTable table(18);
  EXPECT_EQ(table.cursor, 0u);
  for (int i = 0; i < 17; ++i) table.Append({double(i), {}});
  EXPECT_EQ(table.capacity, 40);
  table.cursor = 5;
  const CColumnTable copy(table);
  EXPECT_EQ(copy.columns, 18);
  EXPECT_EQ(copy.cursor, 5u);
  EXPECT_EQ(copy.count, 17u);
  EXPECT_EQ(copy.rows[16].energy, 16);
  EXPECT_NE(copy.rows, table.rows);
}

}  // namespace
}  // namespace tolvik
