// SPDX-License-Identifier: GPL-2.0-or-later
// A session starts from a saved image of Lua, or needs no Lua at all; here it is compared with the plain
// host.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <lua.hpp>
#include <string>
#include <thread>
#include <vector>

#include "script/host.h"
#include "script/image.h"
#include "script/prelude.h"
#include "support/scratch.h"

namespace tolvik {
namespace {

CState MakeState(const std::vector<std::string>& lines, const std::vector<std::string>& elements = {}) {
  CState state;
  while (state.layers.size < 4) state.layers.Append(CLayer());
  state.lambda = 1.5406;
  state.resolution = 0.125;
  state.scriptparameters.Append(5);
  for (const std::string& line : lines) state.scriptlines.Append(std::string_view(line));
  for (const std::string& name : elements) {
    CElementLayer element;
    element.element.Set(name);
    element.el_f1 = 7;
    state.elementlayers.Append(element);
  }
  return state;
}

void RunPlainHost(CState& state) {
  CScriptPointer host;
  host.state = &state;
  host.L = luaL_newstate();
  InitScriptHost(host, nullptr, nullptr);
  RunScript(host);
  RunScript(host);
  lua_close(host.L);
}

void RunSession(CState& state) {
  ScriptSession session(state);
  session.Run();
  session.Run();
}

// All numbers that a script can reach, by their bits.
std::vector<std::uint64_t> Numbers(const CState& state) {
  std::vector<double> all{state.lambda, state.epsilon, state.resolution, state.engscanqz};
  for (const CLayer& layer : state.layers) {
    all.insert(all.end(), {layer.layer_d, layer.layer_delta, layer.layer_sigma, double(layer.magnetic)});
  }
  for (const CElementLayer& element : state.elementlayers) all.push_back(element.el_f1);
  for (double parameter : state.scriptparameters) all.push_back(parameter);
  std::vector<std::uint64_t> bits(all.size());
  std::memcpy(bits.data(), all.data(), all.size() * sizeof(double));
  return bits;
}

void ExpectSameAsPlain(const CState& state, const std::string& what) {
  CState plain = state;
  CState session = state;
  RunPlainHost(plain);
  RunSession(session);
  EXPECT_EQ(Numbers(session), Numbers(plain)) << what;
}

TEST(ScriptSession, EqualsThePlainHost) {
  const std::vector<std::string> scripts = {
      "",
      "   \t",
      "-- thickness[0] = 1",
      "  --[ thickness[0] = 1",
      "--[[ thickness[0] = 1 ]] thickness[1] = 2",
      "--[==[ x",
      "thickness[0] = par[0] * 2",
      "thickness[1] = thickness[1] + 1",
      "n = (n or 0) + 1 thickness[0] = n",
      "energy = 700",
      "energy = 'x'",
      "energy = energy * 1.0000001; epsilon = 1e-9; resolution = resolution / 3; energyscan_qz = 3",
      "x = exx_r[2]",
      "thickness[0] = 4 error('stop')",
      "thickness[0] = = 4",
      "thickness[0] = 1 end thickness[1] = thickness[1] + 1 do",
      "thickness[0] = 1 end error('x') do",
      "end x = = 1",
      "delta = nil thickness[0] = delta[0]",
      "print('x') thickness[0] = GetError() + 3",
      "thickness[0] = array.size(gauss_z)",
      "thickness[0] = array.size(delta) thickness[4] = 1",
      "setmetatable(_G, {__newindex = function() error('no') end}) x = 1",
      "for i = 1, 20000 do local s = 'garbage ' .. i end thickness[0] = 1",
      "t = {} for i = 1, 40000 do t[i] = {i} end thickness[0] = #t",
      "s = string.rep('x', 1000000) thickness[0] = #s",
      "thickness[0] = select('#', unpack({}, 1, 100))",
      "function f(n) return n == 0 and 0 or 1 + f(n - 1) end thickness[0] = f(5000)",
      "function f(n) return 1 + f(n + 1) end thickness[0] = f(1)",
      "local c = coroutine.wrap(function() coroutine.yield(3) end) thickness[0] = c()",
      "coroutine.yield(1) thickness[0] = 1",
      "ok, why = pcall(function() return delta[9] end) thickness[0] = #why",
      "thickness[0] = math.huge thickness[1] = 0/0",
      "Start = nil",
      "getmetatable('').__call = function() return 1 end x = = 1",
      "io = nil os = nil string = nil",
      "par[0] = par[0] + 0.5 par[1] = 3",
      "thickness[0] = type(_G) == 'table' and 1 or 2",
      "setfenv(0, {thickness = thickness, Start = function() thickness[3] = 8 end}) thickness[2] = 1",
      "thickness[0] = Fe and Fe:getf1() or -1",
  };
  for (const std::string& script : scripts) {
    ExpectSameAsPlain(MakeState({script}), script);
    ExpectSameAsPlain(MakeState({"", script, "  -- end"}), script);
    ExpectSameAsPlain(MakeState({script}, {"Fe", "Co"}), script);
  }
}

TEST(ScriptSession, ElementNamesActAsTheirText) {
  const std::vector<std::vector<std::string>> names = {{"Fe"},
                                                       {"Fe", "Fe"},
                                                       {"delta"},
                                                       {"thickness"},
                                                       {"array"},
                                                       {"element"},
                                                       {"element", "Fe"},
                                                       {"x = 1; y"},
                                                       {"end"},
                                                       {""},
                                                       {"Fe.x"},
                                                       {"2"},
                                                       {"print"},
                                                       {"Start"},
                                                       {"energy"},
                                                       {"_G"},
                                                       {"CScriptPointer"},
                                                       {"math"},
                                                       {"Fe\n=1;z"},
                                                       {"a, Fe"},
                                                       {"--", "Fe"},
                                                       {"local x"},
                                                       {"Fe", "Fe.x"},
                                                       {"array.new"},
                                                       {"f() end function g() x"},
                                                       {"\xc3\xa5"},
                                                       {"nil"},
                                                       {"error('x') Fe"},
                                                       {"Fe "},
                                                       {" Fe"}};
  const std::vector<std::string> scripts = {"", "thickness[0] = 3", "thickness[0] = Fe:getf1()",
                                            "thickness[1] = array.size(thickness)", "f1[0] = f1[0] + 1"};
  for (const auto& list : names) {
    for (const std::string& script : scripts) {
      ExpectSameAsPlain(MakeState({script}, list), list[0] + " / " + script);
    }
  }
}

TEST(ScriptSession, RoundTripOfTheWavelengthWithoutLua) {
  for (double lambda : {1.5406, 0.0, -0.0, 1e-310, 1e308, 1e-308, std::numeric_limits<double>::infinity(),
                        -std::numeric_limits<double>::infinity(), 3.1, -15.9}) {
    CState state = MakeState({});
    state.lambda = lambda;
    ExpectSameAsPlain(state, std::to_string(lambda));
    RunSession(state);
  }
  CState state = MakeState({});
  state.lambda = std::numeric_limits<double>::quiet_NaN();
  RunSession(state);
  EXPECT_TRUE(std::isnan(state.lambda));
  // For some wavelengths the two roundings change the value.
  int changed = 0;
  for (int i = 1; i < 1000; ++i) {
    state.lambda = 0.1 * i;
    ScriptSession(state).Run();
    changed += state.lambda != 0.1 * i;
  }
  EXPECT_GT(changed, 0);
}

TEST(ScriptSession, DisabledScriptDoesNotTouchTheWavelength) {
  for (int i = 1; i < 1000; ++i) {
    CState state = MakeState({"thickness[0] = 1"});
    state.disablescript = 2;
    state.lambda = 0.1 * i;
    RunSession(state);
    EXPECT_EQ(state.lambda, 0.1 * i);
    EXPECT_EQ(state.layers[0].layer_d, 0);
  }
}

TEST(ScriptSession, NothingLastsFromOneSessionToTheNext) {
  CState first = MakeState({"secret = 1 string.rep = nil array.get = nil delta = nil print = secret"});
  RunSession(first);
  CState second = MakeState(
      {"thickness[0] = (secret == nil and string.rep and array.get and delta and print) and 1 or 2"});
  RunSession(second);
  EXPECT_EQ(second.layers[0].layer_d, 1);
}

TEST(ScriptSession, BoundsFollowTheState) {
  for (int layers : {2, 9, 3}) {
    CState state = MakeState({"thickness[0] = array.size(sigma)"});
    state.layers.Clear();
    while (state.layers.size < layers) state.layers.Append(CLayer());
    ScriptSession(state).Run();
    EXPECT_EQ(state.layers[0].layer_d, layers - 1);
  }
}

TEST(ScriptSession, SessionsMayOverlap) {
  CState a = MakeState({"thickness[0] = thickness[0] + 1"});
  CState b = MakeState({"thickness[1] = thickness[1] + 2"});
  {
    ScriptSession first(a);
    ScriptSession second(b);
    for (int i = 0; i < 3; ++i) {
      first.Run();
      second.Run();
    }
  }
  EXPECT_EQ(a.layers[0].layer_d, 3);
  EXPECT_EQ(b.layers[1].layer_d, 6);
}

TEST(ScriptSession, ThreadsHaveHostsOfTheirOwn) {
  std::vector<CState> states(4, MakeState({"for i = 1, 50 do thickness[0] = thickness[0] + 1 end"}));
  std::vector<std::thread> threads;
  for (CState& state : states) {
    threads.emplace_back([&state] {
      for (int i = 0; i < 50; ++i) ScriptSession(state).Run();
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const CState& state : states) EXPECT_EQ(state.layers[0].layer_d, 2500);
}

TEST(ScriptSession, ClosesTheFilesOfAScript) {
  const testing::ScratchFolder folder;
  CState state = MakeState({"f = io.open('" + folder.Path("out") + "', 'w') f:write('a line')"});
  ScriptSession(state).Run();
  EXPECT_EQ(folder.Read("out"), "a line");
}

TEST(ScriptSession, RunsTheFinalizersOfAScript) {
  for (const char* line :
       {"p = newproxy(true) getmetatable(p).__gc = function() thickness[2] = 7 end",
        "p = newproxy(true) debug.getmetatable(p)['__' .. 'gc'] = function() thickness[2] = 7 end",
        "loadstring('p = newp' .. 'roxy(true) getmeta' .. 'table(p).__gc = function() "
        "thickness[2] = 7 end')()"}) {
    CState state = MakeState({line});
    ScriptSession(state).Run();
    EXPECT_EQ(state.layers[2].layer_d, 7) << line;
  }
  CState state = MakeState({"Fe.__index['__' .. 'gc'] = function() thickness[2] = 7 end"}, {"Fe"});
  ScriptSession(state).Run();
  EXPECT_EQ(state.layers[2].layer_d, 7);
}

TEST(ScriptImage, WantOfMemoryIsAnErrorOfLua) {
  for (std::size_t limit : {0, 100, 5000, 20000, 30000, 60000, 200000, 2000000}) {
    ScriptImage image;
    image.SetMemoryLimit(limit);
    CState state =
        MakeState({"thickness[0] = 1", "t = {} for i = 1, 1e7 do t[i] = 'x' .. i end", "thickness[0] = 2"});
    image.Begin(state);
    image.Run();
    image.Run();
    image.End();
    EXPECT_EQ(state.layers[0].layer_d, limit < 60000 ? 0 : 1) << limit;
    EXPECT_EQ(state.lambda, 1.5406);
    image.SetMemoryLimit(std::size_t{1} << 30);  // and the next session works as a new one
    CState next = MakeState({"thickness[0] = 3"});
    image.Begin(next);
    image.Run();
    EXPECT_EQ(next.layers[0].layer_d, 3);
  }
}

TEST(Prelude, TellsPlainNamesFromOthers) {
  for (const char* name : {"Fe", "_x", "a1", "delta", "print"}) {
    EXPECT_TRUE(IsPreludePlain(MakeState({}, {name}))) << name;
  }
  for (const char* name : {"", "1a", "a.b", "end", "a b", "x=1;y", "array", "element", "\xc3\xa5", "a\n"}) {
    EXPECT_FALSE(IsPreludePlain(MakeState({}, {"Fe", name}))) << name;
  }
}

TEST(Prelude, SkipsOnlyLinesThatDoNothing) {
  for (const char* line : {"", " \t\r", "-- x", "  --", "--x]]", "-- x\r"}) {
    EXPECT_TRUE(AreLinesEmpty(MakeState({"", line}).scriptlines)) << line;
  }
  for (const char* line : {"x", "--[[ x ]]", "--[=[", "- -", ";", "-- a\rx = 1", "-- a\nx = 1", "end"}) {
    EXPECT_FALSE(AreLinesEmpty(MakeState({"", line}).scriptlines)) << line;
  }
}

}  // namespace
}  // namespace tolvik
