// SPDX-License-Identifier: GPL-2.0-or-later
// The whole project: sample, scattering setup, calculation and fit options, measurements, scripts.
//
// The order and the types of all members are the contract with a front end; model/record_layout.cpp pins
// them. A member that the state file stores has its key as its name. choices.h names the numbers of choices.
// Lengths in Å, qz in Å⁻¹, energies in eV.
#pragma once

#include <cstdint>

#include "tolvik/array.h"
#include "tolvik/choices.h"
#include "tolvik/dataset.h"
#include "tolvik/layer.h"
#include "tolvik/tables.h"

namespace tolvik {

/// One number of the model that a fit varies.
struct CFitVariable {
  double fit_value = 0;
  double fit_delta = 0;  ///< step; 0.1 in a variable read from a file
  double fit_upper_boundary = 1e10;
  double fit_lower_boundary = -1e10;
  std::int32_t fit_id = FitKind::kThickness;  ///< kind of the variable
  std::int32_t fit_additional_id = -1;        ///< index inside that kind: layer, gauss function, slice, row
  std::int32_t fit_element_id = -1;           ///< index of the element layer
  std::int32_t fit_dataset1 = -1;             ///< datasets that the variable is tied to; -1 none
  std::int32_t fit_dataset2 = -1;
  double fit_sigma = 0;  ///< standard deviation after a Levenberg-Marquardt step
};

/// A scan over two parameters.
struct CMapRange {
  std::int32_t id1 = MapAxis::kEnergy;  ///< kind of the first axis
  std::int32_t id2 = MapAxis::kQz;      ///< kind of the second axis
  double min1 = 0, max1 = 0;
  double min2 = 0, max2 = 0;
  std::int32_t n1 = 1;
  std::int32_t n2 = 1;
  std::int32_t keeplambda = 0;  ///< non-zero: a scan calculates with the state's wavelength, not the point's
};

/// A project. A fresh one holds two default layers: a substrate and an ambient.
/// Copies are deep, so a thread or a fit works on a private one.
struct CState {
  CState() {
    layers.Append(CLayer());
    layers.Append(CLayer());
  }

  CArray<CLayer> layers;  ///< index 0 the substrate, the last index the ambient
  std::int32_t mode = Mode::kMaterial;
  CArray<CElementLayer> elementlayers;
  std::int32_t currentelement = -1;
  double lambda = 0;      ///< wavelength, Å
  double resolution = 0;  ///< width of the qz resolution, two standard deviations, Å⁻¹
  double fitqzmin = 0;
  double fitqzmax = 10.0;
  double fittemp = 0;
  double fitdtemp = 0;
  double qzmax = 0;
  std::int32_t numberofpoints = 200;
  std::int32_t averaging = 0;
  double engscanqz = 0;
  double engscanmin = 0;
  double engscanmax = 0;
  double minlayerthickness = 0;
  double maxlayerthickness = 0;
  double gradientscale = 0;
  std::int32_t segmentationmodel = SegmentationModel::kSteps;
  std::int32_t layersegmentationmode = LayerSegmentationMode::kRoughInterfaces;
  std::int32_t fitasymmetry = FitAsymmetry::kReflectivity;
  std::int32_t fiterrorfunction = FitErrorFunction::kLog;
  double fitpenalty = 0;  ///< not saved, cleared at every load
  std::int32_t precision = Precision::kDouble;
  bool fitresolution = false;
  bool fitmeasmult = false;
  bool fitdeltaqz = false;
  bool gausscoupling = false;
  bool usemeasurementqz = false;
  bool fastresolution = false;
  std::int32_t showangle = 0;  ///< non-zero: the front end shows the angle, else qz
  std::int32_t fitalgorithm = FitAlgorithm::kSimplex;
  std::int32_t algorithm = Algorithm::kParratt;
  std::int32_t scattering = Scattering::kReflection;
  std::int32_t unused = 0;  ///< keeps the layout
  std::int32_t magnetizationmode = MagnetizationMode::kNone;
  double maggamma = 0;  ///< azimuth of the magnetisation, degrees
  double magphi = 0;    ///< polar angle of the magnetisation against z, degrees
  double ray1sigmare = 1, ray1sigmaim = 0;
  double ray1pire = 0, ray1piim = 0;
  double ray2sigmare = 0, ray2sigmaim = 0;
  double ray2pire = 1, ray2piim = 0;
  std::int32_t activedatasetindex = 0;
  std::int32_t pendinggauss = 0;  ///< scratch of the state reader
  std::int32_t evo_population = 50;
  double evo_elite = 0;
  double evo_parents = 0;
  double evo_range = 0;
  double evo_mixing = 0;
  std::uint32_t evo_random = 0;
  double evo_probability = 0;
  bool evo_takeeliteasparents = false;
  bool evo_evorestrictfitparameters = false;
  double epsilon = 5e-05;  ///< tolerance of the tensor classes; not saved
  CMapRange maprange;      ///< not saved
  CArray<CFitVariable> fitvariables;
  CArray<CDataset> datasets;
  CArray<CGaussFunction> gaussfunctions;
  std::int32_t ocautomatic = 0;         ///< non-zero: optical constants come from the tables
  CArray<COpticalTable> opticaltables;  ///< not saved
  std::int32_t mulqz4 = 0;              ///< not saved
  std::int32_t polcorrection = 0;       ///< not saved
  std::int32_t kktableindex = -1;       ///< not saved
  double kkoffset = 0;                  ///< not saved
  CColumnTable kktable{2};              ///< not saved
  std::int32_t disablescript = 0;
  CArray<double> scriptparameters;
  CArray<CCharArray> scriptlines;
  CArray<CCharArray> defaultscriptlines;
};

}  // namespace tolvik
