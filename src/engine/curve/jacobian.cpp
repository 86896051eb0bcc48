// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve/jacobian.h"

#include <cmath>
#include <limits>
#include <stdexcept>

#include "engine/curve/dual_gradient.h"
#include "engine/curve/grazing.h"

namespace tolvik::engine {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

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

// The nodes of a task that have an angle within reach, and their points.
class ActiveNodes {
 public:
  explicit ActiveNodes(const CurveNodes& nodes) : out_of_reach_(nodes.end.size(), false) {
    std::int32_t node = 0;
    for (std::size_t point = 0; point < nodes.end.size(); ++point) {
      for (; node < nodes.end[point]; ++node) {
        const double s = nodes.sine[Size(node)];
        if (!HasAngle(s)) continue;
        if (IsOutOfReach(s)) {
          out_of_reach_[point] = true;
          continue;
        }
        node_.push_back(node);
        point_.push_back(point);
        sine_.push_back(s);
      }
    }
  }

  std::size_t size() const { return node_.size(); }
  std::size_t points() const { return out_of_reach_.size(); }
  bool IsPointOutOfReach(std::size_t point) const { return out_of_reach_[point]; }
  const std::vector<std::int32_t>& Nodes() const { return node_; }
  const std::vector<double>& Sines() const { return sine_; }
  std::size_t Point(std::size_t i) const { return point_[i]; }

 private:
  std::vector<bool> out_of_reach_;
  std::vector<std::int32_t> node_;
  std::vector<std::size_t> point_;
  std::vector<double> sine_;
};

void CalcNodes(const GradientTask& task, const ActiveNodes& active, GradientWork& work) {
  work.first.assign(active.size(), 0.0);
  work.second.assign(HasSecond(task.rays) ? active.size() : 0, 0.0);
  const BatchOutcome outcome =
      CalcIntensities<double>({task.profile, task.k0, task.options, active.Sines(), work.first.data(),
                               HasSecond(task.rays) ? work.second.data() : nullptr},
                              work.intensity);
  if (outcome.error) std::rethrow_exception(outcome.error);
}

void SumPoints(const GradientTask& task, const ActiveNodes& active, const std::vector<double>& intensity,
               std::vector<double>& value) {
  value.assign(active.points(), 0.0);
  for (std::size_t i = 0; i < active.size(); ++i) {
    value[active.Point(i)] += task.nodes.weight[Size(active.Nodes()[i])] * intensity[i];
  }
  for (std::size_t point = 0; point < value.size(); ++point) {
    if (active.IsPointOutOfReach(point)) value[point] = kNaN;
  }
}

// One ray: adds the derivatives of all nodes, times the scale of the point, to target(point).
class Derivatives {
 public:
  Derivatives(const GradientTask& task, const ActiveNodes& active, int ray, GradientWork& work)
      : task_(task), active_(active), ray_(ray), work_(work) {}

  template <class ScaleOf, class TargetOf>
  void Add(ScaleOf scale_of, TargetOf target_of) {
    constexpr std::size_t kNodesAtOnce = 256;
    const std::size_t directions = Size(task_.chain.parameters) + 1;
    const std::vector<double>& intensity = ray_ == 1 ? work_.first : work_.second;
    for (std::size_t begin = 0; begin < active_.size(); begin += kNodesAtOnce) {
      const std::size_t count = std::min(kNodesAtOnce, active_.size() - begin);
      work_.rows.resize(count * directions);
      CalcDualRows(task_, ray_, {active_.Nodes().data() + begin, count}, work_.rows.data());
      for (std::size_t i = 0; i < count; ++i) {
        const std::size_t point = active_.Point(begin + i);
        const double scale = scale_of(point);
        if (scale == 0) continue;
        AddNode(active_.Nodes()[begin + i], scale, intensity[begin + i],
                {work_.rows.data() + i * directions, directions}, target_of(point));
      }
    }
  }

 private:
  void AddNode(std::int32_t node, double scale, double intensity, std::span<const double> row,
               double* target) const {
    const double weight = scale * task_.nodes.weight[Size(node)];
    for (std::size_t p = 0; p + 1 < row.size(); ++p) target[p] += weight * row[p];
    for (const NodeTerm& term : task_.nodes.terms) {
      double& sum = target[term.parameter];
      if (term.sine != nullptr && term.sine[node] != 0) sum += weight * term.sine[node] * row.back();
      if (term.weight != nullptr) sum += scale * term.weight[node] * intensity;
    }
  }

  const GradientTask& task_;
  const ActiveNodes& active_;
  int ray_;
  GradientWork& work_;
};

void InfiniteToNaN(std::vector<double>& values) {
  for (double& x : values) {
    if (!std::isfinite(x)) x = kNaN;
  }
}

void CalcRay(const GradientTask& task, const ActiveNodes& active, int ray, RayJacobian& result,
             GradientWork& work) {
  const std::size_t parameters = Size(task.chain.parameters);
  SumPoints(task, active, ray == 1 ? work.first : work.second, result.value);
  result.jacobian.assign(active.points() * parameters, 0.0);
  Derivatives(task, active, ray, work)
      .Add([](std::size_t) { return 1.0; },
           [&](std::size_t point) { return result.jacobian.data() + point * parameters; });
  for (std::size_t point = 0; point < active.points(); ++point) {
    if (!active.IsPointOutOfReach(point)) continue;
    std::fill_n(result.jacobian.data() + point * parameters, parameters, kNaN);
  }
  InfiniteToNaN(result.jacobian);
}

}  // namespace

bool HasGradient(const IntensityOptions<double>& options) {
  return options.algorithm == kParratt;
}

void CalcJacobian(const GradientTask& task, CurveJacobian& result, GradientWork& work) {
  Check(task);
  const ActiveNodes active(task.nodes);
  CalcNodes(task, active, work);
  result = {};
  if (HasFirst(task.rays)) CalcRay(task, active, 1, result.first, work);
  if (HasSecond(task.rays)) CalcRay(task, active, 2, result.second, work);
}

void CalcGradient(const GradientTask& task, const SeedFunction& seed, CurveGradient& result,
                  GradientWork& work) {
  Check(task);
  const ActiveNodes active(task.nodes);
  CalcNodes(task, active, work);
  result.first.clear();
  result.second.clear();
  if (HasFirst(task.rays)) SumPoints(task, active, work.first, result.first);
  if (HasSecond(task.rays)) SumPoints(task, active, work.second, result.second);
  std::vector<double> first_seed(result.first.size(), 0.0), second_seed(result.second.size(), 0.0);
  seed({0, result.first, result.second, first_seed, second_seed});
  result.gradient.assign(Size(task.chain.parameters), 0.0);
  const auto add = [&](int ray, const std::vector<double>& seeds) {
    Derivatives(task, active, ray, work)
        .Add([&](std::size_t point) { return seeds[point]; },
             [&](std::size_t) { return result.gradient.data(); });
    for (std::size_t point = 0; point < active.points(); ++point) {
      if (active.IsPointOutOfReach(point) && seeds[point] != 0)
        result.gradient.assign(result.gradient.size(), kNaN);
    }
  };
  if (HasFirst(task.rays)) add(1, first_seed);
  if (HasSecond(task.rays)) add(2, second_seed);
  InfiniteToNaN(result.gradient);
}

}  // namespace tolvik::engine
