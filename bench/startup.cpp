// SPDX-License-Identifier: GPL-2.0-or-later
// How long does the program take from its start to its exit? Compared with /bin/true, the time that the
// system itself needs to start and reap a process.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench/run_program.h"

namespace {

using tolvik::bench::RunProgram;

void Measure(benchmark::State& state, const std::vector<std::string>& words, int exit_value) {
  for (auto _ : state) {
    if (RunProgram(words) != exit_value) state.SkipWithError("the program failed");
  }
}

BENCHMARK_CAPTURE(Measure, system_true, {"/bin/true"}, 0)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Measure, version, {TOLVIK_PROGRAM, "-v"}, 1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Measure, load_a_state, {TOLVIK_PROGRAM, "-none", TOLVIK_EXAMPLES "/silicon.state"}, 0)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Measure, silicon_curve, {TOLVIK_PROGRAM, "-refl", TOLVIK_EXAMPLES "/silicon.state"}, 0)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Measure, mirror_curve, {TOLVIK_PROGRAM, "-refl", TOLVIK_EXAMPLES "/mo_si_mirror.state"}, 0)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
