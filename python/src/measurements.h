// SPDX-License-Identifier: GPL-2.0-or-later
// A measurement from Python.
#pragma once

#include <pybind11/pybind11.h>

#include "tolvik/analysis/measurement.h"
#include "tolvik/state.h"

namespace tolvik::python {

/// The measurement of a dictionary: "dataset", the index of a dataset of the state to start from (-1 for
/// none), and members of analysis::Measurement by their names, of which only those given are taken. "kind" is
/// its number.
analysis::Measurement TakeMeasurement(const pybind11::dict& given, const CState& state);

}  // namespace tolvik::python
