// SPDX-License-Identifier: GPL-2.0-or-later
#include "tolvik/analysis/measurement.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/film.h"
#include "tolvik/analysis/errors.h"
#include "tolvik/analysis/parameters.h"

namespace tolvik::analysis {
namespace {

TEST(Footprint, ShareOfABox) {
  EXPECT_NEAR(FootprintShare(BeamShape::kBox, 0.1, 20, 0.001), 0.2, 1e-15);
  EXPECT_EQ(FootprintShare(BeamShape::kBox, 0.1, 20, 0.01), 1);
  EXPECT_EQ(FootprintShare(BeamShape::kBox, 0.1, 20, -0.01), 0);
  EXPECT_EQ(FootprintShare(BeamShape::kNone, 0.1, 20, 0.001), 1);
}

// The sample covers ± L sin θ / 2 of the beam: at L sin θ = 2 sigma that is ± 1 sigma, 68.27 %.
TEST(Footprint, ShareOfAGaussian) {
  EXPECT_NEAR(FootprintShare(BeamShape::kGaussian, 0.1, 20, 0.01), 0.6826895, 1e-7);
}

TEST(Measurement, TakesADatasetWithItsConditions) {
  CState state = testing::MakeFilm();
  testing::Measure(state, 10, 0.1, 1);
  CDataset& dataset = state.datasets[0];
  dataset.datasetresolution = 2e-3;
  dataset.datasetmultiplicator = 3;
  dataset.datasetqztranslation = 1e-4;
  dataset.datasetray2piim = 0.5;
  dataset.datasettitle = "a film";
  const std::vector<Measurement> found = ActiveDatasets(state);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].kind, MeasurementKind::kReflectivity);
  EXPECT_EQ(found[0].size(), 10);
  EXPECT_EQ(found[0].R[3], dataset.dataset_R0[3]);
  EXPECT_EQ(found[0].energy, 8000);
  EXPECT_EQ(found[0].resolution, 2e-3);
  EXPECT_EQ(found[0].multiplicator, 3);
  EXPECT_EQ(found[0].q_shift, 1e-4);
  EXPECT_EQ((*found[0].rays)[7], 0.5);
  EXPECT_EQ(found[0].dataset, 0);
  EXPECT_EQ(found[0].name, "a film");
  dataset.datasetactive = 0;
  EXPECT_TRUE(ActiveDatasets(state).empty());
  state.fitasymmetry = 9;
  EXPECT_THROW(FromDataset(state, 0), DataError);
}

TEST(Parameters, HaveNamesForPeople) {
  const auto name = [](std::int32_t kind, std::int32_t index, std::int32_t element) {
    CFitVariable variable;
    variable.fit_id = kind;
    variable.fit_additional_id = index;
    variable.fit_element_id = element;
    return NameOfVariable(variable);
  };
  EXPECT_EQ(name(FitKind::kThickness, 2, -1), "layer 2 thickness");
  EXPECT_EQ(name(FitKind::kSigma, 0, -1), "layer 0 roughness");
  EXPECT_EQ(name(FitKind::kScript, 3, -1), "script parameter 3");
  EXPECT_EQ(name(FitKind::kElementSigma, 1, 0), "element 0 slice 1 roughness");
  EXPECT_EQ(name(FitKind::kElementF2, -1, 2), "element 2 f2");
  EXPECT_EQ(name(99, 0, 0), "unknown kind 99");
}

TEST(Parameters, OfOneNameGetNumbers) {
  CState state = testing::MakeFilm();
  testing::Vary(state, FitKind::kThickness, 1, 60, 1);
  testing::Vary(state, FitKind::kThickness, 1, 60, 1);
  std::vector<std::string> warnings;
  const std::vector<Parameter> list = CollectParameters(state, {}, warnings);
  EXPECT_EQ(list[0].name, "layer 1 thickness (variable 0)");
  EXPECT_EQ(list[1].name, "layer 1 thickness (variable 1)");
  EXPECT_EQ(list[0].bounds.upper, INFINITY) << "1e10 stands for none";
}

}  // namespace
}  // namespace tolvik::analysis
