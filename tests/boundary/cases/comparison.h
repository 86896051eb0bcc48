// SPDX-License-Identifier: GPL-2.0-or-later
// Expected values against values found.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace tolvik::testing {

/// Numbers agree when |a - b| <= abs + rel max(|a|, |b|).
struct Tolerance {
  double rel = 0;
  double abs = 0;
};

/// The first difference, with its place, or an empty text. Lists agree by length and element; the texts
/// "nan", "inf" and
/// "-inf" mean such numbers, and the sign of a NaN is ignored.
std::optional<std::string> FindDifference(const nlohmann::json& want, const nlohmann::json& got,
                                          Tolerance tolerance, const std::string& place);

/// The same for two pages: the texts between the numbers are exact, except for the layout of the text before
/// the head; "-nan" counts as "nan" and "-0" as "0".
std::optional<std::string> FindPageDifference(const std::string& want, const std::string& got,
                                              Tolerance tolerance);

}  // namespace tolvik::testing
