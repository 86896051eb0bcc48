// SPDX-License-Identifier: GPL-2.0-or-later
// The page that checks a model at one point: tensor and normal wavevectors of each layer.
#pragma once

#include <string>

#include "tolvik/state.h"

namespace tolvik {

/// Writes the page for one qz in Å⁻¹ at the energy and the tolerance of the state into out, as XHTML with
/// MathML. With ocautomatic the optical constants come from the tables; changes by them or by the state's
/// script stay in the state. No text is escaped. Numbers that are not finite are written as they are.
void BuildConsistencyPage(CState& state, std::string& out, double qz);

}  // namespace tolvik
