// SPDX-License-Identifier: GPL-2.0-or-later
// Names for the numbers of settings that are a choice.
//
// Each struct has the name of its member in CamelCase: state.algorithm = Algorithm::kMatrixTwo. The members
// stay std::int32_t, since a state file or a front end may put any number there; the comment of a struct
// gives the meaning of numbers without a name.
#pragma once

#include <cstdint>

namespace tolvik {

/// CState::mode: which list describes the sample.
struct Mode {
  enum Value : std::int32_t {
    kMaterial = 0,  ///< layers, with optical constants
    kElement = 1,   ///< elementlayers, with densities of chemical elements
  };
};

/// CState::precision: the number type of a calculation; any other number is double.
struct Precision {
  enum Value : std::int32_t {
    kFloat = 0,
    kDouble = 1,
    kLongDouble = 2,
    kMpfr = 3,  ///< MPFR with a significand of 200 bits
  };
};

/// CState::algorithm: how the intensity at an angle is calculated; any other number calculates none.
struct Algorithm {
  enum Value : std::int32_t {
    kParratt = 0,    ///< Parratt recursion
    kMatrixOne = 1,  ///< 4×4 matrices of full dielectric tensors
    kMatrixTwo = 2,  ///< 4×4 matrices to first order in the magnetic strength
  };
};

/// CState::scattering: the intensity that the matrix algorithms return; non-zero is transmission.
struct Scattering {
  enum Value : std::int32_t {
    kReflection = 0,
    kTransmission = 1,
  };
};

/// CState::magnetizationmode; any number but 0 turns on the magnetic terms.
struct MagnetizationMode {
  enum Value : std::int32_t {
    kNone = 0,
    kLayers = 1,          ///< layer_ddelta and layer_dbeta of the layers
    kGaussFunctions = 2,  ///< gaussfunctions too, where the stack is sliced
  };
};

/// CState::layersegmentationmode; any number but 0 slices the stack.
struct LayerSegmentationMode {
  enum Value : std::int32_t {
    kRoughInterfaces = 0,  ///< sharp interfaces with roughness factors
    kSlices = 1,           ///< a depth profile of thin slices
  };
};

/// CState::segmentationmodel: how the constants at a depth follow from those of the layers; any other number
/// is kSteps.
struct SegmentationModel {
  enum Value : std::int32_t {
    kProductOfInterfaces = 0,  ///< weights of the layers: products over all interfaces, normalised
    kLayerWeights = 1,         ///< weights of the layers: their own two interfaces, normalised
    kSteps = 2,                ///< sum of the steps at all interfaces
  };
};

/// CState::fitasymmetry: which curves a fit calculates and compares; any other number compares nothing.
struct FitAsymmetry {
  enum Value : std::int32_t {
    kReflectivity = 0,
    kAsymmetry = 1,
    kBothRays = 2,
    kEnergyScan = 3,
    kBothRaysOverEnergy = 4,
    kAsymmetryOverEnergy = 5,
  };
};

/// CState::fiterrorfunction: the distance of two reflectivities in a fit; any other number is kLog.
struct FitErrorFunction {
  enum Value : std::int32_t {
    kLog = 0,          ///< mean square of the difference of the logarithms
    kRelativeLog = 1,  ///< the same relative to the squares of the logarithms
    kScaledLog = 2,    ///< kLog with a multiplicator that is adjusted to the curve
  };
};

/// CState::fitalgorithm: the step of a fit; any other number does nothing.
struct FitAlgorithm {
  enum Value : std::int32_t {
    kSimplex = 0,             ///< one step of the downhill simplex
    kLevenbergMarquardt = 1,  ///< a whole Levenberg-Marquardt run
    kAnnealing = 2,           ///< one step of the simplex with thermal noise
  };
};

/// COpticalTable::kind: the record that names the files.
struct TableKind {
  enum Value : std::int32_t {
    kLayer = 0,    ///< layer_db of a layer: .db, .m and .e
    kElement = 1,  ///< element of an element layer: .ff
  };
};

/// CMapRange::id1 and id2: the quantity on an axis of a map.
struct MapAxis {
  enum Value : std::int32_t {
    kEnergy = 0,
    kQz = 1,
  };
};

/// CFitVariable::fit_id: the kind of number that a fit variable changes; any other number changes nothing.
struct FitKind {
  enum Value : std::int32_t {
    kThickness,
    kDelta,
    kBeta,
    kSigma,
    kDeltaM,
    kBetaM,
    kResolution,
    kMultiplicator,
    kQzMovement,
    kGaussDelta,
    kGaussBeta,
    kGaussVariance,
    kGaussZ,
    kScript,
    kElementDensity,
    kElementThickness,
    kElementSigma,
    kBetaKK,
    kDeltaKK,
    kElementF1,
    kElementF2,
  };
};

}  // namespace tolvik
