// SPDX-License-Identifier: GPL-2.0-or-later
// The lines of a state file: "key = value" settings between comments and lines of no meaning.
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

/// Walks over the settings of a text. A line ends in a line feed; carriage returns are dropped wherever they
/// stand. Comments ("#" first), empty lines and lines without a "=" before a "#" are passed over. A blank is
/// the character 0x20 alone: tabs stay.
class SettingLines {
 public:
  explicit SettingLines(std::string_view text) : text_(text) {}

  /// The next setting; false at the end of the text.
  bool Next(SettingLine& line);

  /// All behind the last line read.
  std::string_view Rest() const { return text_.substr(position_); }
  /// Moves on within Rest().
  void Skip(std::size_t count) { position_ += count; }

 private:
  bool NextLine(std::string_view& line);

  std::string_view text_;
  std::size_t position_ = 0;
  std::string line_, key_, value_;  // copies of what had to be cleaned
};

}  // namespace tolvik
