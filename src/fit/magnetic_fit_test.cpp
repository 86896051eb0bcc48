// SPDX-License-Identifier: GPL-2.0-or-later
// A fit of the asymmetry of circular light at an absorption edge finds the depth profile of the
// magnetisation.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "fit/multi_fit.h"
#include "support/film.h"

namespace tolvik {
namespace {

constexpr double kEnergy = 708;  // eV, the L3 edge of iron

// An iron-like film of 60 Å on silicon whose magnetisation dips around a depth: a gaussian of centre z and
// width w scales the magnetic constants of the slices by 1 + a G.
CState MakeMagneticFilm(double z, double width, double amplitude) {
  CState state;
  state.disablescript = 1;
  state.lambda = 12398.326 / kEnergy;
  state.layers.Assign(3, CLayer());
  state.layers[0].layer_delta = 1.5e-3;
  state.layers[0].layer_beta = 2e-4;
  state.layers[0].layer_sigma = 3;
  CLayer& film = state.layers[1];
  film.layer_d = 60;
  film.layer_delta = 2e-3;
  film.layer_beta = 3e-3;
  film.layer_ddelta = 4e-4;
  film.layer_dbeta = 6e-4;
  film.layer_sigma = 4;
  state.magnetizationmode = MagnetizationMode::kGaussFunctions;
  state.layersegmentationmode = LayerSegmentationMode::kSlices;
  state.minlayerthickness = 3;  // with a gradient scale of 0, the thickness of all slices
  CGaussFunction dip;
  dip.gauss_z = z;
  dip.gauss_variance = width;
  dip.gauss_delta = dip.gauss_beta = amplitude;
  state.gaussfunctions.Append(dip);
  return state;
}

CDataset MakeCircularGrid() {
  CDataset dataset;
  dataset.datasetenergy = kEnergy;
  dataset.datasetactive = 1;
  const double half = std::sqrt(0.5);
  dataset.datasetray1sigmare = half;
  dataset.datasetray1piim = half;
  dataset.datasetray2sigmare = half;
  dataset.datasetray2pire = 0;
  dataset.datasetray2piim = -half;
  for (int i = 0; i < 40; ++i) dataset.dataset_qz.Append(0.02 + 0.012 * i);
  return dataset;
}

TEST(MagneticFit, FindsTheDipOfAMagneticProfile) {
  const double truth[] = {25, 10, -0.6, -0.6};
  CState state = MakeMagneticFilm(truth[0], truth[1], truth[2]);
  CDataset measured = MakeCircularGrid();
  state.datasets.Append(measured);
  state.fitasymmetry = FitAsymmetry::kAsymmetry;
  {
    // The objective without a measurement calculates the curve under the conditions of the dataset.
    CMultiFit simulation(state);
    simulation.CalcError(simulation.fitvariables);
    measured.dataset_A = simulation.solution.dataset_A;
  }
  std::mt19937 generator(12);
  double largest = 0;
  for (double& a : measured.dataset_A) {
    largest = std::max(largest, std::abs(a));
    a += 0.002 * (static_cast<double>(generator()) / 4294967296.0 - 0.5);
  }
  ASSERT_GT(largest, 0.1);
  state.datasets[0] = measured;
  const std::int32_t ids[] = {12, 11, 9, 10};
  for (std::size_t i = 0; i < 4; ++i) {
    testing::Vary(state, ids[i], 0, 1.1 * truth[i], 0.1 * truth[i], truth[i] - std::abs(truth[i]),
                  truth[i] + std::abs(truth[i]));
  }
  CMultiFit fit(state);
  fit.RestartFit();
  for (int i = 0; i < 250; ++i) fit.SimplexStep();
  EXPECT_NEAR(fit.parameters[0], truth[0], 0.5);
  EXPECT_NEAR(fit.parameters[1], truth[1], 0.5);
  EXPECT_NEAR(fit.parameters[2], truth[2], 0.03);
  EXPECT_NEAR(fit.parameters[3], truth[3], 0.03);
  // Only the noise is left: uniform noise of 0.002 has the variance 0.002² / 12.
  EXPECT_NEAR(fit.lasterror / (4e-6 / 12), 1, 0.5);
  EXPECT_EQ(fit.state.gaussfunctions[0].gauss_z, fit.parameters[0]);
}

}  // namespace
}  // namespace tolvik
