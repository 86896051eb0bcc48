// SPDX-License-Identifier: GPL-2.0-or-later
// A small project to fit: one film on a substrate with a calculated measurement.
#pragma once

#include <initializer_list>

#include "support/fit_variable.h"
#include "support/states.h"
#include "tolvik/tolvik.h"

namespace tolvik::testing {

inline constexpr double kFilmThickness = 120;  // Å
inline constexpr double kFilmRoughness = 5;

/// The film at 8000 eV with a measurement of that many points, calculated from the film itself; the fit
/// variables are thickness and roughness of the film, a few percent off.
inline CState FilmState(int points = 40) {
  CState state = MakeState({{0, 7.58e-6, 1.77e-7, 3}, {kFilmThickness, 2.25e-5, 2.9e-6, kFilmRoughness}, {}});
  state.lambda = 12398.326 / 8000;
  state.disablescript = 1;
  state.fitqzmin = 0.02;
  state.fitqzmax = 1;
  CDataset measured = MakeGrid(0.02, 0.3, points);
  CalcReflectivityDLL(&measured, &state);
  measured.dataset_Rp.Clear();
  measured.datasetenergy = 8000;
  measured.datasetactive = 1;
  measured.datasettitle.Set("film");
  CDataset empty;
  empty.datasettitle.Set("Empty");
  state.datasets.Append(empty);
  state.datasets.Append(measured);
  state.activedatasetindex = 1;
  state.fitvariables.Append(Vary(FitKind::kThickness, 1, 1.04 * kFilmThickness, 3));
  state.fitvariables.Append(Vary(FitKind::kSigma, 1, 1.1 * kFilmRoughness, 0.6));
  return state;
}

}  // namespace tolvik::testing
