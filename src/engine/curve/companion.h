// SPDX-License-Identifier: GPL-2.0-or-later
// The hooks of a caller into a calculation.
#pragma once

#include "engine/curve/point_rules.h"
#include "optics/layer_constants.h"
#include "script/host.h"
#include "tolvik/state.h"

namespace tolvik::engine {

/// Called during a calculation; in a scan once for every point.
class CurveCompanion {
 public:
  virtual ~CurveCompanion() = default;

  /// Called with the outcome of the state's script. Otherwise scripts fail silently, and the calculation
  /// continues.
  virtual void NoteScript(const ScriptOutcome& outcome) = 0;

  /// The samples of the resolution, called with the final state, after its tables and its script: samples may
  /// follow a critical edge. As many rules as the curve has points, unchanged until the next call; null for
  /// those of state.resolution.
  virtual const PointRules* RulesFor(const CState& state) = 0;
};

/// Runs a script and reports to the companion, which may be null.
inline void RunScript(ScriptSession& script, CurveCompanion* companion) {
  script.Run();
  if (companion != nullptr) companion->NoteScript(script.Outcome());
}

/// Updates a state for a curve: optical tables, then the script.
inline void BringUpToDate(CState& state, CurveCompanion* companion) {
  if (state.ocautomatic != 0) SetLayerConstantsForEnergy(state);
  ScriptSession script(state);
  RunScript(script, companion);
}

}  // namespace tolvik::engine
