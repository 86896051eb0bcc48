// SPDX-License-Identifier: GPL-2.0-or-later
// A fit of a plain function, with a record of the points that were evaluated.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "fit/chi_square_fit.h"

namespace tolvik::testing {

using Point = std::vector<double>;

inline double SumOfSquares(const Point& p) {
  double sum = 0;
  for (const double x : p) sum += x * x;
  return sum;
}

/// Minimises a function of the variables. A function without residuals is for the simplexes only.
class ToyFit final : public CChiSquareFit {
 public:
  using Function = std::function<double(const Point&)>;
  using Residuals = std::function<Point(const Point&)>;

  explicit ToyFit(Function function, std::uint32_t seed = 0)
      : CChiSquareFit(seed), function_(std::move(function)) {}
  /// The sum of squares of count residuals, for least squares.
  ToyFit(Residuals residuals_of, std::int32_t count)
      : CChiSquareFit(0), residuals_of_(std::move(residuals_of)) {
    residuals.Assign(count, 0.0);
  }
  ToyFit(const CArray<CFitVariable>& variables, const std::uint32_t (&key)[4])
      : CChiSquareFit(variables, key) {}

  /// Appends a variable; call Start when all are there.
  ToyFit& Vary(double start, double delta, double lower = -1e10, double upper = 1e10) {
    CFitVariable variable;
    variable.fit_value = start;
    variable.fit_delta = delta;
    variable.fit_lower_boundary = lower;
    variable.fit_upper_boundary = upper;
    fitvariables.Append(variable);
    return *this;
  }
  ToyFit& Start() {
    RestartFit();
    return *this;
  }

  double CalcError(CArray<CFitVariable>& variables) override {
    Point point;
    for (const CFitVariable& variable : variables) point.push_back(variable.fit_value);
    evaluated.push_back(point);
    if (residuals_of_ == nullptr) return function_(point);
    const Point values = residuals_of_(point);
    double sum = 0;
    for (std::int32_t i = 0; i < residuals.size; ++i) {
      residuals[i] = values[static_cast<std::size_t>(i)];
      sum += residuals[i] * residuals[i];
    }
    return sum;
  }

  Point Parameters() const { return {parameters.begin(), parameters.end()}; }
  Point Vertex(std::int32_t index) const { return {vertices[index].begin(), vertices[index].end()}; }
  Point Errors() const { return {vertexerrors.begin(), vertexerrors.end()}; }
  Point Sum() const { return {vertexsum.begin(), vertexsum.end()}; }

  std::vector<Point> evaluated;  ///< all points that the optimiser evaluated, in order

 private:
  Function function_;
  Residuals residuals_of_;
};

}  // namespace tolvik::testing
