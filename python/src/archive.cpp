// SPDX-License-Identifier: GPL-2.0-or-later
#include "archive.h"

#include <cstring>
#include <type_traits>

#include "archive_members.h"

namespace tolvik::python {
namespace {

constexpr std::int32_t kVersion = 1;

class Writer {
 public:
  template <class... Values>
  void operator()(const Values&... values) {
    (Put(values), ...);
  }
  std::string Take() { return std::move(bytes_); }

 private:
  template <class Number>
  requires std::is_arithmetic_v<Number>
  void Put(const Number& value) { bytes_.append(reinterpret_cast<const char*>(&value), sizeof value); }
  template <class Number>
  void Put(const std::complex<Number>& value) {
    (*this)(value.real(), value.imag());
  }
  template <class Value, std::size_t kCount>
  void Put(const Value (&values)[kCount]) {
    for (const Value& value : values) Put(value);
  }
  void Put(const CCharArray& text) {
    const std::string_view view = text.View();
    Put(static_cast<std::int32_t>(view.size()));
    bytes_.append(view);
  }
  template <class Value>
  void Put(const CArray<Value>& values) {
    Put(values.size);
    for (const Value& value : values) Put(value);
  }
  void Put(const CColumnTable& table) {
    (*this)(table.columns, table.cursor, table.count);
    for (const CColumnRow& row : table) (*this)(row.energy, row.values);
  }
  template <class Record>
  requires std::is_class_v<Record>
  void Put(const Record& record) { VisitMembers(*this, record); }

  std::string bytes_;
};

class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  template <class... Values>
  void operator()(Values&... values) {
    (Get(values), ...);
  }
  bool IsGood() const { return good_; }
  bool IsAtEnd() const { return good_ && bytes_.empty(); }

 private:
  bool Holds(std::size_t count) {
    good_ = good_ && count <= bytes_.size();
    return good_;
  }
  // A length that cannot be true ends the reading: each element takes a byte at least.
  std::int32_t Length() {
    std::int32_t count = 0;
    Get(count);
    return count >= 0 && Holds(static_cast<std::size_t>(count)) ? count : (good_ = false, 0);
  }
  template <class Number>
  requires std::is_arithmetic_v<Number>
  void Get(Number& value) {
    if (!Holds(sizeof value)) return;
    std::memcpy(&value, bytes_.data(), sizeof value);
    bytes_.remove_prefix(sizeof value);
  }
  void Get(bool& value) {
    char byte = 0;
    Get(byte);
    value = byte != 0;
  }
  void Get(std::complex<double>& value) {
    double real = 0, imag = 0;
    (*this)(real, imag);
    value = {real, imag};
  }
  template <class Value, std::size_t kCount>
  void Get(Value (&values)[kCount]) {
    for (Value& value : values) Get(value);
  }
  void Get(CCharArray& text) {
    const auto count = static_cast<std::size_t>(Length());
    text.Set(bytes_.substr(0, count));
    bytes_.remove_prefix(count);
  }
  template <class Value>
  void Get(CArray<Value>& values) {
    values.Clear();
    for (std::int32_t left = Length(); left > 0 && good_; --left) {
      values.Append(Value());
      Get(values.Last());
    }
  }
  void Get(CColumnTable& table) {
    table.ClearRows();
    std::uint32_t count = 0;
    (*this)(table.columns, table.cursor, count);
    for (; count > 0 && good_; --count) {
      CColumnRow row;
      (*this)(row.energy, row.values);
      table.Append(std::move(row));
    }
  }
  template <class Record>
  requires std::is_class_v<Record>
  void Get(Record& record) { VisitMembers(*this, record); }

  std::string_view bytes_;
  bool good_ = true;
};

}  // namespace

std::string WriteArchive(const CState& state) {
  Writer writer;
  writer(kVersion, state);
  return writer.Take();
}

bool ReadArchive(CState& state, std::string_view bytes) {
  Reader reader(bytes);
  std::int32_t version = 0;
  reader(version);
  if (version != kVersion) return false;
  reader(state);
  return reader.IsAtEnd();
}

}  // namespace tolvik::python
