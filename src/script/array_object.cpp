// SPDX-License-Identifier: GPL-2.0-or-later
#include "script/array_object.h"

#include <lua.hpp>

namespace tolvik {
namespace {

constexpr char kArrayType[] = "LuaBook.array";

// Codes of the fields. Code 24 has none: the imaginary parts of the tensor begin at 25.
constexpr std::int32_t kFirstSolution = 6, kFirstGauss = 11, kFirstTensor = 15, kFirstImaginary = 25,
                       kLastTensor = 33, kParameters = 34, kF1 = 35, kF2 = 36;

constexpr double CLayer::*kLayerFields[] = {&CLayer::layer_delta,  &CLayer::layer_beta,
                                            &CLayer::layer_sigma,  &CLayer::layer_d,
                                            &CLayer::layer_ddelta, &CLayer::layer_dbeta};
constexpr CArray<double> CSolution::*kSolutionFields[] = {&CSolution::dataset_qz, &CSolution::dataset_R0,
                                                          &CSolution::dataset_Rp, &CSolution::dataset_Rm,
                                                          &CSolution::dataset_eng};
constexpr double CGaussFunction::*kGaussFields[] = {&CGaussFunction::gauss_delta, &CGaussFunction::gauss_beta,
                                                    &CGaussFunction::gauss_variance,
                                                    &CGaussFunction::gauss_z};

bool IsTensorCode(std::int32_t code) {
  return code >= kFirstTensor && code <= kLastTensor && code != kFirstImaginary - 1;
}

template <class T>
T* At(CArray<T>& list, std::int32_t index) {
  return index >= 0 && index < list.size ? &list[index] : nullptr;
}

template <class Record>
double* Member(CArray<Record>& list, std::int32_t index, double Record::*field) {
  Record* record = At(list, index);
  return record != nullptr ? &(record->*field) : nullptr;
}

double* TensorElement(CLayer& layer, std::int32_t code) {
  const bool imaginary = code >= kFirstImaginary;
  const std::int32_t element = code - (imaginary ? kFirstImaginary : kFirstTensor);
  // a complex number is its two parts, side by side
  auto* parts = reinterpret_cast<double*>(&layer.Epsilon(element / 3, element % 3));
  return imaginary ? parts + 1 : parts;
}

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

// The field that the arguments array and index of a get or set select.
double& CheckField(lua_State* L) {
  const ArrayObject& array = CheckArray(L);
  const lua_Integer index = luaL_checkinteger(L, 2);
  CScriptPointer& host = Host(L);
  const std::int32_t limit = array.size == -1 ? host.solution.dataset_qz.size - 1 : array.size;
  luaL_argcheck(L, index >= 0 && index <= limit, 2, "index out of range");
  const auto at = static_cast<std::int32_t>(index);
  double* field = FindScriptField(host, array.code, at);
  luaL_argcheck(L, field != nullptr, 2, "index out of range");
  // Even reading the tensor turns on the full treatment of the layer; scripts rely on it.
  if (IsTensorCode(array.code)) host.state->layers[at].magnetic = 1;
  return *field;
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

double* FindScriptField(CScriptPointer& host, std::int32_t code, std::int32_t index) {
  CState& state = *host.state;
  if (code < 0) return nullptr;
  if (code < kFirstSolution) return Member(state.layers, index, kLayerFields[code]);
  if (code < kFirstGauss) return At(host.solution.*kSolutionFields[code - kFirstSolution], index);
  if (code < kFirstTensor) return Member(state.gaussfunctions, index, kGaussFields[code - kFirstGauss]);
  if (IsTensorCode(code)) {
    CLayer* layer = At(state.layers, index);
    return layer != nullptr ? TensorElement(*layer, code) : nullptr;
  }
  if (code == kParameters) return At(state.scriptparameters, index);
  if (code == kF1) return Member(state.elementlayers, index, &CElementLayer::el_f1);
  if (code == kF2) return Member(state.elementlayers, index, &CElementLayer::el_f2);
  return nullptr;
}

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
