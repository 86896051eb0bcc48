// SPDX-License-Identifier: GPL-2.0-or-later
// The lines of a state file: "key = value" settings between comments and ignored lines.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tolvik {

/// One setting; the views live until the next line is read.
struct SettingLine {
  std::string_view key;    ///< without any blank
  std::string_view value;  ///< without any blank, up to a "#"
  std::string_view raw;    ///< all between the "=" and a "#", blanks included
};

/// Iterates over the settings of a text. A line ends in a line feed; carriage returns are dropped everywhere.
/// Comments ("#" first), empty lines and lines without a "=" before a "#" are skipped. A blank is the
/// character 0x20 only: tabs stay.
class SettingLines {
 public:
  explicit SettingLines(std::string_view text) : text_(text) {}

  /// The next setting; false at the end of the text.
  bool Next(SettingLine& line);

  /// The text after the last line read.
  std::string_view Rest() const { return text_.substr(position_); }
  /// Advances within Rest().
  void Skip(std::size_t count) { position_ += count; }

 private:
  bool NextLine(std::string_view& line);

  std::string_view text_;
  std::size_t position_ = 0;
  std::string line_, key_, value_;  // copies of cleaned texts
};

}  // namespace tolvik
