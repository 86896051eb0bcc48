// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/lanes/parratt_gradient.h"

#include <algorithm>
#include <memory>

namespace tolvik::engine::lanes {

namespace {

std::size_t Size(std::int32_t count) {
  return static_cast<std::size_t>(count);
}

}  // namespace

// A point with fewer nodes than its neighbours in the strip repeats its last one with weight 0; a place
// without a point, or a point without nodes, takes any angle.
void ParrattGradient::LayOut(const SweepPoints& points) {
  const auto count = static_cast<std::int32_t>(points.begin.size()) - 1;
  strip_.clear();
  first_register_.clear();
  sine_.clear();
  weight_.clear();
  for (std::int32_t first = 0; first < count; first += places_) {
    const std::int32_t in_strip = std::min(places_, count - first);
    std::int32_t most = 1;
    for (std::int32_t p = first; p < first + in_strip; ++p) {
      most = std::max(most, points.begin[Size(p) + 1] - points.begin[Size(p)]);
    }
    const auto strip = static_cast<std::int32_t>(first_register_.size());
    first_register_.push_back(static_cast<std::int32_t>(strip_.size()));
    for (std::int32_t k = 0; k < most; ++k) {
      strip_.push_back(strip);
      for (std::int32_t place = 0; place < places_; ++place) {
        const std::size_t point = Size(std::min(first + place, count - 1));
        const std::int32_t begin = points.begin[point], end = points.begin[point + 1];
        const bool exists = place < in_strip && begin + k < end;
        const double any = begin < end ? points.sine[end - 1] : 0.5;
        sine_.push_back(exists ? points.sine[begin + k] : any);
        weight_.push_back(exists ? points.weight[begin + k] : 0.0);
      }
    }
  }
}

void ParrattGradient::Calculate(const Kernels& kernels, const SweepPoints& points,
                                const ParrattRay<double>& ray, const SweepWishes& wishes) {
  const ParrattStack<double> stack = lanes_.StackFor(ray, wishes.sense);
  const ParrattSweepKernel& kernel = kernels.parratt_sweep;
  places_ = kernel.places;
  entries_ = stack.entries;
  LayOut(points);
  intensity_.resize(sine_.size());
  slope_.assign(wishes.slopes ? sine_.size() : 0, 0.0);
  rows_.assign(first_register_.size() * Size(entries_) * kSweepRows * Size(places_), 0.0);
  constexpr std::size_t kAlignment = 64;
  std::size_t room = Size(entries_) * Size(kernel.tape_bytes) + kAlignment;
  if (tape_.size() < room) tape_.resize(room);
  void* tape = tape_.data();
  std::align(kAlignment, room - kAlignment, tape, room);
  kernel.run({&stack, sine_.data(), weight_.data(), strip_.data(), static_cast<std::int32_t>(strip_.size()),
              ray.sigma, ray.pi, wishes.sense, wishes.magnetic, wishes.slopes, intensity_.data(),
              slope_.data(), rows_.data(), tape});
}

std::size_t ParrattGradient::Place(std::int32_t point, std::int32_t node) const {
  return Size(first_register_[Size(point / places_)] + node) * Size(places_) + Size(point % places_);
}

const double* ParrattGradient::Sums(std::int32_t point, std::int32_t entry, int row) const {
  const std::size_t at = (Size(point / places_) * Size(entries_) + Size(entry)) * kSweepRows + Size(row);
  return rows_.data() + at * Size(places_) + point % places_;
}

}  // namespace tolvik::engine::lanes
