// SPDX-License-Identifier: GPL-2.0-or-later
// Theory of whole stacks: invariances, bounds, Bragg peaks, Kiessig fringes, the kinematic limit.
#include <algorithm>
#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include "support/precisions.h"
#include "support/states.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

using testing::MakeGrid;
using testing::MakeState;

// Cu Kα, 8048 eV. Henke, Gullikson and Davis, At. Data Nucl. Data Tables 54, 181 (1993), rounded.
constexpr double kLambda = 1.5406;
constexpr testing::Slab kMolybdenum{.thickness = 28, .delta = 2.87e-5, .beta = 1.9e-6};
constexpr testing::Slab kSilicon{.thickness = 41, .delta = 7.6e-6, .beta = 1.73e-7};

CLayer LayerOf(const testing::Slab& slab) {
  return MakeState({slab}).layers[0];
}

CState Mirror(int periods) {
  CState state = MakeState({kSilicon});
  for (int i = 0; i < periods; ++i) {
    state.layers.Append(LayerOf(kMolybdenum));
    state.layers.Append(LayerOf(kSilicon));
  }
  state.layers.Append(CLayer());
  state.lambda = kLambda;
  return state;
}

CArray<double> Curve(CState state, CSolution grid) {
  EXPECT_EQ(CalcReflectivityDLL(&grid, &state), ReturnCode::kSuccess);
  return grid.dataset_R0;
}

void ExpectSameCurves(const CState& a, const CState& b, double tolerance) {
  const CSolution grid = MakeGrid(0.005, 0.6, 200);
  const CArray<double> x = Curve(a, grid), y = Curve(b, grid);
  for (int i = 0; i < x.size; ++i) EXPECT_NEAR(x[i], y[i], tolerance * x[i]) << grid.dataset_qz[i];
}

TEST(Multilayer, ASlabSplitInTwoChangesNothing) {
  const testing::Slab film{.thickness = 120, .delta = 2e-5, .beta = 1e-6, .sigma = 4};
  testing::Slab lower = film, upper = film;
  lower.thickness = 37.5;
  lower.sigma = 9;  // between equal media the roughness does not matter either
  upper.thickness = film.thickness - lower.thickness;
  ExpectSameCurves(MakeState({kSilicon, film, {}}), MakeState({kSilicon, lower, upper, {}}), 1e-9);
}

TEST(Multilayer, ASmoothSlabWithoutThicknessChangesNothing) {
  const testing::Slab film{.thickness = 120, .delta = 2e-5, .beta = 1e-6};
  const testing::Slab nothing{.thickness = 0, .delta = 9e-5, .beta = 4e-6};
  ExpectSameCurves(MakeState({kSilicon, film, {}}), MakeState({kSilicon, nothing, film, {}}), 1e-9);
  ExpectSameCurves(MakeState({kSilicon, film, {}}), MakeState({kSilicon, film, nothing, {}}), 1e-9);
}

TEST(Multilayer, AThickAbsorberHidesWhatIsBelow) {
  const testing::Slab thick{.thickness = 1e9, .delta = 3e-5, .beta = 5e-6};
  ExpectSameCurves(MakeState({thick, {}}), MakeState({{.delta = 0.5, .beta = 0.1}, thick, {}}), 1e-9);
}

// Smooth stacks of any contrast, rough ones of x-ray contrast: the Névot-Croce factor is valid for roughness
// below the penetration depth only and amplifies beyond.
TEST(Multilayer, NothingReflectsMoreThanItGets) {
  constexpr unsigned kSeed = 4711;
  RecordProperty("seed", static_cast<int>(kSeed));
  std::mt19937 random(kSeed);
  std::uniform_real_distribution<double> unit(0, 1);
  const CSolution grid = MakeGrid(0.0005, 8.0, 160);
  for (int trial = 0; trial < 300; ++trial) {
    const bool rough = trial % 2 != 0;
    CState state = MakeState({});
    const int layers = 2 + static_cast<int>(10 * unit(random));
    for (int i = 0; i < layers; ++i) {
      const double scale = rough ? 1e-4 * unit(random) : std::pow(10.0, -6 * unit(random));
      state.layers.Append(LayerOf({.thickness = 200 * unit(random),
                                   .delta = 0.5 * scale * unit(random),
                                   .beta = 0.2 * scale * unit(random),
                                   .sigma = rough ? 3 * unit(random) : 0}));
    }
    state.layers.Append(CLayer());
    testing::UsePi(state, trial % 3 == 0);
    const CArray<double> curve = Curve(state, grid);
    EXPECT_LE(*std::max_element(curve.begin(), curve.end()), 1 + 1e-12)
        << "seed " << kSeed << " trial " << trial;
    EXPECT_GE(*std::min_element(curve.begin(), curve.end()), 0) << "seed " << kSeed << " trial " << trial;
  }
}

