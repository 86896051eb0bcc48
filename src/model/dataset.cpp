// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/dataset.h"

namespace tolvik {

void TranslateDataset(CDataset& dataset) {
  for (double& qz : dataset.dataset_qz) qz += dataset.datasetqztranslation;
  for (auto* curve : {&dataset.dataset_R0, &dataset.dataset_Rp, &dataset.dataset_Rm}) {
    for (double& v : *curve) v = (v + dataset.datasettranslator) * dataset.datasetmultiplicator;
  }
}

}  // namespace tolvik
