// SPDX-License-Identifier: GPL-2.0-or-later
// Members of records as attributes of Python, made from the tables of keys.
#pragma once

#include <pybind11/pybind11.h>

#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "model/state_file/keys.h"
#include "tolvik/array.h"

namespace tolvik::python {

namespace py = pybind11;

/// The number or text of a Python object, for the attribute `name`. Raises TypeError for another type and
/// OverflowError for an integer beyond 32 bits.
void Take(double& to, py::handle value, const char* name);
void Take(std::int32_t& to, py::handle value, const char* name);
void Take(std::uint32_t& to, py::handle value, const char* name);
void Take(bool& to, py::handle value, const char* name);
void Take(CCharArray& to, py::handle value, const char* name);

inline py::object Give(double value) {
  return py::float_(value);
}
inline py::object Give(std::int32_t value) {
  return py::int_(value);
}
inline py::object Give(std::uint32_t value) {
  return py::int_(value);
}
inline py::object Give(bool value) {
  return py::bool_(value);
}
/// Text as str; bytes that are not UTF-8 pass as surrogates and come back as they were.
py::object Give(const CCharArray& text);
py::object TextOf(std::string_view text);

/// Defines one member of a record as property of cls. Holder::get() gives the record.
template <class Holder, class Record, class... Extra>
void DefineField(py::class_<Holder, Extra...>& cls, std::string_view start, keys::Field<Record> field,
                 std::string_view meaning) {
  const std::string name(keys::Name(start));
  const std::string doc(meaning);
  std::visit(
      [&](auto member) {
        const auto get = [member](const Holder& holder) { return Give(holder.get().*member); };
        const auto set = [member, name](const Holder& holder, const py::object& value) {
          Take(holder.get().*member, value, name.c_str());
        };
        cls.def_property(name.c_str(), get, set, doc.c_str());
      },
      field);
}

template <class Holder, class Record, class... Extra>
void DefineFields(py::class_<Holder, Extra...>& cls, std::span<const keys::Key<Record>> list) {
  for (const auto& key : list) DefineField<Holder, Record>(cls, key.start, key.field, key.meaning);
}

}  // namespace tolvik::python
