// SPDX-License-Identifier: GPL-2.0-or-later
// The numbers of the choices are those of state files and front ends: a change of order breaks both.
#include "tolvik/choices.h"

#include <gtest/gtest.h>

#include <initializer_list>

#include "tolvik/return_code.h"

namespace tolvik {
namespace {

void ExpectCounted(std::initializer_list<std::int32_t> choices) {
  std::int32_t expected = 0;
  for (const std::int32_t choice : choices) EXPECT_EQ(choice, expected++);
}

TEST(Choices, AreCountedFromZero) {
  ExpectCounted({Mode::kMaterial, Mode::kElement});
  ExpectCounted({Precision::kFloat, Precision::kDouble, Precision::kLongDouble, Precision::kMpfr});
  ExpectCounted({Algorithm::kParratt, Algorithm::kMatrixOne, Algorithm::kMatrixTwo});
  ExpectCounted({Scattering::kReflection, Scattering::kTransmission});
  ExpectCounted({MagnetizationMode::kNone, MagnetizationMode::kLayers, MagnetizationMode::kGaussFunctions});
  ExpectCounted({LayerSegmentationMode::kRoughInterfaces, LayerSegmentationMode::kSlices});
  ExpectCounted(
      {SegmentationModel::kProductOfInterfaces, SegmentationModel::kLayerWeights, SegmentationModel::kSteps});
  ExpectCounted({TableKind::kLayer, TableKind::kElement});
  ExpectCounted({MapAxis::kEnergy, MapAxis::kQz});
}

TEST(Choices, OfAFitAreCountedFromZero) {
  ExpectCounted({FitAsymmetry::kReflectivity, FitAsymmetry::kAsymmetry, FitAsymmetry::kBothRays,
                 FitAsymmetry::kEnergyScan, FitAsymmetry::kBothRaysOverEnergy,
                 FitAsymmetry::kAsymmetryOverEnergy});
  ExpectCounted({FitErrorFunction::kLog, FitErrorFunction::kRelativeLog, FitErrorFunction::kScaledLog});
  ExpectCounted({FitAlgorithm::kSimplex, FitAlgorithm::kLevenbergMarquardt, FitAlgorithm::kAnnealing});
  ExpectCounted(
      {FitKind::kThickness,    FitKind::kDelta,      FitKind::kBeta,           FitKind::kSigma,
       FitKind::kDeltaM,       FitKind::kBetaM,      FitKind::kResolution,     FitKind::kMultiplicator,
       FitKind::kQzMovement,   FitKind::kGaussDelta, FitKind::kGaussBeta,      FitKind::kGaussVariance,
       FitKind::kGaussZ,       FitKind::kScript,     FitKind::kElementDensity, FitKind::kElementThickness,
       FitKind::kElementSigma, FitKind::kBetaKK,     FitKind::kDeltaKK,        FitKind::kElementF1,
       FitKind::kElementF2});
}

TEST(ReturnCode, IsCountedFromZero) {
  ExpectCounted({ReturnCode::kDone, ReturnCode::kSuccess, ReturnCode::kWrongDataPoints,
                 ReturnCode::kScriptCompilation, ReturnCode::kScriptExecution, ReturnCode::kUnknownError,
                 ReturnCode::kTablesMissing});
}

}  // namespace
}  // namespace tolvik
