// SPDX-License-Identifier: GPL-2.0-or-later
// Members of the boundary records by a path as in C++: "layers[1].layer_d",
// "opticaltables[0].db.rows[3].values[1]".
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "tolvik/state.h"

namespace tolvik::testing {

/// The value of a member: a number, a bool, a text or a list; values that are not finite as "nan", "inf",
/// "-inf". A complex element is a list of two. Throws std::out_of_range for a path without a member.
nlohmann::json GetByPath(CState& record, const std::string& path);
nlohmann::json GetByPath(CDataset& record, const std::string& path);

/// Assigns a member. Throws std::out_of_range for a path without a member and nlohmann's errors for a value
/// of another type.
void SetByPath(CState& record, const std::string& path, const nlohmann::json& value);
void SetByPath(CDataset& record, const std::string& path, const nlohmann::json& value);

}  // namespace tolvik::testing
