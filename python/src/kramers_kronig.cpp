// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/kramers_kronig.h"

#include <pybind11/numpy.h>

#include "parts.h"

namespace tolvik::python {
namespace py = pybind11;
namespace {

using Column = py::array_t<double, py::array::c_style | py::array::forcecast>;

// The caller ensures that both columns have the same length, and that the energies ascend.
Column KramersKronig(const Column& energy, const Column& beta) {
  const auto e = energy.unchecked<1>();
  const auto b = beta.unchecked<1>();
  CColumnTable table(2);
  for (py::ssize_t i = 0; i < e.shape(0); ++i) {
    CColumnRow row;
    row.energy = e(i);
    row.values.Append(0.0);
    row.values.Append(b(i));
    table.Append(row);
  }
  {
    const py::gil_scoped_release released;
    ToTransformForm(table);
    KramersKronigAll(table);
  }
  Column result(e.shape(0));
  auto out = result.mutable_unchecked<1>();
  for (py::ssize_t i = 0; i < e.shape(0); ++i) out(i) = table.rows[i].values[0];
  return result;
}

}  // namespace

void DefineMaterials(py::module_& module) {
  module.def("_kramers_kronig", &KramersKronig, py::arg("energy"), py::arg("beta"));
}

}  // namespace tolvik::python
