// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/material.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/scratch.h"

namespace tolvik {
namespace {

using testing::ScratchFolder;

CState LayersNamed(const std::vector<std::string>& stems) {
  CState state;
  state.layers.Clear();
  for (const std::string& stem : stems) {
    CLayer layer;
    layer.layer_db.Set(stem);
    state.layers.Append(layer);
  }
  return state;
}

TEST(LoadOpticalTable, LayerNeedsOnlyItsDbFile) {
  const ScratchFolder folder;
  folder.Write("Co.db", "800 3e-3 4e-4\n700 1e-3 2e-4\n");
  COpticalTable material;
  EXPECT_TRUE(LoadOpticalTable(material, folder.Path("Co")));
  EXPECT_EQ(material.name, folder.Path("Co"));
  ASSERT_EQ(material.db.count, 2u);
  EXPECT_EQ(material.db.rows[0].energy, 700);  // sorted
  EXPECT_EQ(material.m.count + material.e.count + material.ff.count, 0u);
}

TEST(LoadOpticalTable, TensorFileAloneIsNotEnough) {
  const ScratchFolder folder;
  folder.Write("Co.e", "700 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18\n");
  folder.Write("Co.m", "900 1 2\n700 3 4\n");
  COpticalTable material;
  EXPECT_FALSE(LoadOpticalTable(material, folder.Path("Co")));
  EXPECT_EQ(material.e.count, 1u);
  EXPECT_EQ(material.m.rows[0].energy, 700);
}

TEST(LoadOpticalTable, ElementReadsItsFormFactorsAlone) {
  const ScratchFolder folder;
  folder.Write("Fe.ff", "710 26 1\n700 25 2\n");
  folder.Write("Fe.db", "700 1 2\n");
  COpticalTable material;
  material.kind = TableKind::kElement;
  EXPECT_TRUE(LoadOpticalTable(material, folder.Path("Fe")));
  EXPECT_EQ(material.ff.rows[0].energy, 700);
  EXPECT_EQ(material.db.count, 0u);
  material.kind = TableKind::kElement;
  EXPECT_FALSE(LoadOpticalTable(material, folder.Path("Ni")));
  EXPECT_EQ(material.name, folder.Path("Ni"));
}

TEST(LoadOpticalTable, TakesTheRecordsOwnName) {
  const ScratchFolder folder;
  folder.Write("Co.db", "700 1e-3 2e-4\n");
  COpticalTable material;
  material.name.Set(folder.Path("Co"));
  EXPECT_TRUE(LoadOpticalTable(material, material.name.View()));
  EXPECT_EQ(material.name, folder.Path("Co"));
}

TEST(FindOpticalTable, ComparesNameAndKindExactly) {
  CArray<COpticalTable> materials;
  EXPECT_EQ(FindOpticalTable("Fe", materials, 0), -1);
  for (const char* name : {"fe", "Fe", "Fe", "", "Fe2"}) {
    COpticalTable material;
    material.name = name;
    material.kind = materials.size == 1 ? TableKind::kElement : TableKind::kLayer;
    materials.Append(material);
  }
  EXPECT_EQ(FindOpticalTable("Fe", materials, TableKind::kLayer), 2);
  EXPECT_EQ(FindOpticalTable("Fe", materials, TableKind::kElement), 1);
  EXPECT_EQ(FindOpticalTable("Fe2", materials, TableKind::kElement), -1);
  EXPECT_EQ(FindOpticalTable("FE", materials, TableKind::kLayer), -1);
  EXPECT_EQ(FindOpticalTable("", materials, TableKind::kLayer), -1);
}

TEST(LoadOpticalTables, LayersThatShareAStemShareOneMaterial) {
  const ScratchFolder folder;
  folder.Write("Co.db", "700 1e-3 2e-4\n");
  CState state = LayersNamed({folder.Path("Co"), folder.Path("Co")});
  EXPECT_TRUE(LoadOpticalTables(state));
  EXPECT_EQ(state.opticaltables.size, 1);
  folder.Write("Co.db", "500 1 2\n");
  EXPECT_TRUE(LoadOpticalTables(state));  // found in the list: not read again
  ASSERT_EQ(state.opticaltables.size, 1);
  EXPECT_EQ(state.opticaltables[0].db.rows[0].energy, 700);
}

TEST(LoadOpticalTables, GoesOnBehindAMissingTable) {
  const ScratchFolder folder;
  folder.Write("Co.db", "700 1e-3 2e-4\n");
  CState state = LayersNamed({folder.Path("gone"), folder.Path("Co"), folder.Path("gone")});
  EXPECT_FALSE(LoadOpticalTables(state));
  ASSERT_EQ(state.opticaltables.size, 1);
  EXPECT_EQ(state.opticaltables[0].name, folder.Path("Co"));
}

TEST(LoadOpticalTables, EmptyStemFails) {
  CState state = LayersNamed({""});
  EXPECT_FALSE(LoadOpticalTables(state));
  EXPECT_TRUE(state.opticaltables.IsEmpty());
}

TEST(LoadOpticalTables, StackWithoutLayersSucceeds) {
  CState state = LayersNamed({});
  EXPECT_TRUE(LoadOpticalTables(state));
}

TEST(LoadOpticalTables, ElementsAreLoadedByTheirOwnKind) {
  const ScratchFolder folder;
  folder.Write("Fe.ff", "700 25 2\n");
  folder.Write("Fe.db", "700 1e-3 2e-4\n");
  CState state = LayersNamed({folder.Path("Fe")});
  ASSERT_TRUE(LoadOpticalTables(state));
  state.mode = Mode::kElement;
  CElementLayer element;
  element.element.Set(folder.Path("Fe"));
  state.elementlayers.Append(element);
  EXPECT_TRUE(LoadOpticalTables(state));
  ASSERT_EQ(state.opticaltables.size, 2);
  EXPECT_EQ(state.opticaltables[1].kind, TableKind::kElement);
  element.element.Set(folder.Path("Ni"));
  state.elementlayers.Append(element);
  EXPECT_FALSE(LoadOpticalTables(state));
}

TEST(LoadOpticalTables, OtherModesLoadNothingAndSucceed) {
  CState state = LayersNamed({"no/such/stem"});
  for (std::int32_t mode : {2, -1}) {
    state.mode = mode;
    EXPECT_TRUE(LoadOpticalTables(state));
    EXPECT_TRUE(state.opticaltables.IsEmpty());
  }
}

TEST(CheckMagnetoOpticalTables, LooksAtTheMagneticTablesAlone) {
  CArray<COpticalTable> materials;
  EXPECT_TRUE(CheckMagnetoOpticalTables(materials));
  materials.Append(COpticalTable());
  materials[0].m.Append({700, {}});
  EXPECT_TRUE(CheckMagnetoOpticalTables(materials));
  materials.Append(COpticalTable());
  materials[1].e.Append({700, {}});
  EXPECT_FALSE(CheckMagnetoOpticalTables(materials));
}

TEST(InterpolateOpticalConstants, FillsTheTensorFromTheTensorTableOnly) {
  const ScratchFolder folder;
  folder.Write("Co.db", "700 1 2\n800 3 6\n");
  folder.Write("Co.m", "700 10 20\n800 30 60\n");
  COpticalTable material;
  ASSERT_TRUE(LoadOpticalTable(material, folder.Path("Co")));
  CLayer layer;
  layer.magnetic = 5;
  layer.epsilon[15] = layer.epsilon[3] = 9;
  InterpolateOpticalConstants(material, 750, layer);
  EXPECT_EQ(layer.layer_delta, 2);
  EXPECT_EQ(layer.layer_beta, 4);
  EXPECT_EQ(layer.layer_ddelta, 20);
  EXPECT_EQ(layer.layer_dbeta, 40);
  EXPECT_EQ(layer.magnetic, 0);
  for (const auto& element : layer.epsilon) EXPECT_EQ(element, 0.0);

  folder.Write("Co.e", "700 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18\n");
  folder.Write("Co.m", "");
  ASSERT_TRUE(LoadOpticalTable(material, folder.Path("Co")));
  InterpolateOpticalConstants(material, 750, layer);
  EXPECT_EQ(layer.magnetic, 1);
  EXPECT_EQ(layer.layer_ddelta, 0);
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      const double real = 2 * (3 * row + column) + 1;
      EXPECT_EQ(layer.Epsilon(row, column), std::complex<double>(real, real + 1));
    }
  }
  EXPECT_EQ(layer.epsilon[3], 0.0);  // the fourth row and column stay empty
  EXPECT_EQ(layer.epsilon[15], 0.0);
}

TEST(GetOpticalEnergyRange, IsTheIntersectionOfTheTables) {
  const ScratchFolder folder;
  folder.Write("a.db", "700 1 2\n800 1 2\n");
  folder.Write("b.db", "750 1 2\n900 1 2\n");
  folder.Write("b.m", "760 1 2\n770 1 2\n");
  CState state = LayersNamed({folder.Path("a"), folder.Path("b")});
  EXPECT_EQ(GetOpticalEnergyRange(state).lo, -1e100);  // nothing is loaded yet
  EXPECT_EQ(GetOpticalEnergyRange(state).hi, 1e100);
  ASSERT_TRUE(LoadOpticalTables(state));
  state.layers.Append(CLayer());  // "vacuum" has no table and is ignored
  EXPECT_EQ(GetOpticalEnergyRange(state).lo, 750);
  EXPECT_EQ(GetOpticalEnergyRange(state).hi, 800);
  state.magnetizationmode = MagnetizationMode::kLayers;
  EXPECT_EQ(GetOpticalEnergyRange(state).lo, 760);
  EXPECT_EQ(GetOpticalEnergyRange(state).hi, 770);
}

}  // namespace
}  // namespace tolvik