// qz² = (2π m / d)² + qc², with qc of the mean density: the Bragg law with refraction. The peak may lie
// anywhere within its own width: a fringe of the whole stack and the half width of total reflection, 4 k0²
// |delta_m| / qz with the Fourier coefficient delta_m of the density.
TEST(Multilayer, BraggPeaksLieWhereTheModifiedBraggLawPutsThem) {
  constexpr int kPeriods = 40;
  const double d = kMolybdenum.thickness + kSilicon.thickness;
  const double delta = (kMolybdenum.thickness * kMolybdenum.delta + kSilicon.thickness * kSilicon.delta) / d;
  const double k0 = 2 * M_PI / kLambda;
  const double fringe = 2 * M_PI / (kPeriods * d);
  for (int order = 1; order <= 4; ++order) {
    const double bragg = 2 * M_PI * order / d;
    const double expected = std::sqrt(bragg * bragg + 8 * delta * k0 * k0);
    const double fourier = (kMolybdenum.delta - kSilicon.delta) *
                           std::sin(M_PI * order * kMolybdenum.thickness / d) / (M_PI * order);
    const double width = 0.6 * fringe + 4 * k0 * k0 * std::abs(fourier) / expected;
    const CSolution grid = MakeGrid(expected - 0.4 * bragg / order, expected + 0.4 * bragg / order, 4001);
    const CArray<double> curve = Curve(Mirror(kPeriods), grid);
    const auto peak = std::max_element(curve.begin(), curve.end()) - curve.begin();
    EXPECT_NEAR(grid.dataset_qz[static_cast<int>(peak)], expected, width) << "order " << order;
    EXPECT_GT(curve[static_cast<int>(peak)], order == 1 ? 0.5 : 1e-4);
  }
}

// Maxima of one heavy film on a light substrate: with q' = sqrt(qz² - qc²) of the film, a spacing of 2π/d.
TEST(Multilayer, KiessigFringesAreSpacedByTheThickness) {
  const double d = 400, delta = 4e-5, k0 = 2 * M_PI / kLambda;
  CState state = MakeState({{}, {.thickness = d, .delta = delta}, {}});
  state.lambda = kLambda;
  const CSolution grid = MakeGrid(0.06, 0.25, 20001);
  const CArray<double> curve = Curve(state, grid);
  std::vector<double> minima;  // of a free film they are sharp: r1 = -r2
  for (int i = 1; i + 1 < curve.size; ++i) {
    if (curve[i] < curve[i - 1] && curve[i] < curve[i + 1]) {
      minima.push_back(std::sqrt(grid.dataset_qz[i] * grid.dataset_qz[i] - 8 * delta * k0 * k0));
    }
  }
  ASSERT_GT(minima.size(), 8u);
  for (double q : minima) {
    const double order = q * d / (2 * M_PI);
    EXPECT_NEAR(order, std::round(order), 2e-3) << "a film of whole half waves does not reflect";
  }
  for (std::size_t i = 1; i < minima.size(); ++i) EXPECT_NEAR(minima[i] - minima[i - 1], 2 * M_PI / d, 2e-4);
}

// Far above the critical angles multiple reflection and refraction vanish and the amplitude is the Fourier
// sum over the interfaces, r = (2 k0²/qz²) Σ (delta_lower - delta_upper) exp(i qz z); see J. Als-Nielsen and
// D. McMorrow, Elements of Modern X-ray Physics, ch. 3. The error is of the order of qc²/qz² times the phase.
TEST(Multilayer, FarFromTheCriticalAngleTheCurveIsKinematic) {
  CState state =
      MakeState({{.delta = 7.6e-8}, {.thickness = 30, .delta = 2e-7}, {.thickness = 17, .delta = 1e-7}, {}});
  state.lambda = kLambda;
  const double k0 = 2 * M_PI / kLambda;
  const CSolution grid = MakeGrid(0.2, 0.8, 121);
  const CArray<double> curve = Curve(state, grid);
  for (int i = 0; i < curve.size; ++i) {
    const double q = grid.dataset_qz[i];
    std::complex<double> sum;
    double scale = 0, z = 0;
    for (int j = 0; j + 1 < state.layers.size; ++j) {
      if (j > 0) z += state.layers[j].layer_d;
      const double step = state.layers[j].layer_delta - state.layers[j + 1].layer_delta;
      sum += step * std::exp(std::complex<double>(0, -q * z));
      scale += std::abs(step);
    }
    const double factor = std::pow(2 * k0 * k0 / (q * q), 2);
    EXPECT_NEAR(curve[i], factor * std::norm(sum), 3e-3 * factor * scale * scale) << q;
  }
}

TEST(Multilayer, ABareSubstrateFallsWithTheFourthPower) {
  CState state = MakeState({{.delta = 1e-7}, {}});
  const double qc2 = 8 * 1e-7 * std::pow(2 * M_PI / 1.54, 2);
  const CSolution grid = MakeGrid({0.2, 0.4});
  const CArray<double> curve = Curve(state, grid);
  for (int i = 0; i < 2; ++i) {
    const double q = grid.dataset_qz[i];
    EXPECT_NEAR(curve[i] / std::pow(qc2 / (4 * q * q), 2), 1.0, 2 * qc2 / (q * q));
  }
}

// Refraction depends on the ratios of all lengths to the wavelength only.
TEST(Multilayer, ScalingAllLengthsScalesTheCurve) {
  CState one = Mirror(5), two = Mirror(5);
  two.lambda *= 2;
  for (CLayer& layer : two.layers) layer.layer_d *= 2;
  const CArray<double> a = Curve(one, MakeGrid(0.02, 0.5, 100)), b = Curve(two, MakeGrid(0.01, 0.25, 100));
  for (int i = 0; i < 100; ++i) EXPECT_NEAR(a[i], b[i], 1e-9 * a[i]);
}

}  // namespace
}  // namespace tolvik
