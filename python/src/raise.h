// SPDX-License-Identifier: GPL-2.0-or-later
// Raises failures as Python exceptions. The classes and texts are in tolvik/errors.py, in one table.
#pragma once

#include <pybind11/pybind11.h>

#include <utility>

namespace tolvik::python {

namespace py = pybind11;

/// Raises the exception that errors.make(fault, *arguments) returns. Needs the GIL.
template <class... Arguments>
[[noreturn]] void Raise(const char* fault, Arguments&&... arguments) {
  const py::object make = py::module_::import("tolvik.errors").attr("make");
  const py::object error = make(fault, std::forward<Arguments>(arguments)...);
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
  throw py::error_already_set();
}

/// Makes std::bad_alloc and std::length_error, from wherever, the package's own exceptions.
void TranslateMemoryErrors();

}  // namespace tolvik::python
