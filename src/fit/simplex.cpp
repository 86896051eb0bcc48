// SPDX-License-Identifier: GPL-2.0-or-later
// The downhill simplex of J. A. Nelder and R. Mead, Comput. J. 7, 308 (1965).
//
// vertices       n + 1 points of n parameters; vertexerrors the objective at each
// high, next     vertices of the highest and the second highest error; low the lowest
// vertexsum      sum over all vertices, from which a trial point follows without the centroid
//
// Differences from the paper: every trial is moved into the bounds before it is evaluated and kept, an
// expansion that is not better than the reflection leaves the reflection in place, contraction always starts
// from the high vertex after the reflection, and each step ends with an evaluation of the vertex that was
// best at its start, so that the model is never that of a rejected trial. There is no test of convergence.
#include <cstdio>

#include "fit/chi_square_fit.h"

namespace tolvik {
namespace {

constexpr double kReflection = -1.0;
constexpr double kExpansion = 2.0;
constexpr double kContraction = 0.5;
constexpr double kShrink = 0.5;

constexpr int kRandomSearchSteps = 300;
constexpr double kReversal = -0.3;

struct Ranks {
  std::int32_t low, high, next;
};

// Ties move low to the later vertex; comparisons with NaN are false, so a NaN is never taken as the highest.
Ranks RankVertices(const CArray<double>& errors) {
  Ranks r{0, 1, 0};
  if (errors[0] >= errors[1]) r = {0, 0, 1};
  for (std::int32_t i = 0; i < errors.size; ++i) {
    if (!(errors[i] > errors[r.low])) r.low = i;
    if (errors[i] > errors[r.high]) {
      r.next = r.high;
      r.high = i;
    } else if (errors[i] > errors[r.next] && i != r.high) {
      r.next = i;
    }
  }
  return r;
}

}  // namespace

void CChiSquareFit::BuildSimplex(bool flush_errors) {
  const std::int32_t n = parameters.size;
  bestparameters = parameters;
  vertices = std::make_unique<CArray<double>[]>(static_cast<std::size_t>(n) + 1);
  for (std::int32_t k = 0; k <= n; ++k) vertices[k] = parameters;
  for (std::int32_t i = 0; i < n; ++i) vertices[i + 1][i] += fitvariables[i].fit_delta;
  vertexerrors.Assign(n + 1, 0.0);
  for (std::int32_t k = 0; k <= n; ++k) {
    if (flush_errors) std::fflush(stderr);
    vertexerrors[k] = EvaluateAt(vertices[k]);
  }
  SumVertices();
  restart = false;
}

void CChiSquareFit::SumVertices() {
  const std::int32_t n = parameters.size;
  vertexsum.Assign(n, 0.0);
  for (std::int32_t k = 0; k <= n; ++k) {
    for (std::int32_t j = 0; j < n; ++j) vertexsum[j] += vertices[k][j];
  }
}

// Halves the distance of all vertices to one; vertexsum serves as the point that is evaluated, so a vertex
// itself is never moved by the bounds here.
void CChiSquareFit::ShrinkTowards(std::int32_t low) {
  const std::int32_t n = parameters.size;
  for (std::int32_t i = 0; i <= n; ++i) {
    if (i == low) continue;
    for (std::int32_t j = 0; j < n; ++j) {
      vertices[i][j] = kShrink * (vertices[low][j] + vertices[i][j]);
      vertexsum[j] = vertices[i][j];
    }
    vertexerrors[i] = EvaluateAt(vertexsum);
  }
  SumVertices();
}

CArray<double> CChiSquareFit::TrialPoint(std::int32_t worst, double factor) const {
  const std::int32_t n = parameters.size;
  const double f1 = (1 - factor) / n;
  const double f2 = f1 - factor;
  CArray<double> trial(vertexsum);
  for (std::int32_t j = 0; j < n; ++j) trial[j] = vertexsum[j] * f1 - vertices[worst][j] * f2;
  return trial;
}

void CChiSquareFit::ReplaceVertex(std::int32_t index, double error, CArray<double>&& point) {
  vertexerrors[index] = error;
  for (std::int32_t j = 0; j < point.size; ++j) vertexsum[j] += point[j] - vertices[index][j];
  vertices[index] = std::move(point);
}

double CChiSquareFit::SimplexTrialPoint(std::int32_t worst, double factor) {
  CArray<double> trial = TrialPoint(worst, factor);
  const double y = EvaluateAt(trial);
  if (y < vertexerrors[worst]) ReplaceVertex(worst, y, std::move(trial));
  return y;
}

void CChiSquareFit::SimplexStep() {
  if (restart) return BuildSimplex(true);
  if (parameters.size == 0) return;
  const auto [low, high, next] = RankVertices(vertexerrors);
  parameters = vertices[low];
  double y = SimplexTrialPoint(high, kReflection);
  if (!(y > vertexerrors[low])) {
    SimplexTrialPoint(high, kExpansion);
  } else if (y >= vertexerrors[next]) {
    const double reflected = vertexerrors[high];
    y = SimplexTrialPoint(high, kContraction);
    if (reflected <= y) ShrinkTowards(low);
  }
  parameters = vertices[low];
  EvaluateAt(parameters);
}

void CChiSquareFit::RandomRestartSearch() {
  for (CFitVariable& variable : fitvariables) {
    const double range = variable.fit_upper_boundary - variable.fit_lower_boundary;
    variable.fit_value = variable.fit_lower_boundary + range * realgenerator.Draw() * 0x1p-32;
  }
  RestartFit();
  for (int i = 0; i < kRandomSearchSteps; ++i) SimplexStep();
  if (lasterror < restartbesterror) {
    restartbesterror = lasterror;
    bestvariables = fitvariables;
  }
}

void CChiSquareFit::CoordinateStep() {
  EvaluateAt(parameters);
  for (std::int32_t i = 0; i < parameters.size; ++i) {
    const double before = lasterror;
    const double start = parameters[i];
    parameters[i] += fitvariables[i].fit_delta;
    EvaluateAt(parameters);
    if (before < lasterror) {
      parameters[i] = start;
      fitvariables[i].fit_delta *= kReversal;
    }
  }
}

}  // namespace tolvik
