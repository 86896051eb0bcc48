// SPDX-License-Identifier: GPL-2.0-or-later
#include "bench/speed/rows.h"

#include <complex>
#include <memory>

#include "bench/textbook.h"
#include "engine/intensity.tpp"

namespace tolvik::bench {

namespace {

constexpr double kK0 = 6.283185307179586 / 1.54;

struct Slab {
  double delta, beta, d, sigma;
};

// Slabs from the substrate up; vacuum above.
using Stack = std::vector<Slab>;

Stack Graded(int layers, double d, double sigma) {
  Stack stack = {{7.6e-6, 1.7e-7, 0, sigma}};
  for (int i = 0; i < layers; ++i) {
    const double depth = static_cast<double>(i) / layers;
    stack.push_back(
        {(i % 2 == 0 ? 2.9e-5 : 8e-6) * (1 - 0.3 * depth), 2e-6 * (1 + depth), d + i % 7 * d / 20, sigma});
  }
  stack.push_back({0, 0, 0, 0});
  return stack;
}

Stack Periodic(int periods) {
  Stack stack = {{7.6e-6, 1.7e-7, 0, 3}};
  for (int i = 0; i < periods; ++i) {
    stack.push_back({2.9e-5, 2e-6, 25, 3});
    stack.push_back({8e-6, 5e-7, 35, 3});
  }
  stack.push_back({0, 0, 0, 0});
  return stack;
}

// qz from 0.001 to 0.6 Å⁻¹ at λ 1.54 Å.
template <class T>
std::vector<T> Sines(int angles) {
  std::vector<T> sines;
  for (int i = 0; i < angles; ++i)
    sines.push_back(static_cast<T>((0.001 + 0.599 * i / (angles - 1)) / (2 * kK0)));
  return sines;
}

volatile double sink;  // keeps the results alive

std::function<void()> TextbookOf(const Stack& stack, int angles) {
  auto layers = std::make_shared<std::vector<TextbookLayer>>();
  for (const Slab& slab : stack) layers->push_back({{1 - slab.delta, slab.beta}, slab.d, slab.sigma});
  return [layers, sines = Sines<double>(angles)] {
    std::vector<std::complex<double>> kz(layers->size());
    double sum = 0;
    for (const double s : sines) {
      const TextbookResult r = TextbookParratt(*layers, kK0, std::asin(s), kz);
      sum += r.sigma + r.pi;
    }
    sink = sum;
  };
}

enum class Magnetism { kNone, kTensor, kFirstOrder };

template <class T>
engine::Profile<T> ProfileOf(const Stack& stack, Magnetism magnetism) {
  engine::Profile<T> profile;
  for (const Slab& slab : stack) {
    engine::CLayer<T> entry;
    entry.layer_d = T(slab.d);
    entry.layer_delta = T(slab.delta);
    entry.layer_beta = T(slab.beta);
    entry.layer_sigma = T(slab.sigma);
    const std::complex<T> n(T(1.0) - entry.layer_delta, entry.layer_beta);
    for (const int diagonal : {0, 4, 8}) entry.epsilon[diagonal] = n * n;
    if (magnetism != Magnetism::kNone && slab.delta != 0) {
      const std::complex<T> q(T(0.3 * slab.delta), T(0.3 * slab.beta));
      const std::complex<T> i(T(0.0), T(1.0));
      // A moment in a general direction.
      const T x = T(0.48), y = T(0.6), z = T(0.64);
      entry.magnetic = magnetism == Magnetism::kTensor;
      entry.epsilon[1] = i * q * z;
      entry.epsilon[3] = -entry.epsilon[1];
      entry.epsilon[2] = -i * q * y;
      entry.epsilon[6] = -entry.epsilon[2];
      entry.epsilon[5] = i * q * x;
      entry.epsilon[7] = -entry.epsilon[5];
      entry.layer_ddelta = q.real();
      entry.layer_dbeta = q.imag();
    }
    profile.Append(entry);
  }
  return profile;
}

template <class T>
std::function<void()> EngineOf(const Stack& stack, int angles, std::int32_t algorithm,
                               Magnetism magnetism = Magnetism::kNone) {
  engine::IntensityOptions<T> options;
  options.algorithm = algorithm;
  options.magnetic = magnetism != Magnetism::kNone;
  options.maggamma = T(36.87);
  options.magphi = T(50.2);
  options.tolerance = T(1e-12);
  options.polarisation[0] = options.polarisation[2] = 1;
  auto profile = std::make_shared<engine::Profile<T>>(ProfileOf<T>(stack, magnetism));
  return [options, profile, sines = Sines<T>(angles)] {
    engine::IntensityWork<T> work;
    std::vector<T> intensities(sines.size());
    engine::CalcIntensities<T>(*profile, T(kK0), options, static_cast<std::int32_t>(sines.size()),
                               sines.data(), intensities.data(), nullptr, work);
    sink = static_cast<double>(intensities.back());
  };
}

template <class T>
Row ParrattRow(const char* name, const char* title, const Stack& stack) {
  constexpr int kAngles = 1000;
  return {name, title, kAngles * static_cast<double>(stack.size() - 1), TextbookOf(stack, kAngles),
          EngineOf<T>(stack, kAngles, engine::kParratt)};
}

// The plain path stands for the textbook: the measuring run of the table has no lanes.
Row MatrixRow(const char* name, const char* title, std::int32_t algorithm, Magnetism magnetism) {
  constexpr int kAngles = 200;
  const Stack stack = Graded(100, 20, 3);
  const auto work = EngineOf<double>(stack, kAngles, algorithm, magnetism);
  return {name, title, kAngles * static_cast<double>(stack.size() - 1), work, work};
}

}  // namespace

std::vector<Row> AllRows() {
  using engine::kMatrixOne;
  using engine::kMatrixTwo;
  return {
      ParrattRow<double>("parratt_3_rough", "Parratt, 3 rough layers", Graded(3, 20, 3)),
      ParrattRow<double>("parratt_100_rough", "Parratt, 100 rough layers", Graded(100, 20, 3)),
      ParrattRow<double>("parratt_1000_slices", "Parratt, 1000 slices, no roughness", Graded(1000, 0.5, 0)),
      ParrattRow<double>("parratt_50_periods", "Parratt, 50 equal periods of 2 layers", Periodic(50)),
      ParrattRow<float>("parratt_float", "Parratt in float, 100 rough layers", Graded(100, 20, 3)),
      MatrixRow("matrix_one_isotropic", "matrix one, isotropic, 100 layers × 200 angles", kMatrixOne,
                Magnetism::kNone),
      MatrixRow("matrix_two_isotropic", "matrix two, not magnetic, likewise", kMatrixTwo, Magnetism::kNone),
      MatrixRow("matrix_one_magnetic", "matrix one, general magnetic, likewise", kMatrixOne,
                Magnetism::kTensor),
      MatrixRow("matrix_two_magnetic", "matrix two, magnetic, likewise", kMatrixTwo, Magnetism::kFirstOrder),
  };
}

}  // namespace tolvik::bench
