// SPDX-License-Identifier: GPL-2.0-or-later
// One curve over qz: a measurement or, with the same layout, a calculated result.
#pragma once

#include <cstdint>

#include "tolvik/array.h"

namespace tolvik {

/// A measurement and the scale of its numbers: a measured value is compared as
/// (value + translator) * multiplicator at qz + qztranslation. A curve array is empty when that curve was not
/// measured, else as long as dataset_qz.
struct CDataset {
  double datasetenergy = 0;      ///< photon energy, eV
  double datasetresolution = 0;  ///< width of the qz resolution, two standard deviations, Å⁻¹
  double datasetmultiplicator = 1.0;
  double datasettranslator = 0;
  double datasetqztranslation = 0;  ///< Å⁻¹
  double datasetray1sigmare = 1, datasetray1sigmaim = 0;
  double datasetray1pire = 0, datasetray1piim = 0;
  double datasetray2sigmare = 0, datasetray2sigmaim = 0;
  double datasetray2pire = 1, datasetray2piim = 0;
  CArray<double> dataset_qz;   ///< abscissa, Å⁻¹
  CArray<double> dataset_A;    ///< asymmetry (Rp - Rm) / (Rp + Rm)
  CArray<double> dataset_R0;   ///< reflectivity
  CArray<double> dataset_Rp;   ///< reflectivity of the first ray
  CArray<double> dataset_Rm;   ///< reflectivity of the second ray
  CArray<double> dataset_eng;  ///< energy of each point, eV
  CCharArray datasettitle;
  CCharArray datasetcomment;
  CCharArray datasetfile;
  std::int32_t datasetactive = 0;  ///< non-zero: takes part in a fit over all datasets
};

/// The result record of a calculation. Same layout as a measurement, so both pass through the same routines.
using CSolution = CDataset;

}  // namespace tolvik
