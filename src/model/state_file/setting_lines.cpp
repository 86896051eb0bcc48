// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/state_file/setting_lines.h"

#include <algorithm>

namespace tolvik {
namespace {

// The text without any character c: a part of the text where c is only at its ends, else a copy in scratch.
std::string_view Without(std::string_view text, char c, std::string& scratch) {
  while (!text.empty() && text.front() == c) text.remove_prefix(1);
  while (!text.empty() && text.back() == c) text.remove_suffix(1);
  if (text.find(c) == std::string_view::npos) return text;
  scratch.clear();
  std::remove_copy(text.begin(), text.end(), std::back_inserter(scratch), c);
  return scratch;
}

}  // namespace

bool SettingLines::NextLine(std::string_view& line) {
  if (position_ >= text_.size()) return false;
  const std::size_t end = std::min(text_.find('\n', position_), text_.size());
  line = text_.substr(position_, end - position_);
  position_ = std::min(end + 1, text_.size());
  return true;
}

bool SettingLines::Next(SettingLine& setting) {
  std::string_view line;
  while (NextLine(line)) {
    line = Without(line, '\r', line_);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) continue;
    const std::string_view key = line.substr(0, equals);
    if (key.find('#') != std::string_view::npos) continue;
    setting.key = Without(key, ' ', key_);
    setting.raw = line.substr(equals + 1);
    setting.raw = setting.raw.substr(0, setting.raw.find('#'));
    setting.value = Without(setting.raw, ' ', value_);
    return true;
  }
  return false;
}

}  // namespace tolvik
