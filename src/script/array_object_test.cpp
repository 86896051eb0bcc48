// SPDX-License-Identifier: GPL-2.0-or-later
#include "script/array_object.h"

#include <gtest/gtest.h>

#include <lua.hpp>
#include <string>

#include "script/host.h"
#include "support/script_host.h"

namespace tolvik {
namespace {

// A host on a stack of five layers; Try runs one statement.
class ArrayType : public testing::ScriptHost {
 protected:
  ArrayType() {
    while (state_.layers.size < 5) state_.layers.Append(CLayer());
    for (std::int32_t i = 0; i < 3; ++i) state_.gaussfunctions.Append(CGaussFunction());
    state_.scriptparameters.Append(11.0);
    state_.scriptparameters.Append(12.0);
    state_.elementlayers.Append(CElementLayer());
    state_.elementlayers[0].element = "Fe";
    Start();
  }
};

TEST_F(ArrayType, LastIndexIsTheNumberOfLayersLessOne) {
  EXPECT_EQ(Try("delta[4] = 0.5"), "");
  EXPECT_EQ(state_.layers[4].layer_delta, 0.5);
  EXPECT_TRUE(IsOutOfRange("delta[5] = 1"));
  EXPECT_TRUE(IsOutOfRange("x = delta[5]"));
  EXPECT_TRUE(IsOutOfRange("x = delta[-1]"));
  EXPECT_TRUE(IsOutOfRange("x = delta[2^31]"));
  EXPECT_TRUE(IsOutOfRange("x = delta[2^32]"));
  EXPECT_TRUE(IsOutOfRange("x = delta[-2^31]"));
  EXPECT_EQ(Try("assert(array.size(delta) == 4)"), "");
}

TEST_F(ArrayType, EachNameReachesItsField) {
  EXPECT_EQ(Try("delta[1] = 1; beta[1] = 2; sigma[1] = 3; thickness[1] = 4; deltam[1] = 5; betam[1] = 6"),
            "");
  const CLayer& layer = state_.layers[1];
  EXPECT_EQ(layer.layer_delta, 1);
  EXPECT_EQ(layer.layer_beta, 2);
  EXPECT_EQ(layer.layer_sigma, 3);
  EXPECT_EQ(layer.layer_d, 4);
  EXPECT_EQ(layer.layer_ddelta, 5);
  EXPECT_EQ(layer.layer_dbeta, 6);
  EXPECT_EQ(Try("gauss_delta[2] = 1; gauss_beta[2] = 2; gauss_variance[2] = 3; gauss_z[2] = 4"), "");
  const CGaussFunction& gauss = state_.gaussfunctions[2];
  EXPECT_EQ(gauss.gauss_delta, 1);
  EXPECT_EQ(gauss.gauss_beta, 2);
  EXPECT_EQ(gauss.gauss_variance, 3);
  EXPECT_EQ(gauss.gauss_z, 4);
  EXPECT_EQ(Try("f1[0] = 7; f2[0] = 8; assert(par[0] == 11); par[1] = 13"), "");
  EXPECT_EQ(state_.elementlayers[0].el_f1, 7);
  EXPECT_EQ(state_.elementlayers[0].el_f2, 8);
  EXPECT_EQ(state_.scriptparameters[1], 13);
}

TEST_F(ArrayType, TensorNamesReachTheirElements) {
  const std::string axes = "xyz";
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      const std::string name = std::string("e") + axes[row] + axes[column];
      const int value = 10 * row + column + 1;
      EXPECT_EQ(Try(name + "_r[2] = " + std::to_string(value)), "");
      EXPECT_EQ(Try(name + "_i[2] = -" + std::to_string(value)), "");
      EXPECT_EQ(state_.layers[2].Epsilon(row, column), std::complex<double>(value, -value)) << name;
    }
  }
}

TEST_F(ArrayType, ALookAtTheTensorMakesTheLayerMagnetic) {
  EXPECT_EQ(Try("x = exx_r[0]"), "");
  EXPECT_EQ(state_.layers[0].magnetic, 1);
  EXPECT_EQ(state_.layers[1].magnetic, 0);
  EXPECT_EQ(Try("x = ezz_i[1]"), "");
  EXPECT_EQ(state_.layers[1].magnetic, 1);
  EXPECT_EQ(Try("x = delta[2]; deltam[2] = 1"), "");
  EXPECT_EQ(state_.layers[2].magnetic, 0);
  EXPECT_TRUE(IsOutOfRange("x = exx_r[5]"));
}

