// SPDX-License-Identifier: GPL-2.0-or-later
// How fast is a column file read, sorted and queried? Each is compared with the plain form of the same work.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "optics/column_table.h"
#include "optics/layer_constants.h"
#include "optics/material.h"

namespace {

using namespace tolvik;

// A table of delta and beta, removed at the end; the process id keeps two runs apart.
class TableFile {
 public:
  TableFile(int rows, bool descending) {
    path_ = std::filesystem::temp_directory_path() / ("tolvik-bench-" + std::to_string(getpid()) + ".db");
    std::ofstream out(path_);
    for (int i = 0; i < rows; ++i) {
      char line[80];
      const double energy = 100.0 + 0.1 * (descending ? rows - i : i);
      std::snprintf(line, sizeof line, "%.4f %.9e %.9e\n", energy, 1.2345e-3 / (1 + i), 3.21e-4 / (2 + i));
      out << line;
    }
  }
  ~TableFile() { std::filesystem::remove(path_); }
  std::string Path() const { return path_.string(); }
  std::string Stem() const { return (path_.parent_path() / path_.stem()).string(); }
  std::int64_t Bytes() const { return static_cast<std::int64_t>(std::filesystem::file_size(path_)); }

 private:
  std::filesystem::path path_;
};

void Read(benchmark::State& run) {
  const TableFile file(200000, false);
  CColumnTable table(2);
  for (auto _ : run) ReadColumnTable(table, file.Path());
  run.SetBytesProcessed(run.iterations() * file.Bytes());
}
BENCHMARK(Read)->Unit(benchmark::kMillisecond);

void ReadTextbook(benchmark::State& run) {
  const TableFile file(200000, false);
  for (auto _ : run) {
    std::vector<std::pair<double, std::vector<double>>> rows;
    std::ifstream in(file.Path());
    double energy = 0;
    std::vector<double> values(2);
    for (std::string line; std::getline(in, line);) {
      if (line.size() < 2 || line[0] == '#') continue;
      std::istringstream numbers(line);
      numbers >> energy >> values[0] >> values[1];
      rows.emplace_back(energy, values);
    }
    benchmark::DoNotOptimize(rows.data());
  }
  run.SetBytesProcessed(run.iterations() * file.Bytes());
}
BENCHMARK(ReadTextbook)->Unit(benchmark::kMillisecond);

void LoadDescending(benchmark::State& run) {
  const TableFile file(10000, true);
  for (auto _ : run) {
    COpticalTable material;
    benchmark::DoNotOptimize(LoadOpticalTable(material, file.Stem()));
  }
}
BENCHMARK(LoadDescending)->Unit(benchmark::kMillisecond);

void SortDescendingTextbook(benchmark::State& run) {
  const TableFile file(10000, true);
  CColumnTable source(2);
  ReadColumnTable(source, file.Path());
  for (auto _ : run) {
    CColumnTable table = source;
    for (bool moved = true; moved;) {
      moved = false;
      for (std::uint32_t i = 0; i + 1 < table.count; ++i) {
        if (table.rows[i].energy > table.rows[i + 1].energy) {
          std::swap(table.rows[i], table.rows[i + 1]);
          moved = true;
        }
      }
    }
    benchmark::DoNotOptimize(table.rows);
  }
}
BENCHMARK(SortDescendingTextbook)->Unit(benchmark::kMillisecond);

// The constants of ten layers at the next energy of a scan.
void SetTenLayers(benchmark::State& run) {
  const TableFile file(10000, false);
  CState state;
  state.layers.Clear();
  CLayer layer;
  layer.layer_db.Set(file.Stem());
  for (int i = 0; i < 10; ++i) state.layers.Append(layer);
  LoadOpticalTables(state);
  double energy = 200;
  for (auto _ : run) {
    state.lambda = 12398.326 / energy;
    benchmark::DoNotOptimize(SetLayerConstantsForEnergy(state));
    energy = energy < 1000 ? energy + 0.05 : 200;
  }
}
BENCHMARK(SetTenLayers);

}  // namespace
