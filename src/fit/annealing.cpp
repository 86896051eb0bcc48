// SPDX-License-Identifier: GPL-2.0-or-later
// The downhill simplex with thermal noise, after W. H. Press and S. A. Teukolsky, Comput. Phys. 5, 426
// (1991).
//
// T              temperature, member fittemp; T <- max(0, T + fitdtemp) at the head of each step
// u              uniform in [0, 1); -T ln u >= 0 worsens a vertex, the same in favour of a trial point
// highest, lowest, nexthighest   noisy errors of the ranking
//
// At T = 0 this is the simplex of simplex.cpp except for the order of ties. Differences from the paper: the
// schedule is linear and part of the step, and the shrink moves all vertices at once. A draw of exactly 0
// makes the noise infinite, or NaN at T = 0; the comparisons follow from that.
#include <cmath>

#include "fit/chi_square_fit.h"

namespace tolvik {
namespace {

constexpr double kReflection = -1.0;
constexpr double kExpansion = 2.0;
constexpr double kContraction = 0.5;

struct NoisyRanks {
  std::int32_t low, high;
  double lowest, highest, nexthighest;
};

template <class Noise>
NoisyRanks RankNoisily(const CArray<double>& errors, Noise noise) {
  const double y0 = errors[0] - noise();
  const double y1 = errors[1] - noise();
  NoisyRanks r = y0 <= y1 ? NoisyRanks{0, 1, y0, y1, y0} : NoisyRanks{1, 0, y1, y0, y1};
  for (std::int32_t i = 2; i < errors.size; ++i) {
    const double y = errors[i] - noise();
    if (y <= r.lowest) {
      r.low = i;
      r.lowest = y;
    }
    if (y > r.highest) {
      r.nexthighest = r.highest;
      r.high = i;
      r.highest = y;
    } else if (y > r.nexthighest) {
      r.nexthighest = y;
    }
  }
  return r;
}

}  // namespace

double CChiSquareFit::DrawNoise() {
  return fittemp * std::log(realgenerator.DrawReal());
}

double CChiSquareFit::AnnealingTrialPoint(std::int32_t worst, double& highest, double factor) {
  CArray<double> trial = TrialPoint(worst, factor);
  const double y = EvaluateAt(trial);
  if (y <= besterror) {  // by the true error, not the noisy one
    bestparameters = trial;
    besterror = y;
  }
  const double noisy = y + DrawNoise();
  if (noisy < highest) {
    highest = noisy;
    ReplaceVertex(worst, y, std::move(trial));
  }
  return noisy;
}

void CChiSquareFit::AnnealingStep() {
  if (restart) BuildSimplex(false);
  if (parameters.size == 0) return;
  fittemp += fitdtemp;
  if (fittemp < 0) fittemp = 0;
  NoisyRanks r = RankNoisily(vertexerrors, [this] { return DrawNoise(); });
  double y = AnnealingTrialPoint(r.high, r.highest, kReflection);
  if (y <= r.lowest) {
    AnnealingTrialPoint(r.high, r.highest, kExpansion);
  } else if (y >= r.nexthighest) {
    const double reflected = r.highest;
    y = AnnealingTrialPoint(r.high, r.highest, kContraction);
    if (reflected <= y) ShrinkTowards(r.low);
  }
}

}  // namespace tolvik
