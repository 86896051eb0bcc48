// SPDX-License-Identifier: GPL-2.0-or-later
// The parts of the module _core: a function and a file each.
#pragma once

#include <pybind11/pybind11.h>

#include "box.h"

namespace tolvik::python {

using StateClass = pybind11::class_<PyState>;

void DefineRecords(pybind11::module_& module);    ///< layers, elements, functions, variables, measurements
void DefineState(StateClass& cls);                ///< file, text, settings
void DefineMembers(StateClass& cls);              ///< the lists, rays, energy, script
void DefineServices(StateClass& cls);             ///< tables, constants, script, profile
void DefineCurves(pybind11::module_& module);     ///< curves and scans
void DefineFits(pybind11::module_& module);       ///< the program's own optimisers
void DefineObjective(pybind11::module_& module);  ///< the objective of a fit
void DefineProcess(pybind11::module_& module);    ///< threads, build
void DefineMaterials(pybind11::module_& module);  ///< the Kramers-Kronig transform of a table

}  // namespace tolvik::python
