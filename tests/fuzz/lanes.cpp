// SPDX-License-Identifier: GPL-2.0-or-later
// Differential fuzzing of the lanes: any numbers in any field of a stack, magnetic ones included. Where the
// plain algorithm gives a number, the number of each lane set must be as accurate; where it gives NaN or
// infinity so must they; and a single angle must give the same bits as in a batch.
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include "engine/curve/intensity.h"
#include "engine/lanes/kernels.h"
#include "precision/lanes_support.h"

namespace {

using namespace tolvik::engine;
using lanes::LaneSet;

// Doubles from the bytes of the input; 0 after its end. One leading byte chooses between any number and one
// of usual size.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  unsigned Byte() { return size_ == 0 ? 0u : (--size_, static_cast<unsigned>(*data_++)); }

  double Number(double scale) {
    const unsigned kind = Byte();
    if (kind % 8 != 0) return scale * (static_cast<double>(kind) + static_cast<double>(Byte()) / 256) / 256;
    double x = 0;
    const std::size_t count = size_ < sizeof x ? size_ : sizeof x;
    std::memcpy(&x, data_, count);
    data_ += count;
    size_ -= count;
    return x;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
};

struct Case {
  std::vector<CLayer<double>> layers;
  std::vector<double> sines;
  double k0;
  IntensityOptions<double> options;
};

// Tensors of a moment in any direction, or of strain.
void ReadTensor(Input& input, CLayer<double>& layer) {
  const std::complex<double> n(1.0 - layer.layer_delta, layer.layer_beta);
  layer.magnetic = 1;
  for (const int diagonal : {0, 4, 8}) layer.epsilon[diagonal] = n * n;
  const unsigned kind = input.Byte();
  if (kind % 4 == 0) layer.epsilon[8] += std::complex<double>(input.Number(1e-4), 0.0);
  for (const int element : {1, 2, 5}) {
    const double real = input.Number(1e-3);
    const std::complex<double> turn(real, input.Number(1e-3));
    layer.epsilon[element] = turn;
    layer.epsilon[element == 5 ? 7 : 3 * element] = kind % 16 == 1 ? turn : -turn;
  }
}

Case ReadCase(Input& input) {
  Case result;
  const unsigned shape = input.Byte();
  const unsigned entries = shape % 9;
  const bool tensors = shape >= 128;
  result.options.transmission = shape % 2 != 0 && tensors;
  result.options.algorithm = static_cast<std::int32_t>(input.Byte() % 3);
  result.options.magnetic = input.Byte() % 2 != 0;
  result.options.tolerance = 5e-5;
  result.k0 = input.Number(8.0);
  result.options.polarisation[0] = result.options.polarisation[6] = 1;
  result.options.polarisation[2] = input.Number(1.0);
  if (tensors) result.options.maggamma = input.Number(360.0);
  if (tensors) result.options.magphi = input.Number(180.0);
  for (unsigned j = 0; j < entries; ++j) {
    CLayer<double> layer;
    layer.layer_delta = input.Number(1e-4);
    layer.layer_beta = input.Number(1e-5);
    layer.layer_d = input.Number(300.0);
    layer.layer_sigma = input.Number(20.0);
    layer.layer_ddelta = input.Number(1e-5);
    layer.layer_dbeta = input.Number(1e-6);
    if (tensors) ReadTensor(input, layer);
    result.layers.push_back(layer);
  }
  for (unsigned count = 1 + input.Byte() % 20; count > 0; --count) {
    const double s = std::abs(input.Number(0.3));
    result.sines.push_back(s <= 1 ? s : 0.5);
  }
  return result;
}

template <class T>
std::vector<double> Calculate(const Case& test, const std::vector<double>& angles, LaneSet set) {
  lanes::ChooseLanes(set);
  Profile<T> profile = tolvik::testing::ConvertProfile<T>(test.layers);
  std::vector<T> sines(angles.begin(), angles.end());
  std::vector<T> first(sines.size()), second(sines.size());
  IntensityWork<T> work;
  const IntensityOptions<T> options = tolvik::testing::ConvertOptions<T>(test.options);
  CalcIntensities<T>({profile, T(test.k0), options, sines, first.data(), second.data()}, work);
  std::vector<double> result;
  for (std::size_t i = 0; i < sines.size(); ++i) {
    result.push_back(static_cast<double>(first[i]));
    result.push_back(static_cast<double>(second[i]));
  }
  return result;
}

bool SameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

// The error of the plain path at stacks next to this one. Waves of a magnetic entry that nearly coincide
// amplify rounding errors.
double NoiseAt(const Case& test, std::size_t i) {
  double largest = 0.0;
  for (int turn = -8; turn <= 8; ++turn) {
    Case moved = test;
    for (CLayer<double>& layer : moved.layers) {
      for (std::complex<double>& element : layer.epsilon) element *= 1.0 + turn * 0x1p-52;
    }
    const std::vector<double> angle = {test.sines[i / 2] * (1.0 - (turn & 3) * 0x1p-52)};
    const double plain = Calculate<double>(moved, angle, LaneSet::kPlain)[i % 2];
    const double exact = Calculate<long double>(moved, angle, LaneSet::kPlain)[i % 2];
    if (!std::isfinite(exact) || !std::isfinite(plain)) return std::numeric_limits<double>::infinity();
    largest = std::max(largest, std::abs(plain - exact));
  }
  return largest;
}

void Check(const Case& test, LaneSet set, const std::vector<double>& plain,
           const std::vector<double>& exact) {
  const std::vector<double> lane = Calculate<double>(test, test.sines, set);
  for (std::size_t i = 0; i < lane.size(); ++i) {
    if (!std::isfinite(plain[i])) {
      if (!SameBits(plain[i], lane[i])) std::abort();
      continue;
    }
    if (!std::isfinite(lane[i])) std::abort();
    // Coarse on purpose: the unit tests compare lanes with the conditioning.
    const double granted = 1e-6 * std::abs(plain[i]) + 1e-20;
    if (std::abs(lane[i] - plain[i]) <= granted || !std::isfinite(exact[i])) continue;
    if (std::abs(lane[i] - exact[i]) <= 2 * std::abs(plain[i] - exact[i]) + granted) continue;
    if (std::abs(lane[i] - exact[i]) > 1000 * NoiseAt(test, i) + granted) std::abort();
  }
  const std::vector<double> alone = Calculate<double>(test, {test.sines.back()}, set);
  if (!SameBits(alone[0], lane[lane.size() - 2]) || !SameBits(alone[1], lane.back())) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const Case test = ReadCase(input);
  const std::vector<double> plain = Calculate<double>(test, test.sines, LaneSet::kPlain);
  const std::vector<double> exact = Calculate<long double>(test, test.sines, LaneSet::kPlain);
  for (const LaneSet set : lanes::kAllLaneSets) {
    if (set != LaneSet::kPlain && lanes::IsSupported(set)) Check(test, set, plain, exact);
  }
  return 0;
}
