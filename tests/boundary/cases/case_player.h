// SPDX-License-Identifier: GPL-2.0-or-later
// Plays the steps of one case against the exported functions.
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "boundary/cases/comparison.h"
#include "tolvik/state.h"

namespace tolvik::testing {

/// One case: calls in order, each with its expected results.
class CasePlayer {
 public:
  explicit CasePlayer(const nlohmann::json& plan);

  /// Writes the files of the case into the working directory and plays its steps. Returns the first
  /// difference, with the step and the value, or an empty text.
  std::optional<std::string> Play();

 private:
  using Json = nlohmann::json;

  /// Makes the call and returns all results that a step may expect, by the names of the expectation.
  Json Call(const Json& step);
  Json CallOnState(const std::string& call, const Json& step, CState& state);
  Json CallFit(const std::string& call, const Json& step);
  Json CallEvolution(const std::string& call, CState& state);
  Json CallCalculation(const std::string& call, const Json& step, CState& state);
  Json SendRequest(const Json& step);
  std::optional<std::string> Compare(const Json& expect, const Json& found) const;

  const Json& plan_;
  Tolerance tolerance_;
  std::map<std::string, CState> states_;
  std::map<std::string, CSolution> solutions_;
};

}  // namespace tolvik::testing
