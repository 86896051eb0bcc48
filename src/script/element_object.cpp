// SPDX-License-Identifier: GPL-2.0-or-later
#include "script/element_object.h"

#include <atomic>
#include <lua.hpp>

namespace tolvik {
namespace {

constexpr char kElementType[] = "ElementObject";

struct ElementObject {
  std::int32_t index;
};

// The value that get and set share, for the whole program; scripts of several threads may use it.
std::atomic<double> shared_value = 3.14;

CScriptPointer& Host(lua_State* L) {
  return *static_cast<CScriptPointer*>(lua_touserdata(L, lua_upvalueindex(1)));
}

// Truncates to an index; -1, which no record has, for numbers that do not fit.
std::int32_t ToIndex(double number) {
  return number > -1.0 && number < 2147483647.0 ? static_cast<std::int32_t>(number) : -1;
}

CElementLayer& CheckElement(lua_State* L) {
  auto* object = static_cast<ElementObject*>(luaL_checkudata(L, 1, kElementType));
  luaL_argcheck(L, object != nullptr && lua_objlen(L, 1) == sizeof(ElementObject), 1, "`element' expected");
  CArray<CElementLayer>& elements = Host(L).state->elementlayers;
  luaL_argcheck(L, object->index >= 0 && object->index < elements.size, 1, "index out of range");
  return elements[object->index];
}

CElementSlice& CheckSlice(lua_State* L) {
  CElementLayer& element = CheckElement(L);
  const std::int32_t index = ToIndex(luaL_checknumber(L, 2));
  luaL_argcheck(L, index >= 0 && index < element.slices.size, 2, "index out of range");
  return element.slices[index];
}

template <double CElementLayer::*field>
int GetFactor(lua_State* L) {
  lua_pushnumber(L, CheckElement(L).*field);
  return 1;
}

template <double CElementLayer::*field>
int SetFactor(lua_State* L) {
  const double value = luaL_checknumber(L, 2);
  CheckElement(L).*field = value;
  return 0;
}

template <double CElementSlice::*field>
int GetSliceValue(lua_State* L) {
  lua_pushnumber(L, CheckSlice(L).*field);
  return 1;
}

template <double CElementSlice::*field>
int SetSliceValue(lua_State* L) {
  const double value = luaL_checknumber(L, 3);
  CheckSlice(L).*field = value;
  return 0;
}

int NewElement(lua_State* L) {
  PushElement(L, ToIndex(luaL_checknumber(L, 1)));
  return 1;
}

int GetShared(lua_State* L) {
  lua_pushnumber(L, shared_value.load(std::memory_order_relaxed));
  return 1;
}

int SetShared(lua_State* L) {
  shared_value.store(luaL_checknumber(L, 3), std::memory_order_relaxed);
  return 0;
}

constexpr luaL_Reg kFunctions[] = {
    {"new", NewElement},
    {"getf1", GetFactor<&CElementLayer::el_f1>},
    {"getf2", GetFactor<&CElementLayer::el_f2>},
    {"setf1", SetFactor<&CElementLayer::el_f1>},
    {"setf2", SetFactor<&CElementLayer::el_f2>},
    {"getsigma", GetSliceValue<&CElementSlice::el_sigma>},
    {"setsigma", SetSliceValue<&CElementSlice::el_sigma>},
    {"getthickness", GetSliceValue<&CElementSlice::el_d>},
    {"setthickness", SetSliceValue<&CElementSlice::el_d>},
    {"get", GetShared},
    {"set", SetShared},
};

}  // namespace

void PushElement(lua_State* L, std::int32_t index) {
  auto* object = static_cast<ElementObject*>(lua_newuserdata(L, sizeof(ElementObject)));
  object->index = index;
  luaL_getmetatable(L, kElementType);
  lua_setmetatable(L, -2);
}

void RegisterElementType(lua_State* L, CScriptPointer& host) {
  luaL_newmetatable(L, kElementType);
  lua_pushvalue(L, -1);
  lua_setfield(L, -2, "__index");
  for (const luaL_Reg& function : kFunctions) {
    lua_pushlightuserdata(L, &host);
    lua_pushcclosure(L, function.func, 1);
    lua_setfield(L, -2, function.name);
  }
  lua_setfield(L, LUA_GLOBALSINDEX, "element");
}

}  // namespace tolvik
