// SPDX-License-Identifier: GPL-2.0-or-later
// The parameters of a request.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tolvik {

/// The point at which the page evaluates the model, and the tolerance of the tensor classes.
struct PageQuery {
  double qz = 0.1;     ///< Å⁻¹
  double energy = 0;   ///< eV
  double epsilon = 0;  ///< tolerance of the tensor classes
};

/// The pieces between "?", "&" and the next blank of a query. Text before the first "?" or "&" is dropped,
/// nothing is decoded, and a later "?" ends a piece and stays at its end. target: the request after
/// "GET /".
std::vector<std::string> SplitQuery(std::string_view target);

/// Sets the values that a request gives with "qz=", "epsilon=" and "energy="; the others do not change, and
/// none changes when the request is not a GET. Text that is not a number becomes 0, an empty text changes
/// nothing.
void ReadQuery(std::string_view request, PageQuery& query);

}  // namespace tolvik
