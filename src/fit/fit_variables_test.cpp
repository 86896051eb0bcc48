// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/fit_variables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "model/fit_variable_names.h"
#include "optics/tensor.h"

namespace tolvik {
namespace {

CFitVariable MakeVariable(std::int32_t id, std::int32_t a, double value, std::int32_t e = -1) {
  CFitVariable variable;
  variable.fit_id = id;
  variable.fit_additional_id = a;
  variable.fit_element_id = e;
  variable.fit_value = value;
  return variable;
}

CColumnTable MakeTable(std::vector<std::vector<double>> rows) {
  CColumnTable table(2);
  for (const auto& row : rows) {
    CColumnRow record;
    record.energy = row[0];
    record.values.Append(row[1]);
    record.values.Append(row[2]);
    table.Append(record);
  }
  return table;
}

// A state with two of everything that a variable can name.
CState MakeState() {
  CState state;
  state.layers.Append(CLayer());
  state.datasets.Assign(3, CDataset());
  state.gaussfunctions.Assign(2, CGaussFunction());
  state.scriptparameters.Assign(2, 0.0);
  CElementLayer element;
  element.slices.Assign(2, CElementSlice());
  state.elementlayers.Assign(2, element);
  COpticalTable material;
  material.db = MakeTable({{100, 0.1, 0.2}, {200, 0.3, 0.4}});
  state.opticaltables.Assign(2, material);
  return state;
}

struct Field {
  std::int32_t id, a, e;
  double* field;
};

// Every kind but the Kramers-Kronig ones, with the field that it names.
std::vector<Field> AllFields(CState& s) {
  return {{FitKind::kThickness, 1, -1, &s.layers[1].layer_d},
          {FitKind::kDelta, 1, -1, &s.layers[1].layer_delta},
          {FitKind::kBeta, 2, -1, &s.layers[2].layer_beta},
          {FitKind::kSigma, 0, -1, &s.layers[0].layer_sigma},
          {FitKind::kDeltaM, 1, -1, &s.layers[1].layer_ddelta},
          {FitKind::kBetaM, 1, -1, &s.layers[1].layer_dbeta},
          {FitKind::kResolution, -1, -1, &s.resolution},
          {FitKind::kMultiplicator, -1, -1, &s.datasets[1].datasetmultiplicator},
          {FitKind::kQzMovement, -1, -1, &s.datasets[1].datasetqztranslation},
          {FitKind::kGaussDelta, 1, -1, &s.gaussfunctions[1].gauss_delta},
          {FitKind::kGaussBeta, 1, -1, &s.gaussfunctions[1].gauss_beta},
          {FitKind::kGaussVariance, 0, -1, &s.gaussfunctions[0].gauss_variance},
          {FitKind::kGaussZ, 1, -1, &s.gaussfunctions[1].gauss_z},
          {FitKind::kScript, 1, -1, &s.scriptparameters[1]},
          {FitKind::kElementDensity, 1, 1, &s.elementlayers[1].slices[1].el_density},
          {FitKind::kElementThickness, 0, 1, &s.elementlayers[1].slices[0].el_d},
          {FitKind::kElementSigma, 1, 0, &s.elementlayers[0].slices[1].el_sigma},
          {FitKind::kElementF1, -1, 1, &s.elementlayers[1].el_f1},
          {FitKind::kElementF2, -1, 0, &s.elementlayers[0].el_f2}};
}

TEST(FitVariables, EveryKindWritesItsFieldAndReadsItBack) {
  CState state = MakeState();
  state.activedatasetindex = 1;
  const std::vector<Field> fields = AllFields(state);
  double value = 0.5;
  for (const Field& f : fields) state.fitvariables.Append(MakeVariable(f.id, f.a, value += 1, f.e));
  ApplyFitVariables(state);
  value = 0.5;
  for (const Field& f : fields) EXPECT_EQ(*f.field, value += 1) << "kind " << f.id;

  for (const Field& f : fields) *f.field *= 2;
  ReadFitVariables(state, false);
  value = 0.5;
  for (std::int32_t i = 0; i < state.fitvariables.size; ++i) {
    EXPECT_EQ(state.fitvariables[i].fit_value, 2 * (value += 1)) << "kind " << state.fitvariables[i].fit_id;
  }
}

TEST(FitVariables, OnlyOpticalReadsConstantsAndScatteringFactorsOnly) {
  CState state = MakeState();
  state.activedatasetindex = 1;
  for (const Field& f : AllFields(state)) {
    *f.field = 7;
    state.fitvariables.Append(MakeVariable(f.id, f.a, -1, f.e));
  }
  state.fitvariables.Append(MakeVariable(FitKind::kBetaKK, 0, -1, 0));
  ReadFitVariables(state, true);
  for (const CFitVariable& v : state.fitvariables) {
    const bool optical = v.fit_id == FitKind::kDelta || v.fit_id == FitKind::kBeta ||
                         v.fit_id == FitKind::kDeltaM || v.fit_id == FitKind::kBetaM ||
                         v.fit_id >= FitKind::kElementF1;
    EXPECT_EQ(v.fit_value, optical ? 7 : -1) << "kind " << v.fit_id;
  }
}

TEST(FitVariables, ReadingKeepsStepsBoundsAndIds) {
  CState state = MakeState();
  CFitVariable variable = MakeVariable(FitKind::kThickness, 1, 3);
  variable.fit_delta = 0.25;
  variable.fit_lower_boundary = -2;
  variable.fit_upper_boundary = 2;
  variable.fit_dataset1 = 5;
  state.fitvariables.Append(variable);
  state.layers[1].layer_d = 99;
  ReadFitVariables(state, false);
  const CFitVariable& read = state.fitvariables[0];
  EXPECT_EQ(read.fit_value, 99);
  EXPECT_EQ(read.fit_delta, 0.25);
  EXPECT_EQ(read.fit_lower_boundary, -2);
  EXPECT_EQ(read.fit_upper_boundary, 2);
  EXPECT_EQ(read.fit_id, FitKind::kThickness);
  EXPECT_EQ(read.fit_additional_id, 1);
  EXPECT_EQ(read.fit_dataset1, 5);
}

TEST(FitVariables, DatasetsSelectDeltaAndBetaOnly) {
  for (const std::int32_t id : {FitKind::kDelta, FitKind::kBeta, FitKind::kDeltaM}) {
    for (const std::int32_t active : {0, 1, 2}) {
      CState state = MakeState();
      state.activedatasetindex = active;
      CFitVariable variable = MakeVariable(id, 1, 0.125);
      variable.fit_dataset1 = 1;
      variable.fit_dataset2 = 2;
      state.fitvariables.Append(variable);
      ApplyFitVariables(state);
      const CLayer& layer = state.layers[1];
      const double written = id == FitKind::kDelta  ? layer.layer_delta
                             : id == FitKind::kBeta ? layer.layer_beta
                                                    : layer.layer_ddelta;
      EXPECT_EQ(written, id == FitKind::kDeltaM || active != 0 ? 0.125 : 0.0)
          << "kind " << id << " active " << active;
    }
  }
}

TEST(FitVariables, FirstDatasetOfMinusOneAlwaysWrites) {
  CState state = MakeState();
  state.fitvariables.Append(MakeVariable(FitKind::kDelta, 1, 0.5));
  state.fitvariables[0].fit_dataset2 = 2;  // without a first one it has no effect
  ApplyFitVariables(state);
  EXPECT_EQ(state.layers[1].layer_delta, 0.5);
}

TEST(FitVariables, WrittenOpticalConstantsReachTheTensor) {
  CState state = MakeState();
  state.magnetizationmode = MagnetizationMode::kGaussFunctions;
  state.maggamma = 30;
  state.magphi = 50;
  state.fitvariables.Append(MakeVariable(FitKind::kDelta, 1, 2e-3));
  state.fitvariables.Append(MakeVariable(FitKind::kBeta, 1, 1e-3));
  state.fitvariables.Append(MakeVariable(FitKind::kDeltaM, 1, 3e-4));
  state.fitvariables.Append(MakeVariable(FitKind::kBetaM, 1, 2e-4));
  state.fitvariables.Append(MakeVariable(FitKind::kThickness, 2, 50));
  state.layers[2].Epsilon(0, 1) = 17;  // a tensor of its own, as tables with all nine elements leave it
  ApplyFitVariables(state);
  CLayer expected = state.layers[1];
  BuildEpsilonTensor(expected, 30, 50, 2);
  for (int k = 0; k < 16; ++k) EXPECT_EQ(state.layers[1].epsilon[k], expected.epsilon[k]) << k;
  EXPECT_NE(std::abs(state.layers[1].Epsilon(0, 1)), 0.0);
  EXPECT_EQ(state.layers[1].magnetic, 1);
  EXPECT_EQ(state.layers[2].Epsilon(0, 1), 17.0);  // a thickness does not change it
}

TEST(FitVariables, ConstantsOfAnotherDatasetLeaveTheTensor) {
  CState state = MakeState();
  state.layers[1].Epsilon(0, 1) = 17;
  state.fitvariables.Append(MakeVariable(FitKind::kDelta, 1, 0.5));
  state.fitvariables[0].fit_dataset1 = 2;
  ApplyFitVariables(state);
  EXPECT_EQ(state.layers[1].Epsilon(0, 1), 17.0);
}

TEST(FitVariables, MultiplicatorReachesTheActiveIndexAndAllActiveDatasets) {
  CState state = MakeState();
  state.activedatasetindex = 0;  // not active itself
  state.datasets[1].datasetactive = 1;
  state.datasets[2].datasetactive = 1;
  state.datasets.Append(CDataset());
  state.fitvariables.Append(MakeVariable(FitKind::kMultiplicator, -1, 2.5));
  ApplyFitVariables(state);
  EXPECT_EQ(state.datasets[0].datasetmultiplicator, 2.5);
  EXPECT_EQ(state.datasets[1].datasetmultiplicator, 2.5);
  EXPECT_EQ(state.datasets[2].datasetmultiplicator, 2.5);
  EXPECT_EQ(state.datasets[3].datasetmultiplicator, 1.0);
}

TEST(FitVariables, QzMovementReachesTheActiveIndexOnly) {
  CState state = MakeState();
  state.activedatasetindex = 2;
  state.datasets[1].datasetactive = 1;
  state.fitvariables.Append(MakeVariable(FitKind::kQzMovement, -1, 1e-3));
  ApplyFitVariables(state);
  EXPECT_EQ(state.datasets[1].datasetqztranslation, 0.0);
  EXPECT_EQ(state.datasets[2].datasetqztranslation, 1e-3);
}

TEST(FitVariables, LaterVariableOfTheSameFieldWins) {
  CState state = MakeState();
  state.fitvariables.Append(MakeVariable(FitKind::kThickness, 1, 1));
  state.fitvariables.Append(MakeVariable(FitKind::kThickness, 1, 2));
  ApplyFitVariables(state);
  EXPECT_EQ(state.layers[1].layer_d, 2);
}

// Sum of every number that a variable could have changed.
double Fingerprint(CState& state) {
  double sum = 0;
  for (const Field& f : AllFields(state)) sum += *f.field;
  for (const COpticalTable& material : state.opticaltables) {
    for (const CColumnRow& row : material.db) sum += row.values[0] + row.values[1];
  }
  return sum;
}

TEST(FitVariables, IndexesThatNameNothingChangeNothing) {
  for (const std::int32_t bad : {-2, -1, 1000, INT32_MIN, INT32_MAX}) {
    for (std::int32_t id = -2; id < 24; ++id) {
      if (id == 6) continue;  // the resolution has no index
      CState state = MakeState();
      state.activedatasetindex = bad;
      state.kktableindex = bad;
      state.fitvariables.Append(MakeVariable(id, bad, 0.75, bad));
      const double before = Fingerprint(state);
      ApplyFitVariables(state);
      EXPECT_EQ(Fingerprint(state), before) << "kind " << id << " index " << bad;
      ReadFitVariables(state, false);
      EXPECT_EQ(state.fitvariables[0].fit_value, 0.75) << "kind " << id << " index " << bad;
    }
  }
}

TEST(FitVariables, NegativeSliceOfAnElementChangesNothing) {
  CState state = MakeState();
  state.fitvariables.Append(MakeVariable(FitKind::kElementThickness, -1, 12, 0));
  const double before = Fingerprint(state);
  ApplyFitVariables(state);
  EXPECT_EQ(Fingerprint(state), before);
}

// Column 1 / E² and (column 0 + offset) / E² of a working table, with E² times the value in the rows of the
// variables.
TEST(FitVariables, KramersKronigRowsAreSetInTransformForm) {
  CState state = MakeState();
  state.kktableindex = 1;
  state.kkoffset = 10;
  state.kktable = MakeTable({{100, 5, 50}, {200, 6, 60}, {400, 7, 70}});
  state.kktable.cursor = 1;
  state.fitvariables.Append(MakeVariable(FitKind::kBetaKK, 0, 0.25));
  state.fitvariables.Append(
      MakeVariable(FitKind::kBetaKK, 2, 0.5));  // the table is reset once: both rows survive
  state.fitvariables.Append(MakeVariable(FitKind::kDeltaKK, 1, 0.125));
  ApplyFitVariables(state);
  const CColumnTable& table = state.opticaltables[1].db;
  ASSERT_EQ(table.count, 3u);
  EXPECT_EQ(table.cursor, 1u);
  EXPECT_DOUBLE_EQ(table.rows[0].values[1], 0.25);
  EXPECT_DOUBLE_EQ(table.rows[1].values[1], 60.0 / (200.0 * 200.0));
  EXPECT_DOUBLE_EQ(table.rows[2].values[1], 0.5);
  EXPECT_DOUBLE_EQ(table.rows[0].values[0], (5.0 + 10) / (100.0 * 100.0));
  EXPECT_DOUBLE_EQ(table.rows[1].values[0], (0.125 * 200 * 200 + 10) / (200.0 * 200.0));
  EXPECT_EQ(state.opticaltables[0].db.count, 2u);  // the other material stays
  EXPECT_EQ(state.kktable.rows[0].values[1], 50);  // the source does not change either
  // A second time starts from the source again, not from the result.
  ApplyFitVariables(state);
  EXPECT_DOUBLE_EQ(state.opticaltables[1].db.rows[1].values[1], 60.0 / (200.0 * 200.0));
}

TEST(FitVariables, KramersKronigRowBehindTheTableStillConvertsIt) {
  CState state = MakeState();
  state.kktableindex = 0;
  state.kktable = MakeTable({{100, 5, 50}});
  state.fitvariables.Append(MakeVariable(FitKind::kBetaKK, 9, 0.25));
  ApplyFitVariables(state);
  ASSERT_EQ(state.opticaltables[0].db.count, 1u);
  EXPECT_DOUBLE_EQ(state.opticaltables[0].db.rows[0].values[1], 50.0 / 1e4);
}

TEST(FitVariables, KramersKronigIsReadPlainlyFromTheTableOfTheElementId) {
  CState state = MakeState();
  state.kktableindex = 0;
  state.opticaltables[1].db = MakeTable({{100, 1, 2}, {200, 3, 4}});
  state.fitvariables.Append(MakeVariable(FitKind::kBetaKK, 1, 0, 1));
  state.fitvariables.Append(MakeVariable(FitKind::kDeltaKK, 1, 0, 1));
  ReadFitVariables(state, false);
  EXPECT_EQ(state.fitvariables[0].fit_value, 4);
  EXPECT_EQ(state.fitvariables[1].fit_value, 3);
}

TEST(FitVariables, VocabularyHasANameForEachKind) {
  ASSERT_EQ(kFitKindNames.size(), 21u);
  EXPECT_STREQ(kFitKindNames[0], "thickness");
  EXPECT_STREQ(kFitKindNames[7], "meas. mult.");
  EXPECT_STREQ(kFitKindNames[13], "script");
  EXPECT_STREQ(kFitKindNames[15], "el th.");
  EXPECT_STREQ(kFitKindNames[static_cast<std::size_t>(FitKind::kBetaKK)], "beta KK");
  EXPECT_STREQ(kFitKindNames[static_cast<std::size_t>(FitKind::kElementF2)], "el f2");
}

}  // namespace
}  // namespace tolvik
