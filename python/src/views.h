// SPDX-License-Identifier: GPL-2.0-or-later
// Arrays on the memory of a state. A view keeps the state alive, and while it lives its block stays in place.
#pragma once

#include <pybind11/numpy.h>

#include <complex>
#include <type_traits>

#include "box.h"

namespace tolvik::python {

namespace py = pybind11;

/// What a view holds as its base: the state, and one count of its block.
py::capsule ViewToken(const Shared& box, Block block);
/// The same for numbers that stand in the state itself and never move.
py::capsule ViewToken(const Shared& box);

/// count numbers, stride bytes apart.
template <class Number>
py::array StridedView(Number* first, std::int32_t count, std::size_t stride, const py::capsule& token) {
  static Number nothing{};
  return py::array(py::dtype::of<Number>(), {static_cast<py::ssize_t>(count)},
                   {static_cast<py::ssize_t>(stride)}, count == 0 ? &nothing : first, token);
}

/// All numbers of an array of a record.
inline py::array ArrayView(CArray<double>& values, const py::capsule& token) {
  return StridedView(values.data, values.size, sizeof(double), token);
}

void MakeReadOnly(py::array& view);

/// view[...] = values, with the broadcasting and the errors of numpy.
void AssignInto(const py::array& view, const py::object& values);

/// Replaces the numbers of an array; its block may move then. Raises BufferError while a view shows the block
/// and the length changes.
void AssignArray(CArray<double>& to, const py::object& values, const StateBox& box, Block block);

}  // namespace tolvik::python
