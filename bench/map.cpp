// SPDX-License-Identifier: GPL-2.0-or-later
// Does a map run on all processors? 200 energies × 500 qz on a stack of ten layers with tables, by the
// parallel scan, in one thread and in two.
#include <benchmark/benchmark.h>

#include "bench/energy_map.h"
#include "engine/threads/processors.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

using bench::kEnergies;
using bench::kQz;

void Map(benchmark::State& run) {
  const CState sample = bench::MakeMapState();
  CSolution solution = bench::MakeMapPoints();
  engine::ForceProcessorCount(static_cast<std::int32_t>(run.range(0)));
  for (auto _ : run) {
    CState state = sample;
    CalcEScanParallelDLL(&solution, &state);
  }
  engine::ForceProcessorCount(0);
  run.counters["point"] = benchmark::Counter(
      kEnergies * kQz, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(Map)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

}  // namespace
}  // namespace tolvik
