// SPDX-License-Identifier: GPL-2.0-or-later
// What a request asks the page to show.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tolvik {

/// The point at which the page looks at the model, and the tolerance of the tensor classes.
struct PageQuery {
  double qz = 0.1;     ///< Å⁻¹
  double energy = 0;   ///< eV
  double epsilon = 0;  ///< tolerance of the tensor classes
};

/// The pieces between "?", "&" and the next blank of a query. What stands before the first "?" or "&" is
/// dropped, nothing is decoded, and a later "?" ends a piece and stays at its end. target: the request behind
/// "GET /".
std::vector<std::string> SplitQuery(std::string_view target);

/// Sets what a request names with "qz=", "epsilon=" and "energy="; all else keeps its value, and so does
/// every value when the request is not a GET. A value that is no number becomes 0, an empty one stays.
void ReadQuery(std::string_view request, PageQuery& query);

}  // namespace tolvik
