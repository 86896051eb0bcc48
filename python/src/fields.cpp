// SPDX-License-Identifier: GPL-2.0-or-later
#include "fields.h"

#include <cstdint>
#include <limits>

#include "raise.h"

namespace tolvik::python {
namespace {

template <class Integer>
void TakeInteger(Integer& to, py::handle value, const char* name) {
  const auto number = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
  if (!number) {
    PyErr_Clear();
    Raise("wrong_type", name, "int", value);
  }
  int overflow = 0;
  const long long found = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
  constexpr long long kLowest = std::numeric_limits<Integer>::min();
  constexpr long long kHighest = std::numeric_limits<Integer>::max();
  if (overflow != 0 || found < kLowest || found > kHighest)
    Raise("integer_range", name, value, kLowest, kHighest);
  to = static_cast<Integer>(found);
}

}  // namespace

void Take(double& to, py::handle value, const char* name) {
  const double found = PyFloat_AsDouble(value.ptr());
  if (found == -1.0 && PyErr_Occurred() != nullptr) {
    PyErr_Clear();
    Raise("wrong_type", name, "float", value);
  }
  to = found;
}

void Take(std::int32_t& to, py::handle value, const char* name) {
  TakeInteger(to, value, name);
}

void Take(std::uint32_t& to, py::handle value, const char* name) {
  TakeInteger(to, value, name);
}

void Take(bool& to, py::handle value, const char* name) {
  const int truth = PyObject_IsTrue(value.ptr());
  const bool plain = PyBool_Check(value.ptr()) || PyIndex_Check(value.ptr()) ||
                     py::isinstance(value, py::module_::import("numpy").attr("bool_"));
  if (truth < 0 || !plain) {
    PyErr_Clear();
    Raise("wrong_type", name, "bool", value);
  }
  to = truth != 0;
}

void Take(CCharArray& to, py::handle value, const char* name) {
  if (!PyUnicode_Check(value.ptr())) Raise("wrong_type", name, "str", value);
  const auto bytes =
      py::reinterpret_steal<py::object>(PyUnicode_AsEncodedString(value.ptr(), "utf-8", "surrogateescape"));
  if (!bytes) throw py::error_already_set();
  const std::string_view text(PyBytes_AS_STRING(bytes.ptr()),
                              static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr())));
  if (text.find('\0') != text.npos) Raise("nul_in_text", name);
  to.Set(text);
}

py::object TextOf(std::string_view text) {
  PyObject* decoded =
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape");
  if (decoded == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(decoded);
}

py::object Give(const CCharArray& text) {
  return TextOf(text.View());
}

}  // namespace tolvik::python
