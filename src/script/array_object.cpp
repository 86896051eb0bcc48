// SPDX-License-Identifier: GPL-2.0-or-later
#include "script/array_object.h"

#include <lua.hpp>

#include "script/fields.h"

namespace tolvik {
namespace {

constexpr char kArrayType[] = "LuaBook.array";

CScriptPointer& Host(lua_State* L) {
  // No script can reach an upvalue of a C function; a global or the registry it can.
  return *static_cast<CScriptPointer*>(lua_touserdata(L, lua_upvalueindex(1)));
}

ArrayObject& CheckArray(lua_State* L) {
  auto* array = static_cast<ArrayObject*>(luaL_checkudata(L, 1, kArrayType));
  // the length too: the debug library can put this metatable on another type
  luaL_argcheck(L, array != nullptr && lua_objlen(L, 1) == sizeof(ArrayObject), 1, "`array' expected");
  return *array;
}

// The number that the arguments array and index of a get or set select.
double& CheckField(lua_State* L) {
  const ArrayObject& array = CheckArray(L);
  const lua_Integer index = luaL_checkinteger(L, 2);
  CScriptPointer& host = Host(L);
  const std::int32_t limit = array.size == -1 ? host.solution.dataset_qz.size - 1 : array.size;
  luaL_argcheck(L, index >= 0 && index <= limit, 2, "index out of range");
  const auto at = static_cast<std::int32_t>(index);
  const ScriptField* field = FindScriptField(array.code);
  double* value = field != nullptr ? field->find(host, at) : nullptr;
  luaL_argcheck(L, value != nullptr, 2, "index out of range");
  // Even reading the tensor turns on the full treatment of the layer; scripts rely on it.
  if (field->of_tensor) host.state->layers[at].magnetic = 1;
  return *value;
}

int NewArray(lua_State* L) {
  const auto size = static_cast<std::int32_t>(luaL_checkinteger(L, 1));
  const auto code = static_cast<std::int32_t>(luaL_checkinteger(L, 2));
  PushArray(L, size, code);
  return 1;
}

int GetValue(lua_State* L) {
  lua_pushnumber(L, CheckField(L));
  return 1;
}

int SetValue(lua_State* L) {
  const double value = luaL_checknumber(L, 3);
  CheckField(L) = value;
  return 0;
}

int GetSize(lua_State* L) {
  lua_pushnumber(L, CheckArray(L).size);
  return 1;
}

}  // namespace

ArrayObject* PushArray(lua_State* L, std::int32_t size, std::int32_t code) {
  auto* array = static_cast<ArrayObject*>(lua_newuserdata(L, sizeof(ArrayObject)));
  *array = {size, code};
  luaL_getmetatable(L, kArrayType);
  lua_setmetatable(L, -2);
  return array;
}

void RegisterArrayType(lua_State* L, CScriptPointer& host) {
  luaL_newmetatable(L, kArrayType);
  const luaL_Reg none[] = {{nullptr, nullptr}};
  luaL_register(L, "array", none);
  const luaL_Reg functions[] = {{"new", NewArray}, {"get", GetValue}, {"set", SetValue}, {"size", GetSize}};
  for (const luaL_Reg& function : functions) {
    lua_pushlightuserdata(L, &host);
    lua_pushcclosure(L, function.func, 1);
    lua_setfield(L, -2, function.name);
  }
  lua_getfield(L, -1, "get");
  lua_setfield(L, -3, "__index");
  lua_getfield(L, -1, "set");
  lua_setfield(L, -3, "__newindex");
  lua_pop(L, 2);
}

}  // namespace tolvik
