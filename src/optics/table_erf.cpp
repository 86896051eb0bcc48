// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/table_erf.h"

#include <cmath>
#include <vector>

namespace tolvik {
namespace {

constexpr int kEntries = 20001;
constexpr int kMaxSteps = 100;
constexpr double kAccuracy = 3e-7;
constexpr double kTiny = 1e-30;
constexpr double kReach = 5.0;
constexpr double kStep = 0.0005000250012500625;  // 10 / 19999: the grid ends one step beyond +5
constexpr double kEntriesPerUnit = 1999.9;
constexpr double kLogGammaHalf = 0.572364942924743;

// x^a e^-x / Gamma(a), the factor in front of both expansions.
double GammaPrefactor(double a, double x) {
  const double log_gamma = a == 0.5 ? kLogGammaHalf : std::lgamma(a);
  return std::exp(-x + a * std::log(x) - log_gamma);
}

double ErfOfGrid(double x) {
  const double y = x * x;
  const double p = y < 1.5 ? IncompleteGammaSeries(0.5, y) : 1 - IncompleteGammaFraction(0.5, y);
  return x >= 0 ? p : -p;
}

std::vector<double> MakeTable() {
  std::vector<double> table(kEntries);
  for (int i = 0; i < kEntries; ++i) table[static_cast<std::size_t>(i)] = ErfOfGrid(i * kStep - kReach);
  return table;
}

}  // namespace

double IncompleteGammaSeries(double a, double x) {
  if (x == 0) return 0;
  double ap = a;
  double del = 1 / a;
  double sum = del;
  for (int n = 0; n < kMaxSteps; ++n) {
    ap += 1;
    del *= x / ap;
    sum += del;
    if (std::abs(del) < std::abs(sum) * kAccuracy) break;
  }
  return sum * GammaPrefactor(a, x);
}

double IncompleteGammaFraction(double a, double x) {
  double b = x + 1 - a;
  double c = 1 / kTiny;
  double d = 1 / b;
  double h = d;
  for (int n = 1; n <= kMaxSteps; ++n) {
    const double an = -n * (n - a);
    b += 2;
    d = an * d + b;
    if (std::abs(d) < kTiny) d = kTiny;
    c = b + an / c;
    if (std::abs(c) < kTiny) c = kTiny;
    d = 1 / d;
    const double del = d * c;
    h *= del;
    if (std::abs(del - 1) < kAccuracy) break;
  }
  return h * GammaPrefactor(a, x);
}

double TableErf(double x) {
  static const std::vector<double> table = MakeTable();
  if (!(x >= -kReach)) return -1;  // NaN as well
  if (x > kReach) return 1;
  const double p = (x + kReach) * kEntriesPerUnit;
  const auto i = static_cast<std::size_t>(p);  // at most 19999, so that i + 1 is the last entry
  return table[i] + (table[i + 1] - table[i]) * (p - static_cast<double>(i));
}

}  // namespace tolvik