TEST_F(ArrayType, SolutionBoundsAreTakenAtEachAccess) {
  EXPECT_TRUE(IsOutOfRange("x = solution_qz[0]"));
  record_.solution.dataset_qz.Assign(3, 0.25);
  record_.solution.dataset_R0.Assign(3, 0.5);
  record_.solution.dataset_Rp.Assign(1, 0.75);
  EXPECT_EQ(Try("assert(solution_qz[2] == 0.25 and solution_R[2] == 0.5 and solution_Rp[0] == 0.75)"), "");
  EXPECT_TRUE(IsOutOfRange("x = solution_qz[3]"));
  EXPECT_TRUE(IsOutOfRange("x = solution_Rp[1]"));  // shorter than the grid
  EXPECT_TRUE(IsOutOfRange("x = solution_Rm[0]"));
  EXPECT_TRUE(IsOutOfRange("x = solution_energy[0]"));
  EXPECT_EQ(Try("assert(array.size(solution_R) == -1)"), "");
}

TEST_F(ArrayType, EmptyListFallsToTheSolution) {
  EXPECT_EQ(Try("g = array.new(-1, 11)"), "");
  EXPECT_TRUE(IsOutOfRange("x = g[0]"));
  record_.solution.dataset_qz.Assign(5, 0.0);
  EXPECT_EQ(Try("x = g[2]"), "");
  EXPECT_TRUE(IsOutOfRange("x = g[3]"));  // inside the grid, outside the three functions
}

TEST_F(ArrayType, OwnArraysNeverReachOutsideTheRecord) {
  for (int code = -3; code < 60; ++code) {
    const std::string make = "a = array.new(1000000, " + std::to_string(code) + "); ";
    EXPECT_TRUE(IsOutOfRange(make + "x = a[999999]")) << code;
    EXPECT_TRUE(IsOutOfRange(make + "a[5] = 1")) << code;
    EXPECT_TRUE(IsOutOfRange(make + "x = a[-1]")) << code;
  }
  EXPECT_EQ(Try("a = array.new(1, 3); a[1] = 18.25; assert(array.size(a) == 1)"), "");
  EXPECT_EQ(state_.layers[1].layer_d, 18.25);
  EXPECT_TRUE(IsOutOfRange("a[2] = 1"));  // as written by the script, though the stack has five layers
}

TEST_F(ArrayType, CodesWithoutAFieldAreErrors) {
  for (int code : {24, 37, 1000, -1, 2147483647}) {
    EXPECT_TRUE(IsOutOfRange("a = array.new(4, " + std::to_string(code) + "); x = a[0]")) << code;
  }
  EXPECT_EQ(state_.layers[0].magnetic, 0);
}

TEST_F(ArrayType, WrongTypesAreArgumentErrors) {
  EXPECT_NE(Try("x = delta.first"), "");
  EXPECT_NE(Try("x = delta[nil]"), "");
  EXPECT_NE(Try("delta[0] = 'many'"), "");
  EXPECT_NE(Try("delta[0] = nil"), "");
  EXPECT_NE(Try("x = #delta"), "");
  EXPECT_NE(Try("array.new('x', 1)"), "");
  EXPECT_NE(Try("array.new(1)"), "");
  EXPECT_NE(Try("array.get({}, 0)"), "");
  EXPECT_NE(Try("array.get(io.stdout, 0)"), "");
  EXPECT_NE(Try("array.get(Fe, 0)"), "");
  EXPECT_NE(Try("array.size(CScriptPointer)"), "");
  // the value is checked before the index
  EXPECT_EQ(Try("array.set(delta, 99, {})").find("index"), std::string::npos);
  EXPECT_EQ(Try("delta['2'] = '0.5'"), "");  // texts of numbers are numbers to Lua
  EXPECT_EQ(state_.layers[2].layer_delta, 0.5);
}

TEST_F(ArrayType, ForgedPointersLeadNowhere) {
  EXPECT_EQ(Try("CScriptPointer = io.stdout; debug.getregistry().state = io.stdout"), "");
  EXPECT_TRUE(IsOutOfRange("x = solution_qz[0]"));
  EXPECT_EQ(Try("thickness[0] = 4"), "");
  EXPECT_EQ(state_.layers[0].layer_d, 4);
  // a userdata too small for an array, with the metatable of one
  EXPECT_NE(Try("u = newproxy(); debug.setmetatable(u, debug.getmetatable(delta)); x = u[0]"), "");
}

TEST_F(ArrayType, AShrunkenListIsSeenAtOnce) {
  CLayer layer;
  state_.layers.Clear();
  state_.layers.Append(layer);
  EXPECT_TRUE(IsOutOfRange("x = delta[3]"));
  EXPECT_TRUE(IsOutOfRange("x = exx_r[3]"));
  EXPECT_EQ(Try("x = delta[0]"), "");
}

}  // namespace
}  // namespace tolvik
