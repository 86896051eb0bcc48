// SPDX-License-Identifier: GPL-2.0-or-later
// Exact derivatives of an objective against central differences of the whole.
#include <gtest/gtest.h>

#include <cmath>

#include "support/measured_film.h"
#include "tolvik/analysis/objective.h"

namespace tolvik::analysis {
namespace {

using testing::MakeFreeFilm;
using testing::MakeMeasurement;

std::vector<double> Widths(const Measurement& measurement, double sigma) {
  return std::vector<double>(measurement.q.size(), sigma);
}

// Compares both Jacobians; tolerance relative to the largest entry of a column.
void ExpectExact(const CState& state, const std::vector<Measurement>& measurements, ObjectiveOptions options,
                 double tolerance, std::vector<double> x = {}) {
  Objective exact(state, measurements, options);
  options.exact = false;
  Objective plain(state, measurements, options);
  if (x.empty()) x = exact.Start();
  const Derivatives a = exact.DerivativesAt(x), b = plain.DerivativesAt(x);
  for (std::size_t i = 0; i < measurements.size(); ++i) {
    EXPECT_TRUE(a.exact[i]) << i;
    EXPECT_FALSE(b.exact[i]) << i;
  }
  for (std::size_t i = 0; i < a.residuals.size(); ++i) {
    EXPECT_NEAR(a.residuals[i], b.residuals[i], 1e-9 * (1 + std::abs(b.residuals[i])));
  }
  for (std::size_t k = 0; k < x.size(); ++k) {
    double largest = 0;
    for (std::size_t i = 0; i < b.residuals.size(); ++i)
      largest = std::max(largest, std::abs(b.jacobian(i, k)));
    EXPECT_GT(largest, 0) << exact.parameters()[k].name;
    for (std::size_t i = 0; i < b.residuals.size(); ++i) {
      EXPECT_NEAR(a.jacobian(i, k), b.jacobian(i, k), tolerance * largest)
          << exact.parameters()[k].name << ", residual " << i;
    }
  }
}

Measurement WithEverythingFree(const CState& state) {
  Measurement measurement = MakeMeasurement(state, 25, 0.03);
  measurement.scale = {.value = 1.05, .free = true};
  measurement.background = {.value = 2e-6, .free = true};
  measurement.offset = {.value = 0.01, .free = true};
  measurement.footprint.shape = BeamShape::kGaussian;
  measurement.footprint.beam_width = {.value = 0.05, .free = true};
  measurement.footprint.sample_length = {.value = 12, .free = true};
  return measurement;
}

TEST(Derivatives, LayersAndQuantities) {
  const CState state = MakeFreeFilm();
  ExpectExact(state, {WithEverythingFree(state)}, {}, 1e-6, {58, 4.5, 1.3e-5, 1.02, 1e-6, 0.02, 0.06, 11});
}

TEST(Derivatives, ResolutionOfTheStateIsAParameterToo) {
  CState state = MakeFreeFilm();
  testing::Vary(state, FitKind::kResolution, 0, 3e-3, 1e-4, 1e-4, 1e-2);
  testing::Vary(state, FitKind::kQzMovement, 0, 1e-4, 1e-4, -1e-2, 1e-2);
  testing::Vary(state, FitKind::kMultiplicator, 0, 1.1, 1e-2, 0.1, 10);
  Measurement measurement = MakeMeasurement(state, 25, 0.03);
  measurement.resolution = 3e-3;
  ExpectExact(state, {measurement}, {}, 1e-6);
}

TEST(Derivatives, SigmaOfEachPoint) {
  const CState state = MakeFreeFilm();
  Measurement measurement = WithEverythingFree(state);
  measurement.dq = Widths(measurement, 2e-3);
  ExpectExact(state, {measurement}, {.resolution = Resolution::kPoints}, 1e-6);
}

TEST(Derivatives, NodesThatFollowAnEdge) {
  CState state = MakeFreeFilm();
  testing::Vary(state, FitKind::kDelta, 0, 7.58e-6, 1e-7, 1e-6, 2e-5);
  state.layers[1].layer_d = 100;
  Measurement measurement = MakeMeasurement(state, 25, 0.03);
  measurement.dq = Widths(measurement, 2e-3);
  for (std::size_t i = 0; i < 10; ++i) measurement.q[i] = 0.012 + 0.002 * static_cast<double>(i);
  ExpectExact(state, {measurement}, {.resolution = Resolution::kPoints}, 1e-5);
}

TEST(Derivatives, ThroughAScript) {
  CState state = MakeFreeFilm();
  state.disablescript = 0;
  state.scriptparameters.Append(0.4);
  testing::Vary(state, FitKind::kScript, 0, 0.4, 0.1, 0, 1);
  state.scriptlines.Append("thickness[2] = 25 + 10 * par[0] * par[0]");
  state.scriptlines.Append("sigma[2] = sigma[1] / 2");
  state.scriptlines.Append("energy = energy * (1 + 0.001 * par[0])");
  ExpectExact(state, {MakeMeasurement(state, 25, 0.03)}, {}, 1e-6);
}

TEST(Derivatives, ThroughSlices) {
  CState state = testing::MakeFilm();
  state.layersegmentationmode = LayerSegmentationMode::kSlices;
  state.minlayerthickness = 1;
  state.maxlayerthickness = 4;
  state.gradientscale = 0.01;
  testing::Vary(state, FitKind::kDelta, 1, 2.25e-5, 1e-7, 1e-5, 4e-5);
  Objective objective(state, {MakeMeasurement(state, 15, 0.03)});
  const Derivatives exact = objective.DerivativesAt(objective.Start());
  Objective plain(state, {MakeMeasurement(state, 15, 0.03)}, {.exact = false});
  const Derivatives differences = plain.DerivativesAt(plain.Start());
  for (std::size_t i = 0; i < 15; ++i) {
    EXPECT_NEAR(exact.jacobian(i, 0), differences.jacobian(i, 0),
                1e-4 * std::abs(differences.jacobian(i, 0)) + 1);
  }
}

TEST(Derivatives, MagneticKinds) {
  CState state = MakeFreeFilm();
  state.magnetizationmode = MagnetizationMode::kLayers;
  state.ray1sigmare = state.ray2sigmare = 0.7;
  state.ray1piim = 0.7;
  state.ray1pire = state.ray2pire = 0;
  state.ray2piim = -0.7;
  state.layers[1].layer_ddelta = 2e-6;
  state.layers[1].layer_dbeta = 1e-6;
  testing::Vary(state, FitKind::kDeltaM, 1, 2e-6, 1e-7, -1e-5, 1e-5);
  testing::Vary(state, FitKind::kBetaM, 1, 1e-6, 1e-7, -1e-5, 1e-5);
  Measurement second = MakeMeasurement(state, 20, 0.03);
  second.kind = MeasurementKind::kSecondRay;
  Measurement both = MakeMeasurement(state, 20, 0.03);
  both.kind = MeasurementKind::kBothRays;
  both.R2 = both.R;
  both.dR2 = both.dR;
  Measurement asymmetry = both;
  asymmetry.kind = MeasurementKind::kAsymmetry;
  asymmetry.R2.clear();
  asymmetry.dR2.clear();
  asymmetry.dR.assign(20, 0.01);
  asymmetry.scale = {.value = 0.9, .free = true};
  ExpectExact(state, {second, both, asymmetry}, {}, 1e-6);
}

TEST(Derivatives, CountsAndLogarithms) {
  const CState state = MakeFreeFilm();
  Measurement counts = MakeMeasurement(state, 25, 0.03);
  counts.scale = {.value = 1e7, .free = true};
  counts.background = {.value = 3, .free = true};
  counts.counts = true;
  counts.dR.clear();
  for (double& r : counts.R) r = std::floor(1e7 * r + 3);
  ExpectExact(state, {counts}, {}, 1e-6, {59.5, 5.2, 1.25e-5, 1.1e7, 4});
  Measurement bare = MakeMeasurement(state, 25, 0.03);
  bare.dR.clear();
  ExpectExact(state, {bare}, {.weights = Weights::kLog}, 1e-6, {59, 5.2, 1.25e-5});
}

TEST(Derivatives, OtherAlgorithmsAndScansTakeDifferences) {
  CState state = MakeFreeFilm();
  state.algorithm = Algorithm::kMatrixOne;
  Objective matrix(state, {MakeMeasurement(state, 10, 0.03)});
  const Derivatives at = matrix.DerivativesAt(matrix.Start());
  EXPECT_FALSE(at.exact[0]);
  // both algorithms agree for scalar layers
  state.algorithm = Algorithm::kParratt;
  Objective parratt(state, {MakeMeasurement(state, 10, 0.03)});
  const Derivatives exact = parratt.DerivativesAt(parratt.Start());
  for (std::size_t i = 0; i < 10; ++i) {
    for (std::size_t k = 0; k < 3; ++k) {
      EXPECT_NEAR(at.jacobian(i, k), exact.jacobian(i, k), 1e-4 * std::abs(exact.jacobian(i, k)) + 1e-4);
    }
  }
}

TEST(Derivatives, AParameterWithoutEffectSaysSo) {
  CState state = MakeFreeFilm();
  testing::Vary(state, FitKind::kThickness, 3, 0, 1, -1, 1);  // of the ambient
  testing::Vary(state, FitKind::kScript, 7, 0.5, 1, 0, 1);    // no such parameter
  Objective objective(state, {MakeMeasurement(state, 20, 0.03)});
  const Derivatives at = objective.DerivativesAt(objective.Start());
  EXPECT_EQ(at.no_effect, (std::vector<bool>{false, false, false, true, true}));
  const Covariance covariance = objective.CovarianceAt(objective.Start());
  EXPECT_TRUE(std::isnan(covariance.errors[3]));
  EXPECT_TRUE(std::isnan(covariance.errors[4]));
  EXPECT_GT(covariance.errors[0], 0);
}

TEST(Derivatives, AVanishingSlabAndASharpInterface) {
  CState state = testing::MakeFilm();
  state.layers[2].layer_d = 0;
  state.layers[1].layer_sigma = 0;
  testing::Vary(state, FitKind::kThickness, 2, 0, 1, 0, 50);
  testing::Vary(state, FitKind::kSigma, 1, 0, 1, 0, 50);
  testing::Vary(state, FitKind::kSigma, 0, 3, 1, 0, 50);
  Measurement measurement = MakeMeasurement(state, 20, 0.03);
  Objective exact(state, {measurement}), plain(state, {measurement}, {.exact = false});
  const Derivatives a = exact.DerivativesAt(exact.Start()), b = plain.DerivativesAt(plain.Start());
  EXPECT_TRUE(a.exact[0]);
  for (std::size_t i = 0; i < 20; ++i) {
    EXPECT_NEAR(a.jacobian(i, 0), b.jacobian(i, 0), 1e-4 * std::abs(b.jacobian(i, 0)) + 1e-4);
    EXPECT_EQ(a.jacobian(i, 1), 0) << "R is even in sigma";
  }
  EXPECT_TRUE(a.no_effect[1]);
}

TEST(Derivatives, ACriticalEdgeWithoutAbsorptionIsNotANumber) {
  CState state = testing::MakeFilm();
  state.layers.Assign(2, CLayer());
  state.layers[0].layer_delta = 7.58e-6;
  testing::Vary(state, FitKind::kDelta, 0, 7.58e-6, 1e-7, 1e-6, 2e-5);
  Measurement measurement = MakeMeasurement(state, 5, 0.03);
  const double k0 = 2 * M_PI / state.lambda;
  const double n = 1 - 7.58e-6;
  measurement.q[0] = 2 * k0 * std::sqrt((1 - n) * (1 + n));
  Objective objective(state, {measurement});
  const Derivatives at = objective.DerivativesAt(objective.Start());
  EXPECT_TRUE(std::isfinite(at.residuals[0]));
  // at the edge itself, or so near to it that one over the wavevector is all but infinite
  EXPECT_TRUE(std::isnan(at.jacobian(0, 0)) ||
              std::abs(at.jacobian(0, 0)) > 1e3 * std::abs(at.jacobian(1, 0)));
  EXPECT_TRUE(std::isfinite(at.jacobian(1, 0)));
}

TEST(Derivatives, GradientIsThatOfTheLogarithmOfThePosterior) {
  const CState state = MakeFreeFilm();
  Measurement measurement = MakeMeasurement(state, 25, 0.03);
  measurement.scale = {
      .value = 1, .free = true, .bounds = {0.5, 2}, .prior = {PriorKind::kNormal, 1.0, 0.05}};
  Objective objective(state, {measurement});
  const std::vector<double> x = {59.8, 5.1, 1.22e-5, 1.03};
  const std::vector<double> gradient = objective.GradientAt(x);
  for (std::size_t k = 0; k < x.size(); ++k) {
    const double h = 1e-5 * x[k];
    std::vector<double> high = x, low = x;
    high[k] += h;
    low[k] -= h;
    const double slope =
        (objective.Evaluate(high)[0].log_posterior() - objective.Evaluate(low)[0].log_posterior()) / (2 * h);
    EXPECT_NEAR(gradient[k], slope, 1e-4 * std::abs(slope)) << k;
  }
}

}  // namespace
}  // namespace tolvik::analysis
