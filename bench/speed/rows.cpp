// SPDX-License-Identifier: GPL-2.0-or-later
#include "bench/speed/rows.h"

#include <complex>
#include <memory>

#include "bench/speed/stacks.h"
#include "bench/textbook.h"
#include "bench/textbook_matrices.h"
#include "engine/curve/intensity.tpp"

namespace tolvik::bench {

namespace {

// The indices are rounded to T: near 1 a float keeps two or three digits of a decrement.
template <class T>
Work TextbookParrattOf(const Stack& stack, int angles) {
  auto layers = std::make_shared<std::vector<TextbookLayer>>();
  for (const Slab& slab : stack) {
    layers->push_back({{T(1.0) - T(slab.delta), T(slab.beta)}, slab.d, slab.sigma});
  }
  return [layers, sines = Sines<double>(angles)](std::vector<double>& intensities) {
    std::vector<std::complex<double>> kz(layers->size());
    intensities.resize(sines.size());
    for (std::size_t i = 0; i < sines.size(); ++i) {
      const TextbookResult r = TextbookParratt(*layers, kK0, std::asin(sines[i]), kz);
      intensities[i] = r.sigma + r.pi;
    }
  };
}

// The same entries as the engine gets.
std::vector<TextbookSlab> TextbookStackOf(const Stack& stack, Magnetism magnetism) {
  std::vector<TextbookSlab> slabs;
  for (const engine::CLayer<double>& entry : ProfileOf<double>(stack, magnetism)) {
    TextbookSlab slab;
    slab.n = engine::RefractiveIndex(entry);
    slab.d = entry.layer_d;
    slab.sigma = entry.layer_sigma;
    slab.magnetic = entry.magnetic != 0;
    for (std::size_t k = 0; k < 9; ++k) slab.eps[k / 3][k % 3] = entry.epsilon[k];
    slab.Q = {-2 * entry.layer_ddelta, 2 * entry.layer_dbeta};
    slabs.push_back(slab);
  }
  return slabs;
}

template <class Algorithm>
Work TextbookMatricesOf(const Stack& stack, int angles, const Algorithm& algorithm, Magnetism magnetism) {
  auto slabs = std::make_shared<std::vector<TextbookSlab>>(TextbookStackOf(stack, magnetism));
  return [slabs, algorithm, sines = Sines<double>(angles)](std::vector<double>& intensities) {
    intensities.resize(sines.size());
    for (std::size_t i = 0; i < sines.size(); ++i) {
      intensities[i] = TextbookReflectivity(*slabs, algorithm, std::asin(sines[i]), 1.0, 1.0);
    }
  };
}

template <class T>
Work EngineOf(const Stack& stack, int angles, std::int32_t algorithm,
              Magnetism magnetism = Magnetism::kNone) {
  engine::IntensityOptions<T> options;
  options.algorithm = algorithm;
  options.magnetic = magnetism != Magnetism::kNone;
  options.maggamma = T(kMagGamma);
  options.magphi = T(kMagPhi);
  options.tolerance = T(1e-12);
  options.polarisation[0] = options.polarisation[2] = 1;
  auto profile = std::make_shared<engine::Profile<T>>(ProfileOf<T>(stack, magnetism));
  return [options, profile, sines = Sines<T>(angles)](std::vector<double>& intensities) {
    engine::IntensityWork<T> work;
    std::vector<T> values(sines.size());
    engine::CalcIntensities<T>({*profile, T(kK0), options, sines, values.data()}, work);
    intensities.assign(values.begin(), values.end());
  };
}

template <class T>
Row ParrattRow(const char* name, const char* title, const Stack& stack) {
  constexpr int kAngles = 1000;
  const double tolerance = std::is_same_v<T, float> ? 0.1 : 1e-8;  // float: in the minima of the fringes
  return {name,
          title,
          kAngles * static_cast<double>(stack.size() - 1),
          tolerance,
          TextbookParrattOf<T>(stack, kAngles),
          EngineOf<T>(stack, kAngles, engine::kParratt)};
}

Row MatrixRow(const char* name, const char* title, std::int32_t algorithm, Magnetism magnetism) {
  constexpr int kAngles = 200;
  constexpr double kRadians = 0.017453292519943295;
  const Stack stack = Graded(100, 20, 3);
  const Work measure =
      algorithm == engine::kMatrixOne
          ? TextbookMatricesOf(stack, kAngles, TextbookTensor{kK0}, magnetism)
          : TextbookMatricesOf(stack, kAngles,
                               TextbookFirstOrder{kK0, kMagGamma * kRadians, kMagPhi * kRadians}, magnetism);
  // Near qz 0.045 the growing waves of 2000 Å cost both sides eight digits of the first-order matrices.
  const double tolerance = magnetism == Magnetism::kFirstOrder ? 1e-7 : 1e-8;
  return {name,      title,   kAngles * static_cast<double>(stack.size() - 1),
          tolerance, measure, EngineOf<double>(stack, kAngles, algorithm, magnetism)};
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
      MpfrRow(),
      MatrixRow("matrix_one_isotropic", "matrix one, isotropic, 100 layers × 200 angles", kMatrixOne,
                Magnetism::kNone),
      MatrixRow("matrix_two_isotropic", "matrix two, not magnetic, likewise", kMatrixTwo, Magnetism::kNone),
      MatrixRow("matrix_one_magnetic", "matrix one, general magnetic, likewise", kMatrixOne,
                Magnetism::kTensor),
      MatrixRow("matrix_two_magnetic", "matrix two, magnetic, likewise", kMatrixTwo, Magnetism::kFirstOrder),
  };
}

}  // namespace tolvik::bench
