// SPDX-License-Identifier: GPL-2.0-or-later
// The failure of a state's script.
#pragma once

#include <string>

#include "engine/curve/companion.h"

namespace tolvik::analysis {

/// Keeps the first failure of the scripts of a calculation.
class ScriptWatch : public engine::CurveCompanion {
 public:
  void NoteScript(const ScriptOutcome& outcome) override {
    if (outcome_.code == kScriptReady) outcome_ = outcome;
  }
  const engine::PointRules* RulesFor(const CState&) override { return nullptr; }

  void Forget() { outcome_.code = kScriptReady; }
  bool HasFault() const { return outcome_.code != kScriptReady; }
  std::int32_t code() const { return outcome_.code; }
  /// One line with the number of the line of the script.
  std::string Text() const;
  /// Throws ScriptError if there was a failure.
  void ThrowFault() const;

 private:
  ScriptOutcome outcome_;
};

}  // namespace tolvik::analysis
