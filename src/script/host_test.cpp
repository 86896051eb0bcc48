// SPDX-License-Identifier: GPL-2.0-or-later
#include "script/host.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <lua.hpp>

namespace tolvik {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// A stack of five layers with a script.
CState MakeState(std::initializer_list<const char*> lines) {
  CState state;
  while (state.layers.size < 5) state.layers.Append(CLayer());
  state.lambda = 2;
  state.resolution = 0.25;
  state.engscanqz = 0.5;
  for (const char* line : lines) state.scriptlines.Append(line);
  return state;
}

// A host as a caller makes it.
class Host {
 public:
  explicit Host(CState& state) {
    record.state = &state;
    record.L = luaL_newstate();
    result = InitScriptHost(record, &debugwindow, &chart);
  }
  ~Host() { lua_close(record.L); }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  CScriptPointer record;
  std::int32_t result;
  int debugwindow = 0, chart = 0;
};

std::int32_t RunOnce(CState& state) {
  Host host(state);
  RunScript(host.record);
  return host.result;
}

TEST(InitScriptHost, EmptyScriptDefinesAnEmptyStart) {
  CState state = MakeState({});
  Host host(state);
  EXPECT_EQ(host.result, kScriptReady);
  lua_getglobal(host.record.L, "Start");
  EXPECT_TRUE(lua_isfunction(host.record.L, -1));
}

TEST(InitScriptHost, LeavesItsPointersForTheObjects) {
  CState state = MakeState({});
  Host host(state);
  CState* found = nullptr;
  void* chart = nullptr;
  void* debugwindow = nullptr;
  GetScriptPointers(host.record.L, found, chart, debugwindow);
  EXPECT_EQ(found, &state);
  EXPECT_EQ(chart, &host.chart);
  EXPECT_EQ(debugwindow, &host.debugwindow);
  lua_getglobal(host.record.L, "CScriptPointer");
  EXPECT_EQ(lua_touserdata(host.record.L, -1), &host.record);
}

TEST(InitScriptHost, DisabledScriptTouchesNothing) {
  CState state = MakeState({"thickness[0] = 1"});
  state.disablescript = 1;
  CScriptPointer host;
  host.state = &state;  // no Lua at all
  EXPECT_EQ(InitScriptHost(host, nullptr, nullptr), kScriptReady);
  RunScript(host);
  EXPECT_EQ(state.layers[0].layer_d, 0);
}

TEST(InitScriptHost, OpensTheStandardLibraries) {
  CState state =
      MakeState({"thickness[0] = math.floor(string.len('abcd') + table.getn({1}) + 0.5)",
                 "thickness[1] = type(io) == 'table' and type(os) == 'table' and 1 or 0",
                 "thickness[2] = type(debug) == 'table' and type(require) == 'function' and 1 or 0",
                 "thickness[3] = type(coroutine) == 'table' and 1 or 0"});
  EXPECT_EQ(RunOnce(state), kScriptReady);
  EXPECT_EQ(state.layers[0].layer_d, 5);
  for (int i : {1, 2, 3}) EXPECT_EQ(state.layers[i].layer_d, 1) << i;
}

TEST(InitScriptHost, SyntaxErrorFailsAndLeavesTheState) {
  CState state = MakeState({"thickness[0] = 7", "thickness[1] = = 2"});
  EXPECT_EQ(RunOnce(state), kScriptFailed);
  EXPECT_EQ(state.layers[0].layer_d, 0);
  EXPECT_EQ(state.lambda, 2);
}

TEST(InitScriptHost, TextBehindAnEarlyEndRunsWhileLoading) {
  CState state = MakeState({"thickness[0] = thickness[0] + 1 end thickness[1] = thickness[1] + 1 do"});
  Host host(state);
  EXPECT_EQ(host.result, kScriptReady);
  EXPECT_EQ(state.layers[0].layer_d, 0);
  EXPECT_EQ(state.layers[1].layer_d, 1);
  RunScript(host.record);
  RunScript(host.record);
  EXPECT_EQ(state.layers[0].layer_d, 2);
  EXPECT_EQ(state.layers[1].layer_d, 1);
}

TEST(InitScriptHost, StartRunsEvenWhenTheTextBehindItFailed) {
  CState state = MakeState({"thickness[0] = 3 end error('stop') do"});
  EXPECT_EQ(RunOnce(state), kScriptFailed);
  EXPECT_EQ(state.layers[0].layer_d, 3);
}

TEST(InitScriptHost, SelectsTheDefaultScriptOnDemand) {
  CState state = MakeState({"thickness[0] = 1"});
  state.defaultscriptlines.Append("thickness[0] = 2");
  CScriptPointer host;
  host.state = &state;
  host.L = luaL_newstate();
  host.scriptselect = 0;
  EXPECT_EQ(InitScriptHost(host, nullptr, nullptr), kScriptReady);
  RunScript(host);
  lua_close(host.L);
  EXPECT_EQ(state.layers[0].layer_d, 2);
}

TEST(InitScriptHost, FunctionsOfTheFrontEndDoNothing) {
  CState state =
      MakeState({"local n = select('#', print('x', nil, {})) + select('#', write(1)) + select('#', "
                 "CalculateReflectivity())",
                 "n = n + select('#', CalculateDicReflectivity(2)) + select('#', CalculateEnergyscan())",
                 "n = n + select('#', ShowMatrixEigenvalues()) + select('#', ShowEScanEigenvalues())",
                 "thickness[0] = 10 + n", "thickness[1] = 20 + GetError()"});
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(RunOnce(state), kScriptReady);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(state.layers[0].layer_d, 10);
  EXPECT_EQ(state.layers[1].layer_d, 20);
}

TEST(InitScriptHost, EveryArrayHasItsNameAndBound) {
  // name, field and bound for a state whose lists all differ in length
  CState state = MakeState(
      {"thickness[0] = 0", "local names = {'delta', 'beta', 'sigma', 'thickness', 'deltam', 'betam',",
       "'exx_r', 'exy_r', 'exz_r', 'eyx_r', 'eyy_r', 'eyz_r', 'ezx_r', 'ezy_r', 'ezz_r',",
       "'exx_i', 'exy_i', 'exz_i', 'eyx_i', 'eyy_i', 'eyz_i', 'ezx_i', 'ezy_i', 'ezz_i'}",
       "for i, n in ipairs(names) do assert(array.size(_G[n]) == 4) end",
       "names = {'solution_qz', 'solution_R', 'solution_Rp', 'solution_Rm', 'solution_energy'}",
       "for i, n in ipairs(names) do assert(array.size(_G[n]) == -1) end",
       "names = {'gauss_delta', 'gauss_beta', 'gauss_variance', 'gauss_z'}",
       "for i, n in ipairs(names) do assert(array.size(_G[n]) == 2) end",
       "assert(array.size(par) == 1 and array.size(f1) == 0 and array.size(f2) == 0)", "thickness[0] = 1"});
  for (int i = 0; i < 3; ++i) state.gaussfunctions.Append(CGaussFunction());
  state.scriptparameters.Assign(2, 0.0);
  state.elementlayers.Append(CElementLayer());
  state.elementlayers[0].element = "Fe";
  EXPECT_EQ(RunOnce(state), kScriptReady);
  EXPECT_EQ(state.layers[0].layer_d, 1);
}

TEST(InitScriptHost, ElementNameThatIsNoLuaNameFailsThePrelude) {
  for (const char* name : {"2Fe", "Fe-57", "", "end", "Fe Co", "data/Fe"}) {
    CState state = MakeState({"thickness[0] = 1"});
    state.elementlayers.Append(CElementLayer());
    state.elementlayers[0].element = name;
    EXPECT_EQ(RunOnce(state), kScriptFailed) << name;
    EXPECT_EQ(state.layers[0].layer_d, 0) << name;
  }
}

TEST(RunScript, ExchangesTheFourNumbers) {
  CState state = MakeState({"assert(energy == 6199.163 and epsilon == 5e-05 and resolution == 0.25)",
                            "assert(energyscan_qz == 0.5)", "energy = 700", "epsilon = 1e-7",
                            "resolution = resolution / 2", "energyscan_qz = 0.75"});
  EXPECT_EQ(RunOnce(state), kScriptReady);
  EXPECT_EQ(state.lambda, 12398.326 / 700);
  EXPECT_EQ(state.epsilon, 1e-7);
  EXPECT_EQ(state.resolution, 0.125);
  EXPECT_EQ(state.engscanqz, 0.75);
}

TEST(RunScript, GlobalsThatAreNoNumbersReadAsZero) {
  for (const char* line : {"energy = 'x'", "energy = nil", "energy = {}", "energy = true", "energy = 0"}) {
    CState state = MakeState({line});
    EXPECT_EQ(RunOnce(state), kScriptReady);
    EXPECT_EQ(state.lambda, kInf) << line;
  }
  CState state = MakeState({"energy = '700'; resolution = nil"});
  RunOnce(state);
  EXPECT_EQ(state.lambda, 12398.326 / 700);  // the text of a number is a number to Lua
  EXPECT_EQ(state.resolution, 0);
}

TEST(RunScript, ErrorKeepsWhatWasDoneButNotTheNumbers) {
  CState state = MakeState({"energy = 700", "thickness[2] = 9", "x = nil + 1", "thickness[3] = 9"});
  EXPECT_EQ(RunOnce(state), kScriptReady);
  EXPECT_EQ(state.layers[2].layer_d, 9);
  EXPECT_EQ(state.layers[3].layer_d, 0);
  EXPECT_EQ(state.lambda, 2);
}

TEST(RunScript, GlobalsSurviveFromOneCallToTheNext) {
  CState state = MakeState({"n = (n or 0) + 1", "thickness[0] = n"});
  Host host(state);
  for (int i = 0; i < 3; ++i) RunScript(host.record);
  EXPECT_EQ(state.layers[0].layer_d, 3);
  EXPECT_EQ(lua_gettop(host.record.L), 0);
  RunOnce(state);
  EXPECT_EQ(state.layers[0].layer_d, 1);
}

}  // namespace
}  // namespace tolvik
