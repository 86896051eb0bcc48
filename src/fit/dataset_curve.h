// SPDX-License-Identifier: GPL-2.0-or-later
// The curve of one dataset under its own conditions: what every fit compares with the measurement.
#pragma once

#include "engine/curve/companion.h"
#include "tolvik/state.h"

namespace tolvik {

/// Options of CalcDatasetCurve. The defaults are those of the fits of the program.
struct CurveSettings {
  engine::CurveCompanion* companion =
      nullptr;              ///< samples of each point; null: those of the dataset's resolution
  double untouched = 1.0;   ///< value of a point that is not calculated
  bool one_thread = false;  ///< an energy scan stays in the caller's thread
};

/// Brings the state to the conditions of its dataset `index`, which exists: both rays, resolution and
/// wavelength; the dataset becomes the active one.
void TakeConditions(CState& state, std::int32_t index);

/// Calculates the curve of kind state.fitasymmetry at the points of a dataset, shifted by its
/// datasetqztranslation, for a state that has its conditions. solution becomes a copy of measured with the
/// calculated columns. Returns the code of the calculation (model/status.h), kSuccess for an energy scan in
/// threads; throws what a calculation throws.
std::int32_t CalcDatasetCurve(CState& state, CSolution& solution, const CDataset& measured,
                              const CurveSettings& settings);

}  // namespace tolvik
