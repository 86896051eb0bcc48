// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/state_file/stream_value.h"

#include <array>
#include <charconv>
#include <locale>
#include <sstream>
#include <system_error>

namespace tolvik {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Plain decimal text, where std::from_chars and the streams agree: not "inf" or "nan", which only from_chars
// accepts, and no text after the number, where they may differ ("1e", "3e+x").
template <class Number>
bool ReadPlain(std::string_view text, Number& value) {
  const std::size_t first = !text.empty() && text[0] == '-' ? 1 : 0;
  if (first >= text.size() || !(IsDigit(text[first]) || text[first] == '.')) return false;
  Number found{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), found);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  value = found;
  return true;
}

template <class Number>
void ReadByStream(std::string_view text, Number& value) {
  std::istringstream in{std::string(text)};
  in.imbue(std::locale::classic());
  in >> value;
}

template <class Number>
void ReadNumber(std::string_view text, Number& value) {
  if (!ReadPlain(text, value)) ReadByStream(text, value);
}

template <class... Format>
void AppendChars(std::string& out, Format... format) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), format...);
  out.append(digits.data(), end.ptr);
}

}  // namespace

void ReadValue(std::string_view text, double& value) {
  ReadNumber(text, value);
}
void ReadValue(std::string_view text, std::int32_t& value) {
  ReadNumber(text, value);
}
void ReadValue(std::string_view text, std::uint32_t& value) {
  ReadNumber(text, value);
}
void ReadValue(std::string_view text, bool& value) {
  if (text == "0" || text == "1") {
    value = text == "1";
  } else {
    ReadByStream(text, value);
  }
}

void AppendValue(std::string& out, double value, int digits) {
  AppendChars(out, value, std::chars_format::general, digits);
}
void AppendValue(std::string& out, std::int32_t value) {
  AppendChars(out, value);
}
void AppendValue(std::string& out, std::uint32_t value) {
  AppendChars(out, value);
}
void AppendValue(std::string& out, bool value) {
  out += value ? '1' : '0';
}

}  // namespace tolvik
