// SPDX-License-Identifier: GPL-2.0-or-later
// The names of the fit variables.
#pragma once

#include <array>

#include "tolvik/choices.h"

namespace tolvik {

/// Name of each kind, by FitKind. State files contain those of 0 to 13 as comments.
inline constexpr std::array<const char*, 21> kFitKindNames = {
    "thickness",   "delta",       "beta",        "sigma",      "deltam",     "betam",   "resolution",
    "meas. mult.", "qz movement", "gauss delta", "gauss beta", "gauss var.", "gauss z", "script",
    "el density",  "el th.",      "el sigma",    "beta KK",    "delta KK",   "el f1",   "el f2",
};

}  // namespace tolvik
