// SPDX-License-Identifier: GPL-2.0-or-later
// The engine's number of 200 bits against one that allocates each temporary, in the engine's own recursion.
#include <memory>

#include "bench/heap_number.h"
#include "bench/speed/rows.h"
#include "bench/speed/stacks.h"
#include "engine/algorithms/parratt.tpp"
#include "engine/number/cnumber.h"
#include "engine/number/complex.h"

namespace tolvik::bench {

namespace {

template <engine::Number T>
Work RecursionOf(const Stack& stack, int angles) {
  auto profile = std::make_shared<engine::Profile<T>>(ProfileOf<T>(stack, Magnetism::kNone));
  return [profile, sines = Sines<double>(angles)](std::vector<double>& intensities) {
    constexpr double kBoth[8] = {1, 0, 1, 0};
    engine::ParrattVectors<T> work;
    const T k0(kK0);
    intensities.clear();
    for (const double s : sines) {
      engine::CalcWavevectors<T>(*profile, work.kz, k0, asin(T(s)), T(0.0));
      engine::CalcFresnelCoefficients<T>(*profile, work.kz, work.rpi, work.rsigma);
      intensities.push_back(static_cast<double>(
          engine::CalcParrattIntensity<T>(*profile, work.kz, work.rpi, work.rsigma, kBoth, 1)));
    }
  };
}

}  // namespace

Row MpfrRow() {
  constexpr int kAngles = 10;
  const Stack stack = Graded(100, 20, 3);
  return {"parratt_mpfr",
          "Parratt in MPFR, 100 rough layers, against init and clear per temporary",
          kAngles * static_cast<double>(stack.size() - 1),
          0,
          RecursionOf<HeapNumber>(stack, kAngles),
          RecursionOf<engine::CNumber>(stack, kAngles)};
}

}  // namespace tolvik::bench
