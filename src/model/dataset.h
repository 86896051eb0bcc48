// SPDX-License-Identifier: GPL-2.0-or-later
// Brings a measurement to the grid and the scale of a calculation.
#pragma once

#include "tolvik/dataset.h"

namespace tolvik {

/// Adds datasetqztranslation to every dataset_qz and replaces each value v of dataset_R0, dataset_Rp and
/// dataset_Rm by (v + datasettranslator) * datasetmultiplicator. dataset_A and dataset_eng stay.
void TranslateDataset(CDataset& dataset);

}  // namespace tolvik
