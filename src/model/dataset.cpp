// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/dataset.h"

namespace tolvik {

void TranslateGrid(CDataset& dataset) {
  for (double& qz : dataset.dataset_qz) qz += dataset.datasetqztranslation;
}

void TranslateDataset(CDataset& dataset) {
  TranslateGrid(dataset);
  for (auto* curve : {&dataset.dataset_R0, &dataset.dataset_Rp, &dataset.dataset_Rm}) {
    for (double& v : *curve) v = TranslateValue(dataset, v);
  }
}

}  // namespace tolvik
