// SPDX-License-Identifier: GPL-2.0-or-later
// A fit of the film: thickness, delta and roughness of its lowest layer against its own curve, from 2 %
// aside.
#pragma once

#include "bench/film.h"
#include "fit/multi_fit.h"
#include "tolvik/tolvik.h"

namespace tolvik::bench {

/// At this energy, eV, the first point is out of reach: that stops the curve at once, while copies, profile
/// and error function stay.
inline constexpr double kUnreachableEnergy = 1;

inline CState MakeFilmFit(double energy = kFilmEnergy) {
  CState state = MakeFilm();
  CDataset dataset;
  dataset.datasetenergy = energy;
  dataset.datasetresolution = state.resolution;
  dataset.datasetactive = 1;
  dataset.dataset_qz = FilmPoints();
  CSolution curve = dataset;
  CalcReflectivityDLL(&curve, &state);
  dataset.dataset_R0 = curve.dataset_R0;
  state.datasets.Append(dataset);
  const CLayer& layer = state.layers[1];
  const std::int32_t ids[] = {0, 1, 3};
  const double values[] = {layer.layer_d, layer.layer_delta, layer.layer_sigma};
  for (int k = 0; k < 3; ++k) {
    CFitVariable variable;
    variable.fit_id = ids[k];
    variable.fit_additional_id = 1;
    variable.fit_value = 1.02 * values[k];
    variable.fit_delta = 0.02 * values[k];
    variable.fit_lower_boundary = 0.5 * values[k];
    variable.fit_upper_boundary = 2 * values[k];
    state.fitvariables.Append(variable);
  }
  return state;
}

}  // namespace tolvik::bench
