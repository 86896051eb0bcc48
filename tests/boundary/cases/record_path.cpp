// SPDX-License-Identifier: GPL-2.0-or-later
#include "boundary/cases/record_path.h"

#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <type_traits>

#include "boundary/cases/record_members.h"

namespace tolvik::testing {
namespace {

using nlohmann::json;

template <class T>
struct IsArray : std::false_type {};
template <class T>
struct IsArray<CArray<T>> : std::true_type {};

json ToJson(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  return value;
}

double ToDouble(const json& value) {
  if (!value.is_string()) return value.get<double>();
  const std::string text = value.get<std::string>();
  if (text == "nan") return std::numeric_limits<double>::quiet_NaN();
  if (text == "inf") return std::numeric_limits<double>::infinity();
  if (text == "-inf") return -std::numeric_limits<double>::infinity();
  throw std::out_of_range("no number: " + text);
}

// The leaves of a path: numbers, texts and whole lists of either.
struct Reader {
  json result;

  template <class T>
  requires std::is_arithmetic_v<T>
  void operator()(T& leaf) {
    if constexpr (std::is_floating_point_v<T>) {
      result = ToJson(leaf);
    } else {
      result = leaf;
    }
  }
  void operator()(std::complex<double>& leaf) {
    result = json::array({ToJson(leaf.real()), ToJson(leaf.imag())});
  }
  void operator()(CCharArray& leaf) { result = leaf.CStr(); }
  template <class T>
  void operator()(CArray<T>& leaf) {
    json list = json::array();
    for (T& element : leaf) {
      if constexpr (requires { (*this)(element); }) {
        (*this)(element);
        list.push_back(result);
      } else {
        throw std::out_of_range("not a list of plain values");
      }
    }
    result = list;
  }
};

struct Writer {
  const json& value;

  template <class T>
  requires std::is_arithmetic_v<T>
  void operator()(T& leaf) {
    if constexpr (std::is_floating_point_v<T>) {
      leaf = ToDouble(value);
    } else if constexpr (std::is_same_v<T, bool>) {
      leaf = value.is_boolean() ? value.get<bool>() : value.get<double>() != 0;
    } else {
      leaf = value.get<T>();
    }
  }
  void operator()(std::complex<double>& leaf) { leaf = {ToDouble(value.at(0)), ToDouble(value.at(1))}; }
  void operator()(CCharArray& leaf) { leaf.Set(value.get<std::string>()); }
  void operator()(CArray<double>& leaf) {
    leaf.Clear();
    for (const json& element : value) leaf.Append(ToDouble(element));
  }
  void operator()(CArray<CCharArray>& leaf) {
    leaf.Clear();
    for (const json& element : value) leaf.Append(CCharArray(element.get<std::string>()));
  }
};

std::int32_t TakeIndex(std::string_view& path) {
  const std::size_t end = path.find(']');
  if (!path.starts_with('[') || end == std::string_view::npos) throw std::out_of_range("an index is missing");
  const int index = std::stoi(std::string(path.substr(1, end - 1)));
  path.remove_prefix(end + 1);
  return index;
}

void CheckIndex(std::int64_t index, std::int64_t size) {
  if (index < 0 || index >= size) throw std::out_of_range("index out of range");
}

// Rows of a table; no other record has rows.
std::int64_t CountRows(const CColumnTable& table) {
  return table.count;
}
template <class Record>
std::int64_t CountRows(const Record&) {
  return 0;
}

// Follows a path from a value to a leaf and acts on it.
template <class T, class Act>
void Walk(T& value, std::string_view path, Act& act);

template <class T, class Act>
void WalkMember(T& record, std::string_view path, Act& act) {
  if (path.starts_with('.')) path.remove_prefix(1);
  const std::string_view name = path.substr(0, path.find_first_of(".["));
  const std::string_view plain = name.ends_with('_') ? name.substr(0, name.size() - 1) : name;
  bool found = false;
  ForEachMember(record, [&](std::string_view member, auto& value) {
    if (member != plain || found) return;
    found = true;
    using Member = std::remove_reference_t<decltype(value)>;
    std::string_view rest = path.substr(name.size());
    if constexpr (std::is_same_v<Member, CColumnRow*>) {
      const std::int32_t index = TakeIndex(rest);
      CheckIndex(index, CountRows(record));
      Walk(value[index], rest, act);
    } else {
      Walk(value, rest, act);
    }
  });
  if (!found) throw std::out_of_range("no member " + std::string(name));
}

template <class T, class Act>
void Walk(T& value, std::string_view path, Act& act) {
  if constexpr (std::is_array_v<T>) {
    const std::int32_t index = TakeIndex(path);
    CheckIndex(index, std::extent_v<T>);
    Walk(value[index], path, act);
  } else if constexpr (IsArray<T>::value) {
    if (path == ".size") {
      act(value.size);
    } else if (!path.empty()) {
      const std::int32_t index = TakeIndex(path);
      CheckIndex(index, value.size);
      Walk(value[index], path, act);
    } else if constexpr (requires { act(value); }) {
      act(value);
    } else {
      throw std::out_of_range("not a list of plain values");
    }
  } else if constexpr (requires { act(value); }) {
    if (!path.empty()) throw std::out_of_range("nothing below a plain value");
    act(value);
  } else {
    WalkMember(value, path, act);
  }
}

}  // namespace

json GetByPath(CState& record, const std::string& path) {
  Reader reader;
  Walk(record, path, reader);
  return reader.result;
}
json GetByPath(CDataset& record, const std::string& path) {
  Reader reader;
  Walk(record, path, reader);
  return reader.result;
}
void SetByPath(CState& record, const std::string& path, const json& value) {
  Writer writer{value};
  Walk(record, path, writer);
}
void SetByPath(CDataset& record, const std::string& path, const json& value) {
  Writer writer{value};
  Walk(record, path, writer);
}

}  // namespace tolvik::testing
