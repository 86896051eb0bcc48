// SPDX-License-Identifier: GPL-2.0-or-later
// The copy of a state on which a calculation works, and the way out of a calculation that failed.
#pragma once

#include <exception>
#include <new>
#include <string>

#include "box.h"
#include "engine/curve/companion.h"
#include "raise.h"
#include "script/host.h"
#include "tolvik/return_code.h"

namespace tolvik::python {

/// A copy for one calculation, brought up to date, without what no calculation reads: measurements and, where
/// optical constants do not come from them, tables. with_tables: they come along in any case. Needs the GIL.
CState WorkingCopy(StateBox& box, bool with_tables = false);

/// How a calculation ended.
struct Outcome {
  std::int32_t code = ReturnCode::kSuccess;
  std::int32_t index = -1;  ///< the point at which it ended, -1 unknown
  double value = 0, width = 0,
         limit = 0;  ///< of a point out of reach: qz, half width of the resolution, 2 k0, Å⁻¹
  std::string exception;
  ScriptOutcome script;  ///< the first failure of the script
};

/// Notes in an outcome how the script of a calculation ended.
class ScriptNotes : public engine::CurveCompanion {
 public:
  explicit ScriptNotes(Outcome& outcome) : outcome_(outcome) {}
  void NoteScript(const ScriptOutcome& script) override {
    if (outcome_.script.code == kScriptReady) outcome_.script = script;
  }
  const engine::PointRules* RulesFor(const CState&) override { return nullptr; }

 private:
  Outcome& outcome_;
};

/// Raises the exception of an outcome that is no success. A fault of the script comes first: it explains the
/// others.
[[noreturn]] void RaiseOutcome(const Outcome& outcome);

/// Calls work(outcome) without the GIL and raises its failure. work calls nothing of Python.
template <class Work>
void RunWithoutGil(Work work) {
  Outcome outcome;
  {
    const py::gil_scoped_release release;
    try {
      work(outcome);
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::length_error&) {
      throw;
    } catch (const std::exception& error) {
      outcome.code = ReturnCode::kUnknownError;
      outcome.exception = error.what();
    }
  }
  if (outcome.code != ReturnCode::kSuccess || outcome.script.code != kScriptReady) {
    RaiseOutcome(outcome);
  }
}

}  // namespace tolvik::python
