// SPDX-License-Identifier: GPL-2.0-or-later
// What do the 4×4 algorithms cost per angle and interface? 100 layers × 200 angles; beside each the plain
// textbook loop: std::complex matrices, an inverse by elimination, all four modes and all sixteen roughness
// factors of each interface.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <complex>
#include <vector>

#include "optics/tensor.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"
#include "tolvik/tolvik.h"

namespace {

using namespace tolvik;
using Value = std::complex<double>;
using Matrix = std::array<std::array<Value, 4>, 4>;

constexpr int kLayers = 100, kAngles = 200;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kWavevector = 0.39;  // Å⁻¹, near 770 eV

// A periodic stack with rough interfaces; magnetic: tensors and magnetic constants are in use.
CState Stack(bool magnetic) {
  CState state;
  state.layers.Clear();
  for (int i = 0; i < kLayers; ++i) {
    CLayer layer;
    layer.layer_d = 15;
    layer.layer_sigma = 3;
    layer.layer_delta = i % 2 == 0 ? 0.004 : 0.006;
    layer.layer_beta = i % 2 == 0 ? 0.002 : 0.004;
    layer.layer_ddelta = i % 2 == 0 ? 0.0005 : -0.0008;
    layer.layer_dbeta = i % 2 == 0 ? 0.0003 : 0.0006;
    state.layers.Append(layer);
  }
  state.layers.Append(CLayer());
  state.lambda = kTwoPi / kWavevector;
  state.magnetizationmode = magnetic ? 1 : 0;
  state.maggamma = 60;
  state.magphi = 40;
  BuildAllEpsilonTensors(state);
  state.layers.Last().magnetic = 0;  // vacuum
  return state;
}

std::vector<double> Sines() {
  std::vector<double> s(kAngles);
  for (int i = 0; i < kAngles; ++i) s[static_cast<std::size_t>(i)] = 0.02 + 0.9 * i / kAngles;
  return s;
}

void CountInterfaces(benchmark::State& run) {
  run.counters["time/interface"] =
      benchmark::Counter(static_cast<double>(run.iterations()) * kLayers * kAngles,
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Ours(benchmark::State& run, std::int32_t algorithm, bool magnetic) {
  CState state = Stack(magnetic);
  state.algorithm = algorithm;
  CSolution solution;
  for (double s : Sines()) solution.dataset_qz.Append(2 * kWavevector * s);
  for (auto _ : run) {
    CalcReflectivityDLL(&solution, &state);
    benchmark::DoNotOptimize(solution.dataset_R0.data);
  }
  CountInterfaces(run);
}
BENCHMARK_CAPTURE(Ours, MatrixOneIsotropic, 1, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Ours, MatrixOneMagnetic, 1, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Ours, MatrixTwoIsotropic, 2, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Ours, MatrixTwoMagnetic, 2, true)->Unit(benchmark::kMillisecond);

Matrix Multiply(const Matrix& a, const Matrix& b) {
  Matrix result{};
  for (std::size_t r = 0; r < 4; ++r) {
    for (std::size_t c = 0; c < 4; ++c) {
      for (std::size_t k = 0; k < 4; ++k) result[r][c] += a[r][k] * b[k][c];
    }
  }
  return result;
}

Matrix Invert(Matrix a) {
  Matrix inverse{};
  for (std::size_t i = 0; i < 4; ++i) inverse[i][i] = 1;
  for (std::size_t k = 0; k < 4; ++k) {
    std::size_t pivot = k;
    for (std::size_t r = k + 1; r < 4; ++r) pivot = std::abs(a[r][k]) > std::abs(a[pivot][k]) ? r : pivot;
    std::swap(a[k], a[pivot]);
    std::swap(inverse[k], inverse[pivot]);
    const Value scale = 1.0 / a[k][k];
    for (std::size_t c = 0; c < 4; ++c) a[k][c] *= scale, inverse[k][c] *= scale;
    for (std::size_t r = 0; r < 4; ++r) {
      if (r == k) continue;
      const Value factor = a[r][k];
      for (std::size_t c = 0; c < 4; ++c)
        a[r][c] -= factor * a[k][c], inverse[r][c] -= factor * inverse[k][c];
    }
  }
  return inverse;
}

// Roots by Durand and Kerner from spread start values: what one writes without a closed form.
std::array<Value, 4> Roots(const std::array<Value, 5>& a) {
  std::array<Value, 4> z = {Value(0.4, 0.1), Value(0.3, -0.1), Value(-0.4, -0.1), Value(-0.3, 0.1)};
  for (int round = 0; round < 60; ++round) {
    double moved = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      Value f = a[0], others = a[0];
      for (std::size_t k = 1; k < 5; ++k) f = f * z[i] + a[k];
      for (std::size_t k = 0; k < 4; ++k) others *= k == i ? 1.0 : z[i] - z[k];
      z[i] -= f / others;
      moved = std::max(moved, std::abs(f / others));
    }
    if (moved < 1e-14) break;
  }
  std::sort(z.begin(), z.end(), [](const Value& x, const Value& y) { return x.real() > y.real(); });
  return z;
}

struct Modes {
  Matrix D{};
  std::array<Value, 4> kappa;
};

Modes TextbookModes(const CLayer& layer, double c) {
  Modes m;
  if (layer.magnetic == 0) {
    const Value n(1 - layer.layer_delta, layer.layer_beta), q = std::sqrt(1.0 - c * c / n / n), w = n * q;
    m.kappa = {w, w, -w, -w};
    m.D[0] = {1, 0, 0, w};
    m.D[1] = {0, q, -n, 0};
    m.D[2] = {1, 0, 0, -w};
    m.D[3] = {0, -q, -n, 0};
    return m;
  }
  const Value xx = layer.Epsilon(0, 0), xy = layer.Epsilon(0, 1), xz = layer.Epsilon(0, 2);
  const Value yx = layer.Epsilon(1, 0), yy = layer.Epsilon(1, 1), yz = layer.Epsilon(1, 2);
  const Value zx = layer.Epsilon(2, 0), zy = layer.Epsilon(2, 1), zz = layer.Epsilon(2, 2);
  const Value a = xx - c * c, b = zz - c * c;
  m.kappa =
      Roots({zz, c * (yz + zy), zx * xz + yz * zy - yy * b - a * zz, c * (xz * yx + zx * xy - a * (yz + zy)),
             zx * xy * yz + xz * yx * zy - a * yz * zy + yy * (a * b - zx * xz) - b * xy * yx});
  for (std::size_t r = 0; r < 4; ++r) {
    const Value u = c * m.kappa[r] + zy, h = a - m.kappa[r] * m.kappa[r];
    const Value e1 = xz * u - xy * b, e2 = h * b - xz * zx, e3 = xy * zx - h * u;
    const double length = std::sqrt(std::norm(e1) + std::norm(e2) + std::norm(e3));
    m.D[r] = {e1 / length, e2 / length, (c * e3 - m.kappa[r] * e2) / length, m.kappa[r] * e1 / length};
  }
  return m;
}

double TextbookIntensity(const CArray<CLayer>& profile, double c) {
  Modes up = TextbookModes(profile[profile.size - 1], c);
  Matrix M{};
  for (std::size_t i = 0; i < 4; ++i) M[i][i] = 1;
  for (std::int32_t j = profile.size - 2; j >= 0; --j) {
    const Modes lo = TextbookModes(profile[j], c);
    Matrix T = Multiply(lo.D, Invert(up.D));
    const double scale = -0.5 * profile[j].layer_sigma * profile[j].layer_sigma * kWavevector * kWavevector;
    for (std::size_t r = 0; r < 4; ++r) {
      for (std::size_t k = 0; k < 4; ++k) {
        T[r][k] *= std::exp(scale * (up.kappa[k] - lo.kappa[r]) * (up.kappa[k] - lo.kappa[r]));
      }
    }
    M = Multiply(T, M);
    if (j > 0) {
      Matrix P{};
      for (std::size_t r = 0; r < 4; ++r) {
        P[r][r] = std::exp(Value(0, -1) * kWavevector * profile[j].layer_d * lo.kappa[r]);
      }
      M = Multiply(P, M);
    }
    up = lo;
  }
  const Value delta = M[0][0] * M[1][1] - M[0][1] * M[1][0];
  return std::norm((M[1][1] * M[0][2] - M[0][1] * M[1][2]) / delta) +
         std::norm((M[1][1] * M[0][3] - M[0][1] * M[1][3]) / delta);
}

void Textbook(benchmark::State& run, bool magnetic) {
  const CState state = Stack(magnetic);
  const auto s = Sines();
  for (auto _ : run) {
    double sum = 0;
    for (double sine : s) sum += TextbookIntensity(state.layers, std::sqrt(1 - sine * sine));
    benchmark::DoNotOptimize(sum);
  }
  CountInterfaces(run);
}
BENCHMARK_CAPTURE(Textbook, Isotropic, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Textbook, Magnetic, true)->Unit(benchmark::kMillisecond);

}  // namespace
