// SPDX-License-Identifier: GPL-2.0-or-later
#include "script/prelude.h"

#include <algorithm>
#include <span>

#include "script/fields.h"

namespace tolvik {
namespace {

constexpr std::string_view kKeywords[] = {"and", "break",    "do",     "else", "elseif", "end",   "false",
                                          "for", "function", "if",     "in",   "local",  "nil",   "not",
                                          "or",  "repeat",   "return", "then", "true",   "until", "while"};

// Ways to a finalizer, to a table of all globals or to text that is run later.
constexpr std::string_view kRiskyWords[] = {"io",      "newproxy", "require", "package",      "module",
                                            "load",    "loadfile", "dofile",  "loadstring",   "_G",
                                            "getfenv", "setfenv",  "debug",   "getmetatable", "element"};

// More globals than this and the text form may exceed what Lua allows one function.
constexpr std::int32_t kMostElements = 10000;

bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool IsNamePart(char c) {
  return IsNameStart(c) || (c >= '0' && c <= '9');
}

bool Contains(std::span<const std::string_view> words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool IsPlainName(std::string_view name) {
  return !name.empty() && IsNameStart(name[0]) && std::all_of(name.begin(), name.end(), IsNamePart) &&
         !Contains(kKeywords, name) && name != "array" && name != "element";
}

bool IsLineEmpty(std::string_view line) {
  constexpr std::string_view kBlanks = " \t\r\n\v\f";
  const std::size_t start = line.find_first_not_of(kBlanks);
  if (start == std::string_view::npos) return true;
  line = line.substr(start, line.find_last_not_of(kBlanks) + 1 - start);
  // a long comment may end in the same line, and a line end inside ends a short one
  return line.starts_with("--") && !line.starts_with("--[") &&
         line.find_first_of("\r\n") == std::string_view::npos;
}

}  // namespace

std::string PreludeText(const CState& state) {
  std::string text;
  for (std::int32_t i = 0; i < state.elementlayers.size; ++i) {
    text.append(state.elementlayers[i].element.View());
    text.append(" = element.new(").append(std::to_string(i)).append(");\n");
  }
  for (const ScriptField& field : ScriptFields()) {
    text.append(field.name).append(" = array.new(");
    text.append(std::to_string(HighestIndex(field.length, state))).append(", ");
    text.append(std::to_string(field.code)).append(");\n");
  }
  return text;
}

void BuildMainChunk(const CArray<CCharArray>& lines, std::string& chunk) {
  chunk.assign("function Start()\n");
  for (const CCharArray& line : lines) chunk.append(line.View()).append("\n");
  chunk.append("end\n");
}

bool IsPreludePlain(const CState& state) {
  return state.elementlayers.size <= kMostElements &&
         std::all_of(state.elementlayers.begin(), state.elementlayers.end(),
                     [](const CElementLayer& each) { return IsPlainName(each.element.View()); });
}

bool AreLinesEmpty(const CArray<CCharArray>& lines) {
  return std::all_of(lines.begin(), lines.end(), [](const auto& line) { return IsLineEmpty(line.View()); });
}

bool IsTextFreeOfFinalizers(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size()) {
    if (!IsNamePart(text[at])) {
      ++at;
      continue;
    }
    const std::size_t begin = at;
    while (at < text.size() && IsNamePart(text[at])) ++at;
    if (Contains(kRiskyWords, text.substr(begin, at - begin))) return false;
  }
  return true;
}

}  // namespace tolvik
