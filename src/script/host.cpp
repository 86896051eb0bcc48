// SPDX-License-Identifier: GPL-2.0-or-later
// Lua is a C library that leaves a function by longjmp on errors: the functions that it calls have no object
// with a destructor and throw nothing, and every call of Lua that may fail runs inside lua_cpcall or
// lua_pcall.
#include "script/host.h"

#include <cstring>
#include <lua.hpp>

#include "optics/energy.h"
#include "script/array_object.h"
#include "script/element_object.h"
#include "script/host_parts.h"
#include "script/prelude.h"

namespace tolvik {
namespace {

constexpr char kStateKey[] = "state", kChartKey[] = "chart", kDebugWindowKey[] = "debugwindow";

int DoNothing(lua_State*) {
  return 0;
}

int GetError(lua_State* L) {
  lua_pushnumber(L, 0);
  return 1;
}

constexpr luaL_Reg kFunctions[] = {
    {"print", DoNothing},
    {"write", DoNothing},
    {"CalculateReflectivity", DoNothing},
    {"CalculateDicReflectivity", DoNothing},
    {"CalculateEnergyscan", DoNothing},
    {"ShowMatrixEigenvalues", DoNothing},
    {"ShowEScanEigenvalues", DoNothing},
    {"GetError", GetError},
};

void SetPointer(lua_State* L, int table, const char* key, void* pointer) {
  lua_pushlightuserdata(L, pointer);
  lua_setfield(L, table, key);
}

void* GetPointer(lua_State* L, const char* key) {
  lua_getfield(L, LUA_REGISTRYINDEX, key);
  void* pointer = lua_touserdata(L, -1);
  lua_pop(L, 1);
  return pointer;
}

struct SetUpCall {
  CScriptPointer* host;
  void* debugwindow;
  void* chart;
};

int SetUpProtected(lua_State* L) {
  const auto* call = static_cast<SetUpCall*>(lua_touserdata(L, 1));
  SetUpHost(L, *call->host, call->debugwindow, call->chart);
  return 0;
}

// The numbers that a script uses as globals, and their members of the state.
struct GlobalNumbers {
  double energy, epsilon, resolution, energyscan_qz;
};

void SetNumber(lua_State* L, const char* name, double value) {
  lua_pushnumber(L, value);
  lua_setfield(L, LUA_GLOBALSINDEX, name);
}

double GetNumber(lua_State* L, const char* name) {
  lua_getfield(L, LUA_GLOBALSINDEX, name);
  const double value = lua_tonumber(L, -1);  // 0 for a value of another type
  lua_pop(L, 1);
  return value;
}

struct RunCall {
  GlobalNumbers numbers;
  ScriptOutcome* outcome;
  bool succeeded;
};

// The message on top of the stack. Nothing here allocates.
void NoteError(lua_State* L, std::int32_t code, ScriptOutcome* outcome) {
  if (outcome == nullptr) return;
  outcome->code = code;
  const char* text = lua_type(L, -1) == LUA_TSTRING ? lua_tostring(L, -1) : "an error that is not a text";
  std::strncpy(outcome->message, text, sizeof(outcome->message) - 1);
}

int RunProtected(lua_State* L) {
  auto* call = static_cast<RunCall*>(lua_touserdata(L, 1));
  GlobalNumbers& numbers = call->numbers;
  SetNumber(L, "energy", numbers.energy);
  SetNumber(L, "epsilon", numbers.epsilon);
  SetNumber(L, "resolution", numbers.resolution);
  SetNumber(L, "energyscan_qz", numbers.energyscan_qz);
  if (!RunText(L, "Start()\n", call->outcome)) return 0;
  numbers = {GetNumber(L, "energy"), GetNumber(L, "epsilon"), GetNumber(L, "resolution"),
             GetNumber(L, "energyscan_qz")};
  call->succeeded = true;
  return 0;
}

// lua_cpcall that drops its error.
bool CallProtected(lua_State* L, lua_CFunction function, void* argument) {
  const int top = lua_gettop(L);
  const bool succeeded = lua_cpcall(L, function, argument) == 0;
  lua_settop(L, top);
  return succeeded;
}

}  // namespace

void PushHostPointers(lua_State* L, CScriptPointer& host) {
  SetPointer(L, LUA_REGISTRYINDEX, kStateKey, host.state);
  SetPointer(L, LUA_GLOBALSINDEX, "CScriptPointer", &host);
}

void SetUpHost(lua_State* L, CScriptPointer& host, void* debugwindow, void* chart) {
  luaL_openlibs(L);
  RegisterArrayType(L, host);
  RegisterElementType(L, host);
  SetPointer(L, LUA_REGISTRYINDEX, kDebugWindowKey, debugwindow);
  SetPointer(L, LUA_REGISTRYINDEX, kChartKey, chart);
  PushHostPointers(L, host);
  for (const luaL_Reg& function : kFunctions) {
    lua_pushcfunction(L, function.func);
    lua_setfield(L, LUA_GLOBALSINDEX, function.name);
  }
}

bool RunText(lua_State* L, std::string_view text, ScriptOutcome* outcome) {
  const bool loaded = luaL_loadbuffer(L, text.data(), text.size(), "line") == 0;
  if (loaded && lua_pcall(L, 0, 0, 0) == 0) return true;
  NoteError(L, loaded ? kScriptStopped : kScriptFailed, outcome);
  lua_pop(L, 1);
  return false;
}

const CArray<CCharArray>& SelectedLines(const CScriptPointer& host) {
  return host.scriptselect == 1 ? host.state->scriptlines : host.state->defaultscriptlines;
}

std::int32_t InitScriptHost(CScriptPointer& host, void* debugwindow, void* chart) {
  if (host.state->disablescript != 0) return kScriptReady;
  SetUpCall call{&host, debugwindow, chart};
  if (!CallProtected(host.L, SetUpProtected, &call)) return kScriptFailed;
  if (!RunText(host.L, PreludeText(*host.state))) return kScriptFailed;
  std::string chunk;
  BuildMainChunk(SelectedLines(host), chunk);
  return RunText(host.L, chunk) ? kScriptReady : kScriptFailed;
}

void RunScript(CScriptPointer& host, ScriptOutcome* outcome) {
  CState& state = *host.state;
  if (state.disablescript != 0) return;
  RunCall call{
      {EnergyFromLambda(state.lambda), state.epsilon, state.resolution, state.engscanqz}, outcome, false};
  if (!CallProtected(host.L, RunProtected, &call) || !call.succeeded) return;
  state.lambda = LambdaFromEnergy(call.numbers.energy);
  state.epsilon = call.numbers.epsilon;
  state.resolution = call.numbers.resolution;
  state.engscanqz = call.numbers.energyscan_qz;
}

void GetScriptPointers(lua_State* L, CState*& state, void*& chart, void*& debugwindow) {
  state = static_cast<CState*>(GetPointer(L, kStateKey));
  chart = GetPointer(L, kChartKey);
  debugwindow = GetPointer(L, kDebugWindowKey);
}

}  // namespace tolvik
