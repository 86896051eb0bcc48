// SPDX-License-Identifier: GPL-2.0-or-later
// Numbers as text, by the rules of the C++ streams in the "C" locale, independent of the locale of the
// process.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tolvik {

/// Reads a number from the front of a text exactly as stream extraction (libstdc++, base 10) does: white
/// space in front is skipped and text after the number is ignored. An empty text leaves the value unchanged,
/// a text that does not begin with a number gives 0, one out of range the nearest end of the range. A bool is
/// a number too: 0 is false, any other number true. Never fails.
void ReadValue(std::string_view text, double& value);
void ReadValue(std::string_view text, std::int32_t& value);
void ReadValue(std::string_view text, std::uint32_t& value);
void ReadValue(std::string_view text, bool& value);

inline constexpr int kSixDigits = 6;     ///< as stream insertion writes
inline constexpr int kExactDigits = 17;  ///< a double reads back as it was

/// Appends a number as stream insertion writes it, with that many significant digits ("%g").
void AppendValue(std::string& out, double value, int digits = kSixDigits);
void AppendValue(std::string& out, std::int32_t value);
void AppendValue(std::string& out, std::uint32_t value);
void AppendValue(std::string& out, bool value);

}  // namespace tolvik
