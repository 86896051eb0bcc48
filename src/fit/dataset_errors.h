// SPDX-License-Identifier: GPL-2.0-or-later
// The distance of a model from all its active measurements, which every search minimises.
#pragma once

#include "tolvik/state.h"

namespace tolvik {

/// How measured values map onto the model: (value + translator) * multiplicator.
struct DatasetScale {
  double multiplicator = 1.0;
  double translator = 0.0;
};

/// Error of the active dataset of a state, given its curve: by fitasymmetry, fiterrorfunction and the window
/// of the state. residuals: written by point index; an empty vector stays empty. measured: the stored dataset
/// or its moving average. CalcScaledLogError leaves its multiplicator in the active dataset.
double CalcDatasetError(CState& state, const CSolution& solution, CArray<double>& residuals,
                        const CDataset& measured, const DatasetScale& scale);

/// Sum over the active datasets of the error of each, by the state's fitasymmetry and fiterrorfunction; each
/// dataset adds its own mean with factor 1. Calculates every curve at the measured points, shifted by
/// datasetqztranslation. solution: left as the curve of the last active dataset. residuals: written by point
/// index from 0 for every dataset, so a later one overwrites an earlier one; an empty vector stays empty. The
/// state keeps the polarisation, resolution, wavelength and activedatasetindex of the last active dataset,
/// and the datasetmultiplicator that CalcScaledLogError finds. Throws the exceptions of a calculation.
double SumDatasetErrors(CState& state, CSolution& solution, CArray<double>& residuals);

/// Replaces the measured columns by their means over the points i - width to i + width. Points i < width have
/// no window and become NaN, while the upper end keeps shorter windows. Columns of fewer than dataset_qz.size
/// points are averaged up to their end.
void AverageDataset(CDataset& dataset, std::int32_t width);

}  // namespace tolvik
