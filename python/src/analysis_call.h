// SPDX-License-Identifier: GPL-2.0-or-later
// Calls into the analysis, whose refusals become the exceptions of the package.
#pragma once

#include "raise.h"
#include "tolvik/analysis/errors.h"

namespace tolvik::python {

/// Returns what work() returns, which runs without the GIL and calls nothing of Python.
template <class Work>
auto CallAnalysis(Work work) {
  try {
    const py::gil_scoped_release release;
    return work();
  } catch (const analysis::DataError& error) {
    Raise("analysis_data", error.what());
  } catch (const analysis::ScriptError& error) {
    Raise("analysis_script", error.what(), error.code);
  } catch (const analysis::TablesError& error) {
    Raise("analysis_tables", error.what());
  } catch (const analysis::CalculationError& error) {
    Raise("analysis_calculation", error.what(), error.code);
  }
}

}  // namespace tolvik::python
