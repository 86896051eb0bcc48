// SPDX-License-Identifier: GPL-2.0-or-later
// The parts of the module _core: a function and a file each.
#pragma once

#include <pybind11/pybind11.h>

namespace tolvik::python {

void DefineState(pybind11::module_& module);      ///< State: file, text, settings
void DefineSequences(pybind11::module_& module);  ///< layers, elements, functions, variables, measurements
void DefineServices(pybind11::module_& module);   ///< tables, constants, script, threads
void DefineMaterials(pybind11::module_& module);  ///< the Kramers-Kronig transform of a table

}  // namespace tolvik::python
