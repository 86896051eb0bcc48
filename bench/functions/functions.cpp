// SPDX-License-Identifier: GPL-2.0-or-later
// Are our own exponential, sine and cosine worth their code? Time and largest error of each, compared with
// those of xsimd, on AVX2 in double.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>
#include <random>

#include "bench/functions/routines.h"
#include "engine/lanes/kernels.h"

namespace tolvik::bench {
namespace {

constexpr int kCount = 4096;
constexpr int kDraws = 60;
constexpr int kTurns = 400;
constexpr double kNearZero = 1e-3;  // a sine or cosine below has no relative accuracy to compare

struct Values {
  alignas(64) double x[kCount], ours[2 * kCount], library[2 * kCount];
};

struct Row {
  const char* name;
  bool exponential;
  double low, high;
};

double Now() {
  std::timespec time;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// In units of the last place of the exact value.
double ErrorOf(double value, long double exact) {
  const double magnitude = std::abs(static_cast<double>(exact));
  const double place = std::nextafter(magnitude, std::numeric_limits<double>::infinity()) - magnitude;
  return static_cast<double>(std::abs(static_cast<long double>(value) - exact)) / place;
}

void AddErrors(const Row& row, const Values& values, double& ours, double& library) {
  for (int i = 0; i < kCount; ++i) {
    const long double x = values.x[i];
    const long double exact[2] = {row.exponential ? std::exp(x) : std::sin(x), std::cos(x)};
    for (int k = 0; k < (row.exponential ? 1 : 2); ++k) {
      if (!row.exponential && std::abs(exact[k]) < kNearZero) continue;
      ours = std::max(ours, ErrorOf(values.ours[i + k * kCount], exact[k]));
      library = std::max(library, ErrorOf(values.library[i + k * kCount], exact[k]));
    }
  }
}

// The shorter of time and the time of one call.
double Shortest(double time, Routine routine, const double* x, double* y) {
  const double start = Now();
  routine(x, y, kCount);
  return std::min(time, Now() - start);
}

void Print(const Row& row) {
  static Values values;
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> draw(row.low, row.high);
  const Routine ours = row.exponential ? kOurExponential : kOurSineAndCosine;
  const Routine library = row.exponential ? kLibraryExponential : kLibrarySineAndCosine;
  double our_error = 0, library_error = 0;
  for (int i = 0; i < kDraws; ++i) {
    for (double& x : values.x) x = draw(random);
    ours(values.x, values.ours, kCount);
    library(values.x, values.library, kCount);
    AddErrors(row, values, our_error, library_error);
  }
  double our_time = 1, library_time = 1;
  for (int i = 0; i < kTurns; ++i) {
    our_time = Shortest(our_time, ours, values.x, values.ours);
    library_time = Shortest(library_time, library, values.x, values.library);
  }
  std::printf("%-24s  ours %6.3f ns %5.2f ulp   xsimd %6.3f ns %5.2f ulp   ratio %.2f\n", row.name,
              our_time / kCount * 1e9, our_error, library_time / kCount * 1e9, library_error,
              library_time / our_time);
}

int Main() {
  if (!engine::lanes::IsSupported(engine::lanes::LaneSet::kAvx2)) {
    std::puts("functions: this processor has no AVX2");
    return 0;
  }
  const Row rows[] = {{"exp, -700 .. 700", true, -700, 700},      {"exp, -40 .. 0", true, -40, 0},
                      {"exp, -0.3 .. 0.3", true, -0.3, 0.3},      {"sin, cos, -0.7 .. 0.7", false, -0.7, 0.7},
                      {"sin, cos, -30 .. 30", false, -30, 30},    {"sin, cos, -1e3 .. 1e3", false, -1e3, 1e3},
                      {"sin, cos, -5e5 .. 5e5", false, -5e5, 5e5}};
  for (const Row& row : rows) Print(row);
  return 0;
}

}  // namespace
}  // namespace tolvik::bench

int main() {
  return tolvik::bench::Main();
}
