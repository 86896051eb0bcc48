// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve/ray_derivatives.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/curve/dual_gradient.h"

namespace tolvik::engine {

namespace {

std::size_t Size(std::int32_t count) {
  return static_cast<std::size_t>(count);
}

lanes::ParrattRay<double> SharesOf(const IntensityOptions<double>& options, int ray) {
  const double* part = options.polarisation + 4 * (ray - 1);
  return {part[0] * part[0] + part[1] * part[1], part[2] * part[2] + part[3] * part[3], nullptr};
}

}  // namespace

RayDerivatives::RayDerivatives(const GradientTask& task, const ActiveNodes& active, GradientWork& work)
    : task_(task), active_(active), work_(work), kernels_(lanes::ChosenKernels()) {
  if (kernels_ == nullptr) return;
  if (!work_.lanes.Prepare(task.profile, task.k0, task.options.magnetic)) kernels_ = nullptr;
  SetLines();
}

void RayDerivatives::SetLines() {
  const double k0 = task_.k0;
  const std::int32_t top = task_.profile.size - 1;
  for (const ChainTerm& term : task_.chain.terms) {
    const auto add = [&](int row, double factor) {
      lines_.push_back({term.parameter, term.entry, row, factor * term.factor});
    };
    const bool under_interface = term.entry < top;
    switch (term.field) {
      case ProfileField::kDelta:
        add(lanes::kIndexReal, -2.0);
        break;
      case ProfileField::kBeta:
        add(lanes::kIndexImag, -2.0);
        break;
      case ProfileField::kThickness:
        if (under_interface && term.entry > 0) add(lanes::kPhase, -k0);
        break;
      case ProfileField::kRoughness:
        if (under_interface) add(lanes::kRoughness, -k0 * k0 * task_.profile[term.entry].layer_sigma);
        break;
      case ProfileField::kRoughnessSquared:
        if (under_interface) add(lanes::kRoughness, -0.5 * k0 * k0);
        break;
      case ProfileField::kMagneticDelta:
        if (task_.options.magnetic) add(lanes::kMagneticReal, 2.0);
        break;
      case ProfileField::kMagneticBeta:
        if (task_.options.magnetic) add(lanes::kMagneticImag, 2.0);
        break;
    }
  }
}

// The rows of a range fit into the second-level cache, while whole blocks of angles fill the lanes.
std::int32_t RayDerivatives::PointsAtOnce() const {
  constexpr std::int32_t kNumbers = 65536, kFewest = 16, kMost = 256;
  const std::int32_t columns = lanes::kSweepRows * task_.profile.size + task_.chain.parameters + 1;
  return std::clamp(kNumbers / columns / kFewest * kFewest, kFewest, kMost);
}

void RayDerivatives::Calculate(int ray, const PointRange& points, double* value, double* jacobian) {
  const std::size_t count = Size(points.end - points.begin);
  std::fill_n(value, count, 0.0);
  std::fill_n(jacobian, count * Size(task_.chain.parameters), 0.0);
  work_.lost.clear();
  if (kernels_ != nullptr) {
    SweepByLanes(ray, points, value, jacobian);
  } else {
    for (std::int32_t i = active_.Begin()[Size(points.begin)]; i < active_.Begin()[Size(points.end)]; ++i) {
      work_.lost.push_back(i);
    }
  }
  AddLost(ray, points, value, jacobian);
  for (std::int32_t point = points.begin; point < points.end; ++point) {
    if (!active_.IsOutOfReach(point)) continue;
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    value[point - points.begin] = kNaN;
    std::fill_n(jacobian + Size(point - points.begin) * Size(task_.chain.parameters), task_.chain.parameters,
                kNaN);
  }
}

void RayDerivatives::SweepByLanes(int ray, const PointRange& points, double* value, double* jacobian) {
  const std::vector<std::int32_t>& begin = active_.Begin();
  const bool magnetic = task_.options.magnetic;
  const bool slopes = !task_.nodes.terms.empty();
  const auto count = Size(points.end - points.begin);
  lanes::ParrattGradient& lanes = work_.lanes;
  lanes.Calculate(*kernels_,
                  {active_.Sines().data(), active_.Weights().data(), {&begin[Size(points.begin)], count + 1}},
                  SharesOf(task_.options, ray), {magnetic && ray == 2 ? 1 : 0, magnetic, slopes});
  for (std::int32_t p = 0; p < points.end - points.begin; ++p) {
    const std::int32_t first = begin[Size(points.begin + p)];
    double* row = jacobian + Size(p) * Size(task_.chain.parameters);
    for (std::int32_t i = first; i < begin[Size(points.begin + p) + 1]; ++i) {
      const double intensity = lanes.Intensity(p, i - first);
      if (!std::isfinite(intensity)) {
        work_.lost.push_back(i);
        continue;
      }
      value[p] += active_.Weights()[Size(i)] * intensity;
      if (slopes) AddNode(i, intensity, lanes.Slope(p, i - first), row);
    }
  }
  ApplyChain(points, jacobian);
}

void RayDerivatives::ApplyChain(const PointRange& points, double* jacobian) {
  const std::int32_t places = work_.lanes.places(), count = points.end - points.begin;
  const std::size_t parameters = Size(task_.chain.parameters);
  for (std::int32_t first = 0; first < count; first += places) {
    const std::int32_t in_strip = std::min(places, count - first);
    double* rows = jacobian + Size(first) * parameters;
    for (const Line& line : lines_) {
      const double* sums = work_.lanes.Sums(first, line.entry, line.row);
      double* target = rows + line.parameter;
      for (std::int32_t k = 0; k < in_strip; ++k) target[Size(k) * parameters] += line.factor * sums[k];
    }
  }
}

// The parameters that move nodes.
void RayDerivatives::AddNode(std::int32_t i, double intensity, double weighted_slope, double* row) const {
  const std::int32_t node = active_.Nodes()[Size(i)];
  for (const NodeTerm& term : task_.nodes.terms) {
    double& sum = row[term.parameter];
    if (term.sine != nullptr && term.sine[node] != 0) sum += term.sine[node] * weighted_slope;
    if (term.weight != nullptr) sum += term.weight[node] * intensity;
  }
}

void RayDerivatives::AddLost(int ray, const PointRange& points, double* value, double* jacobian) {
  constexpr std::size_t kNodesAtOnce = 64;
  const std::size_t parameters = Size(task_.chain.parameters);
  std::int32_t point = points.begin;
  for (std::size_t begin = 0; begin < work_.lost.size(); begin += kNodesAtOnce) {
    const std::size_t count = std::min(kNodesAtOnce, work_.lost.size() - begin);
    double sines[kNodesAtOnce], first[kNodesAtOnce], second[kNodesAtOnce];
    std::int32_t nodes[kNodesAtOnce];
    for (std::size_t k = 0; k < count; ++k) {
      sines[k] = active_.Sines()[Size(work_.lost[begin + k])];
      nodes[k] = active_.Nodes()[Size(work_.lost[begin + k])];
    }
    const BatchOutcome outcome = CalcIntensities<double>(
        {task_.profile, task_.k0, task_.options, {sines, count}, first, ray == 2 ? second : nullptr},
        work_.intensity);
    if (outcome.error) std::rethrow_exception(outcome.error);
    work_.rows.resize(count * (parameters + 1));
    CalcDualRows(task_, ray, {nodes, count}, work_.rows.data());
    for (std::size_t k = 0; k < count; ++k) {
      const std::int32_t i = work_.lost[begin + k];
      while (i >= active_.Begin()[Size(point) + 1]) ++point;
      const double intensity = ray == 1 ? first[k] : second[k];
      const double weight = active_.Weights()[Size(i)];
      const double* from = work_.rows.data() + k * (parameters + 1);
      double* row = jacobian + Size(point - points.begin) * parameters;
      value[point - points.begin] += weight * intensity;
      for (std::size_t p = 0; p < parameters; ++p) row[p] += weight * from[p];
      AddNode(i, intensity, weight * from[parameters], row);
    }
  }
}

}  // namespace tolvik::engine
