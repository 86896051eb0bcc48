// SPDX-License-Identifier: GPL-2.0-or-later
// The current fit and the current evolution of a front end.
#pragma once

#include "fit/evolution.h"
#include "fit/multi_fit.h"

namespace tolvik {

/// Null until FitNewDLL; a new fit replaces the pointer and the old object stays, since a front end may hold
/// pointers into it.
extern CMultiFit* frontendfit;
/// Null until EvolutionNewDLL; likewise.
extern CEvolution* frontendevolution;

}  // namespace tolvik
