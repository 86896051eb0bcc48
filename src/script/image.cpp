// SPDX-License-Identifier: GPL-2.0-or-later
#include "script/image.h"

#include <algorithm>
#include <lua.hpp>
#include <string_view>

#include "script/array_object.h"
#include "script/element_object.h"
#include "script/fields.h"
#include "script/host_parts.h"
#include "script/prelude.h"

namespace tolvik {
namespace {

std::unique_ptr<ScriptImage>& Spare() {
  thread_local std::unique_ptr<ScriptImage> spare;
  return spare;
}

bool IsArrayName(std::string_view name) {
  return std::ranges::any_of(ScriptFields(), [=](const ScriptField& each) { return name == each.name; });
}

}  // namespace

std::unique_ptr<ScriptImage> ScriptImage::Take() {
  if (Spare() != nullptr) return std::move(Spare());
  return std::make_unique<ScriptImage>();
}

void ScriptImage::Leave(std::unique_ptr<ScriptImage> image) noexcept {
  image->End();
  Spare() = std::move(image);
}

bool ScriptImage::OpenLua() {
  arena_.Reset();
  record_.L = lua_newstate(&LuaArena::Hook, &arena_);
  needs_close_ = true;
  return record_.L != nullptr;
}

// Runs inside lua_cpcall; array_sizes_ has room, so nothing is allocated outside Lua.
int ScriptImage::FillImage(lua_State* L) {
  auto* self = static_cast<ScriptImage*>(lua_touserdata(L, 1));
  SetUpHost(L, self->record_, nullptr, nullptr);
  std::size_t i = 0;
  for (const ScriptField& field : ScriptFields()) {
    self->array_sizes_[i++] = &PushArray(L, -1, field.code)->size;
    lua_setfield(L, LUA_GLOBALSINDEX, field.name);
  }
  lua_gc(L, LUA_GCCOLLECT, 0);
  return 0;
}

bool ScriptImage::BuildImage() {
  array_sizes_.assign(ScriptFields().size(), nullptr);
  if (!OpenLua()) return false;
  if (lua_cpcall(record_.L, &FillImage, this) == 0 && arena_.Save()) {
    image_lua_ = record_.L;
    return true;
  }
  End();
  return false;
}

int ScriptImage::BindState(lua_State* L) {
  auto* self = static_cast<ScriptImage*>(lua_touserdata(L, 1));
  PushHostPointers(L, self->record_);
  const CArray<CElementLayer>& elements = self->record_.state->elementlayers;
  for (std::int32_t i = 0; i < elements.size; ++i) {
    if (IsArrayName(elements[i].element.View())) continue;  // the arrays are defined after the elements
    PushElement(L, i);
    lua_setfield(L, LUA_GLOBALSINDEX, elements[i].element.CStr());
  }
  return 0;
}

bool ScriptImage::BeginFromImage(CState& state) {
  if (!arena_.HasImage() && !BuildImage()) return false;
  arena_.Restore();
  record_.L = image_lua_;
  needs_close_ = state.elementlayers.size > 0 || !IsTextFreeOfFinalizers(chunk_);
  std::size_t i = 0;
  for (const ScriptField& field : ScriptFields()) *array_sizes_[i++] = HighestIndex(field.length, state);
  const int top = lua_gettop(record_.L);
  const bool bound = lua_cpcall(record_.L, &BindState, this) == 0;
  lua_settop(record_.L, top);
  if (bound) RunText(record_.L, chunk_, &outcome_);
  return true;
}

void ScriptImage::Begin(CState& state) {
  End();
  record_.state = &state;
  record_.scriptselect = 1;
  outcome_ = {};
  BuildMainChunk(SelectedLines(record_), chunk_);
  if (IsPreludePlain(state)) {
    if (!BeginFromImage(state)) record_.L = nullptr;
  } else if (OpenLua()) {
    outcome_.code = InitScriptHost(record_, nullptr, nullptr);
  }
}

void ScriptImage::Run() {
  // A script that does not compile keeps that message: its run can only miss Start.
  if (outcome_.code != kScriptFailed) outcome_ = {};
  if (record_.L != nullptr) RunScript(record_, outcome_.code == kScriptFailed ? nullptr : &outcome_);
}

void ScriptImage::End() noexcept {
  if (record_.L != nullptr && (needs_close_ || arena_.HasOutside())) lua_close(record_.L);
  record_.L = nullptr;
}

}  // namespace tolvik
