// SPDX-License-Identifier: GPL-2.0-or-later
// Reads column files. Plain numbers are read by std::from_chars; a line with anything else goes through a
// text stream, whose extraction defines the row.
#include <charconv>
#include <cstring>
#include <fstream>
#include <locale>
#include <sstream>

#include "optics/column_table.h"

namespace tolvik {
namespace {

constexpr std::size_t kChunk = std::size_t{1} << 16;
constexpr std::size_t kLongestLine = std::size_t{1} << 20;

bool IsBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

enum class Token { kNumber, kEnd, kUnusual };

// Takes one number off the text. kUnusual leaves value unchanged: a stream may still read a number there.
Token TakeNumber(const char*& at, const char* end, double& value) {
  while (at != end && IsBlank(*at)) ++at;
  if (at == end) return Token::kEnd;
  const char* begin = *at == '+' ? at + 1 : at;
  const char* digit = *at == '-' ? at + 1 : begin;
  // "inf", "nan" and "+-1" are numbers to one of the two readers only
  if (digit == end || !((*digit >= '0' && *digit <= '9') || *digit == '.')) return Token::kUnusual;
  double number = 0;
  const auto [stop, error] = std::from_chars(begin, end, number);
  if (error != std::errc{} || (stop != end && !IsBlank(*stop))) return Token::kUnusual;
  value = number;
  at = stop;
  return Token::kNumber;
}

class RowReader {
 public:
  explicit RowReader(CColumnTable& table) : table_(table) {
    row_.values.Assign(table.columns, 0.0);
    stream_.imbue(std::locale::classic());  // a front end may have set another locale
  }

  void TakeLine(const char* begin, const char* end) {
    if (end - begin < 2 || *begin == '#') return;
    if (end - begin > static_cast<std::ptrdiff_t>(kLongestLine)) end = begin + kLongestLine;
    scratch_ = row_;
    if (ReadPlain(begin, end, scratch_)) {
      std::swap(row_, scratch_);
    } else {
      ReadUnusual(begin, end);
    }
    table_.Append(row_);
  }

 private:
  // False when the line needs a stream.
  static bool ReadPlain(const char* at, const char* end, CColumnRow& row) {
    Token token = TakeNumber(at, end, row.energy);
    for (double& value : row.values) {
      if (token != Token::kNumber) break;
      token = TakeNumber(at, end, value);
    }
    return token != Token::kUnusual;
  }

  void ReadUnusual(const char* begin, const char* end) {
    stream_.clear();
    stream_.str(std::string(begin, end));
    stream_ >> row_.energy;
    for (double& value : row_.values) stream_ >> value;
  }

  CColumnTable& table_;
  CColumnRow row_;  // reused from line to line
  CColumnRow scratch_;
  std::istringstream stream_;
};

void ReadRows(CColumnTable& table, std::istream& file) {
  RowReader reader(table);
  std::string buffer;
  std::size_t kept = 0;  // bytes of a line that is not complete
  for (;;) {
    buffer.resize(kept + kChunk);
    file.read(buffer.data() + kept, kChunk);
    const auto got = static_cast<std::size_t>(file.gcount());
    const char* at = buffer.data();
    const char* end = at + kept + got;
    if (got == 0) return reader.TakeLine(at, end);
    while (const void* newline = std::memchr(at, '\n', static_cast<std::size_t>(end - at))) {
      reader.TakeLine(at, static_cast<const char*>(newline));
      at = static_cast<const char*>(newline) + 1;
    }
    kept = std::min(static_cast<std::size_t>(end - at), kLongestLine);
    std::memmove(buffer.data(), at, kept);
  }
}

}  // namespace

bool ReadColumnTable(CColumnTable& table, const std::string& path) {
  table.ClearRows();
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) return false;
  try {
    ReadRows(table, file);
  } catch (const std::bad_alloc&) {
    table.ClearRows();
  } catch (const std::length_error&) {
    table.ClearRows();
  }
  return table.count > 0;
}

}  // namespace tolvik
