// SPDX-License-Identifier: GPL-2.0-or-later
// How much time does the script add to one curve? One iteration opens a host, runs it once and closes it, as
// a curve does.
#include <benchmark/benchmark.h>

#include <lua.hpp>

#include "script/host.h"

namespace {

using namespace tolvik;

CState MakeState(const char* line) {
  CState state;
  state.layers.Append(CLayer());
  state.lambda = 15.9;
  if (line != nullptr) state.scriptlines.Append(line);
  return state;
}

void EmptyScript(benchmark::State& run) {
  CState state = MakeState(nullptr);
  for (auto _ : run) {
    ScriptSession session(state);
    session.Run();
    benchmark::DoNotOptimize(state.lambda);
  }
}
BENCHMARK(EmptyScript);

void CommentOnly(benchmark::State& run) {
  CState state = MakeState("-- thickness[1] = 20");
  for (auto _ : run) {
    ScriptSession session(state);
    session.Run();
    benchmark::DoNotOptimize(state.lambda);
  }
}
BENCHMARK(CommentOnly);

void OneLineScript(benchmark::State& run) {
  CState state = MakeState("thickness[1] = 2 * thickness[0]");
  for (auto _ : run) {
    ScriptSession session(state);
    session.Run();
    benchmark::DoNotOptimize(state.lambda);
  }
}
BENCHMARK(OneLineScript);

// The Lua state of a script that names a way to files or finalizers is closed in full.
void OneLineScriptClosed(benchmark::State& run) {
  CState state = MakeState("thickness[1] = 2 * thickness[0]; io = nil");
  for (auto _ : run) {
    ScriptSession session(state);
    session.Run();
    benchmark::DoNotOptimize(state.lambda);
  }
}
BENCHMARK(OneLineScriptClosed);

// One more point of an energy scan: the host is open.
void OneLineScriptPoint(benchmark::State& run) {
  CState state = MakeState("thickness[1] = 2 * thickness[0]");
  ScriptSession session(state);
  for (auto _ : run) {
    session.Run();
    benchmark::DoNotOptimize(state.lambda);
  }
}
BENCHMARK(OneLineScriptPoint);

// The plain host: Lua from malloc, the prelude as text.
void OneLineScriptTextbook(benchmark::State& run) {
  CState state = MakeState("thickness[1] = 2 * thickness[0]");
  for (auto _ : run) {
    CScriptPointer host;
    host.state = &state;
    host.L = luaL_newstate();
    InitScriptHost(host, nullptr, nullptr);
    RunScript(host);
    lua_close(host.L);
    benchmark::DoNotOptimize(state.lambda);
  }
}
BENCHMARK(OneLineScriptTextbook);

}  // namespace
