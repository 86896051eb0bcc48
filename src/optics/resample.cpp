// SPDX-License-Identifier: GPL-2.0-or-later
// Greedy bisection of the interval where the grid is farthest from the table.
#include "optics/resample.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "optics/column_table.h"

namespace tolvik {
namespace {

constexpr double kSampling = 0.1;  // eV

class Resampling {
 public:
  Resampling(CColumnTable& input, double emin, double emax, std::int32_t intervals)
      : input_(input), noise_(NoiseLevels()), sample_(static_cast<std::size_t>(input.columns)) {
    for (std::int32_t k = 0; k <= intervals; ++k) AddPoint(((emax - emin) / intervals) * k + emin);
    for (std::size_t k = 1; k < points_.size(); ++k) AddInterval(MakeInterval(k - 1, k));
  }

  std::size_t Size() const { return points_.size(); }

  /// Halves the interval where the grid is farthest from the input; false when they agree everywhere.
  bool Refine() {
    if (intervals_.empty() || !(intervals_.front().score > 0)) return false;
    std::pop_heap(intervals_.begin(), intervals_.end(), Behind());
    const Interval worst = intervals_.back();
    intervals_.pop_back();
    AddPoint((points_[worst.lower].energy + points_[worst.upper].energy) / 2);
    const std::size_t middle = points_.size() - 1;
    AddInterval(MakeInterval(worst.lower, middle));
    AddInterval(MakeInterval(middle, worst.upper));
    return true;
  }

  /// The input with the rows between the ends of the grid replaced by the grid.
  CColumnTable Result() {
    std::stable_sort(points_.begin(), points_.end(),
                     [](const CColumnRow& a, const CColumnRow& b) { return a.energy < b.energy; });
    const double first = points_.front().energy;
    const double last = points_.back().energy;
    CColumnTable result(input_.columns);
    for (const CColumnRow& row : input_)
      if (row.energy < first) result.Append(row);
    for (CColumnRow& row : points_) result.Append(std::move(row));
    for (const CColumnRow& row : input_)
      if (row.energy > last) result.Append(row);
    return result;
  }

 private:
  struct Interval {
    std::size_t lower, upper;  // in points_
    double energy;             // lower end
    double score;
  };
  struct Behind {  // order of the heap: the earlier interval wins among equals
    bool operator()(const Interval& x, const Interval& y) const {
      return x.score < y.score || (x.score == y.score && x.energy > y.energy);
    }
  };

  // Two interpolations of one straight line differ by rounding, which does not count as a bend of the curve.
  std::vector<double> NoiseLevels() const {
    std::vector<double> levels(static_cast<std::size_t>(input_.columns), 0.0);
    for (const CColumnRow& row : input_)
      for (std::int32_t c = 0; c < input_.columns; ++c) {
        const double magnitude = std::abs(row.values[c]);
        double& level = levels[static_cast<std::size_t>(c)];
        if (std::isfinite(magnitude)) level = std::max(level, magnitude);
      }
    for (double& level : levels) level *= 16 * std::numeric_limits<double>::epsilon();
    return levels;
  }

  void AddPoint(double energy) {
    CColumnRow row;
    row.energy = energy;
    row.values.Assign(input_.columns, 0.0);
    InterpolateColumnTable(input_, energy, {row.values.data, sample_.size()});
    points_.push_back(std::move(row));
  }

  void AddInterval(const Interval& interval) {
    intervals_.push_back(interval);
    std::push_heap(intervals_.begin(), intervals_.end(), Behind());
  }

  Interval MakeInterval(std::size_t lower, std::size_t upper) {
    const double score = Score(points_[lower], points_[upper]);
    return {lower, upper, points_[lower].energy, score > 0 ? score : 0.0};
  }

  // Sum of squared distances at each 0.1 eV, per eV.
  double Score(const CColumnRow& p, const CColumnRow& q) {
    const double width = q.energy - p.energy;
    double sum = 0;
    double x = p.energy;
    for (int k = 1; x <= q.energy; ++k) {
      InterpolateColumnTable(input_, x, sample_);
      for (std::int32_t c = 0; c < input_.columns; ++c) {
        const double line = p.values[c] + (x - p.energy) / width * (q.values[c] - p.values[c]);
        const double distance = sample_[static_cast<std::size_t>(c)] - line;
        if (!(std::abs(distance) <= noise_[static_cast<std::size_t>(c)])) sum += distance * distance;
      }
      x = p.energy + kSampling * k;
    }
    return sum / width;
  }

  CColumnTable& input_;
  std::vector<double> noise_;
  std::vector<double> sample_;
  std::vector<CColumnRow> points_;
  std::vector<Interval> intervals_;
};

}  // namespace

void ResampleColumnTable(CColumnTable& table, double emin, double emax, double step, std::int32_t target) {
  if (table.columns < 1 || !std::isfinite(emin) || !std::isfinite(emax) || !(emin < emax) || !(step > 0))
    return;
  const double steps = (emax - emin) / step;
  const double samples = (emax - emin) / kSampling;
  if (!(steps >= 1 && steps < kMostResampledPoints && samples < kMostResampledPoints)) return;
  Resampling grid(table, emin, emax, static_cast<std::int32_t>(steps));
  while (static_cast<std::int64_t>(grid.Size()) < target)
    if (!grid.Refine()) return;
  table = grid.Result();
}

}  // namespace tolvik
