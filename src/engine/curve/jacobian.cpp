// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve/jacobian.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "engine/curve/active_nodes.h"
#include "engine/curve/ray_derivatives.h"

namespace tolvik::engine {

namespace {

std::size_t Size(std::int32_t count) {
  return static_cast<std::size_t>(count);
}

void Check(const GradientTask& task) {
  if (!HasGradient(task.options)) throw std::invalid_argument("no derivatives for this algorithm");
  const std::int32_t parameters = task.chain.parameters;
  const auto within = [](std::int32_t i, std::int32_t count) { return i >= 0 && i < count; };
  for (const ChainTerm& term : task.chain.terms) {
    if (!within(term.parameter, parameters)) throw std::invalid_argument("a term of no parameter");
    if (!within(term.entry, task.profile.size)) throw std::invalid_argument("a term outside the profile");
  }
  for (const NodeTerm& term : task.nodes.terms) {
    if (!within(term.parameter, parameters)) throw std::invalid_argument("a term of no parameter");
  }
}

double InfiniteToNaN(double x) {
  return std::isfinite(x) ? x : std::numeric_limits<double>::quiet_NaN();
}

// Calls take(range) for all points in blocks.
template <class Take>
void ForRanges(std::int32_t points, std::int32_t at_once, Take take) {
  for (std::int32_t begin = 0; begin < points; begin += at_once) {
    take(PointRange{begin, std::min(begin + at_once, points)});
  }
}

// Room for one ray of all points.
void Resize(const ActiveNodes& active, std::int32_t parameters, bool wanted, RayJacobian& ray) {
  const std::size_t points = wanted ? Size(active.points()) : 0;
  ray.value.resize(points);
  ray.jacobian.resize(points * Size(parameters));
}

}  // namespace

bool HasGradient(const IntensityOptions<double>& options) {
  return options.algorithm == kParratt;
}

void CalcJacobian(const GradientTask& task, CurveJacobian& result, GradientWork& work) {
  Check(task);
  const ActiveNodes active(task.nodes);
  RayDerivatives derivatives(task, active, work);
  const auto calculate = [&](int number, bool wanted, RayJacobian& ray) {
    Resize(active, task.chain.parameters, wanted, ray);
    if (!wanted) return;
    ForRanges(active.points(), derivatives.PointsAtOnce(), [&](const PointRange& range) {
      derivatives.Calculate(number, range, ray.value.data() + range.begin,
                            ray.jacobian.data() + Size(range.begin) * Size(task.chain.parameters));
    });
    for (double& x : ray.jacobian) x = InfiniteToNaN(x);
  };
  calculate(1, HasFirst(task.rays), result.first);
  calculate(2, HasSecond(task.rays), result.second);
}

void CalcGradient(const GradientTask& task, const SeedFunction& seed, CurveGradient& result,
                  GradientWork& work) {
  Check(task);
  const ActiveNodes active(task.nodes);
  const std::size_t parameters = Size(task.chain.parameters);
  RayDerivatives derivatives(task, active, work);
  result.gradient.assign(parameters, 0.0);
  result.first.resize(HasFirst(task.rays) ? Size(active.points()) : 0);
  result.second.resize(HasSecond(task.rays) ? Size(active.points()) : 0);
  const std::int32_t at_once = derivatives.PointsAtOnce();
  std::vector<double> jacobian[2], seeds[2];
  ForRanges(active.points(), at_once, [&](const PointRange& range) {
    const std::size_t count = Size(range.end - range.begin);
    std::span<double> values[2];
    for (const int ray : {0, 1}) {
      std::vector<double>& all = ray == 0 ? result.first : result.second;
      if (all.empty()) continue;
      values[ray] = {all.data() + range.begin, count};
      jacobian[ray].resize(count * parameters);
      seeds[ray].assign(count, 0.0);
      derivatives.Calculate(ray + 1, range, values[ray].data(), jacobian[ray].data());
    }
    seed({range.begin, values[0], values[1], seeds[0], seeds[1]});
    for (const int ray : {0, 1}) {
      for (std::size_t point = 0; point < seeds[ray].size(); ++point) {
        const double factor = seeds[ray][point];
        if (factor == 0) continue;
        const double* row = jacobian[ray].data() + point * parameters;
        for (std::size_t p = 0; p < parameters; ++p) result.gradient[p] += factor * row[p];
      }
    }
  });
  for (double& x : result.gradient) x = InfiniteToNaN(x);
}

}  // namespace tolvik::engine
