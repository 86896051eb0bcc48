// SPDX-License-Identifier: GPL-2.0-or-later
// A script host on a state that the test fills, and single statements in it.
#pragma once

#include <gtest/gtest.h>

#include <lua.hpp>
#include <string>

#include "script/host.h"

namespace tolvik::testing {

/// Call Start() when state_ is complete.
class ScriptHost : public ::testing::Test {
 protected:
  ~ScriptHost() override {
    if (record_.L != nullptr) lua_close(record_.L);
  }

  void Start() {
    record_.state = &state_;
    record_.L = luaL_newstate();
    EXPECT_EQ(InitScriptHost(record_, nullptr, nullptr), kScriptReady);
  }

  /// The error of a statement, empty when it ran.
  std::string Try(const std::string& text) {
    std::string error;
    if (luaL_loadstring(record_.L, text.c_str()) != 0 || lua_pcall(record_.L, 0, 0, 0) != 0) {
      error = lua_tostring(record_.L, -1) != nullptr ? lua_tostring(record_.L, -1) : "error";
    }
    lua_settop(record_.L, 0);
    return error;
  }
  bool IsOutOfRange(const std::string& text) {
    return Try(text).find("index out of range") != std::string::npos;
  }

  CState state_;
  CScriptPointer record_;
};

}  // namespace tolvik::testing
