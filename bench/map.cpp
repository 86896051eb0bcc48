// SPDX-License-Identifier: GPL-2.0-or-later
// Does a map run on all processors? 200 energies × 500 qz on a stack of ten layers with tables, by the scan
// in threads, on one and on two of them.
#include <benchmark/benchmark.h>

#include "engine/processors.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

constexpr int kEnergies = 200;
constexpr int kQz = 500;

void AddTable(CState& state, const char* name, double delta, double beta) {
  COpticalTable table;
  table.name = name;
  for (int i = 0; i <= 200; ++i) {
    CColumnRow row;
    row.energy = 600 + i;
    row.values.Append(delta * (1 - 0.001 * i));
    row.values.Append(beta * (1 + 0.002 * i));
    table.db.Append(row);
  }
  state.opticaltables.Append(table);
}

CState MakeState() {
  CState state;
  state.layers.Clear();
  state.lambda = 18;
  AddTable(state, "light", 1e-3, 3e-4);
  AddTable(state, "heavy", 4e-3, 2e-3);
  AddTable(state, "vacuum", 0, 0);
  for (int i = 0; i < 11; ++i) {
    CLayer layer;
    layer.layer_db = i % 2 == 0 ? "light" : "heavy";
    layer.layer_d = 20 + i;
    layer.layer_sigma = 3;
    state.layers.Append(layer);
  }
  state.layers.Append(CLayer());
  return state;
}

CSolution MakePoints() {
  CSolution solution;
  for (int e = 0; e < kEnergies; ++e) {
    for (int q = 0; q < kQz; ++q) {
      solution.dataset_eng.Append(601.0 + 0.9 * e);
      solution.dataset_qz.Append(0.001 + 0.5 * q / kQz);
    }
  }
  solution.dataset_R0.Assign(solution.dataset_qz.size, 1.0);
  return solution;
}

void Map(benchmark::State& bench) {
  const CState sample = MakeState();
  CSolution solution = MakePoints();
  engine::ForceProcessorCount(static_cast<std::int32_t>(bench.range(0)));
  for (auto _ : bench) {
    CState state = sample;
    CalcEScanParallelDLL(&solution, &state);
  }
  engine::ForceProcessorCount(0);
  bench.counters["point"] = benchmark::Counter(
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
