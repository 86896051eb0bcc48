// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/script_fault.h"

#include <charconv>

#include "tolvik/analysis/errors.h"

namespace tolvik::analysis {
namespace {

// Lua counts the line "function Start()" before the script.
constexpr std::string_view kChunk = "[string \"line\"]:";

std::string WithOwnLine(std::string_view message) {
  if (!message.starts_with(kChunk)) return std::string(message);
  const std::string_view rest = message.substr(kChunk.size());
  int line = 0;
  const auto end = std::from_chars(rest.data(), rest.data() + rest.size(), line);
  if (end.ec != std::errc() || line < 2) return std::string(message);
  return "line " + std::to_string(line - 1) + std::string(end.ptr, rest.data() + rest.size());
}

}  // namespace

std::string ScriptWatch::Text() const {
  const std::string what =
      outcome_.code == kScriptFailed ? "the script does not compile" : "the script stopped";
  return outcome_.message[0] == '\0' ? what : what + ": " + WithOwnLine(outcome_.message);
}

void ScriptWatch::ThrowFault() const {
  if (HasFault()) throw ScriptError(outcome_.code, Text());
}

}  // namespace tolvik::analysis
