// SPDX-License-Identifier: GPL-2.0-or-later
// Brings a measurement to the grid and the scale of a calculation.
#pragma once

#include "tolvik/dataset.h"

namespace tolvik {

/// Adds datasetqztranslation to every dataset_qz: the grid of a calculation.
void TranslateGrid(CDataset& dataset);

/// A measured value on the scale of the calculation: (value + datasettranslator) * datasetmultiplicator.
inline double TranslateValue(const CDataset& dataset, double value) {
  return (value + dataset.datasettranslator) * dataset.datasetmultiplicator;
}

/// TranslateGrid, and TranslateValue on all values of dataset_R0, dataset_Rp and dataset_Rm. dataset_A and
/// dataset_eng stay.
void TranslateDataset(CDataset& dataset);

}  // namespace tolvik
