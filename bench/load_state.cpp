// SPDX-License-Identifier: GPL-2.0-or-later
// How fast does a state file of 10 MB load and save, and how much memory does it take? Compared with the
// plain way: lines by std::getline, numbers by a stream for each line.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tolvik/state_file.h"

namespace {

using namespace tolvik;

constexpr std::size_t kFileBytes = 10'000'000;

// A state of one long measurement, with as many points as fill the file.
CState LongMeasurement() {
  CState state;
  state.lambda = 1.54;
  CDataset dataset;
  dataset.datasettitle = "long";
  constexpr int kBytesPerPoint = 50;
  for (std::size_t i = 0; i < kFileBytes / kBytesPerPoint; ++i) {
    const double x = static_cast<double>(i);
    dataset.dataset_qz.Append(1e-3 + 2.34567e-6 * x);
    dataset.dataset_R0.Append(0.987654 / (1 + x));
  }
  state.datasets.Append(std::move(dataset));
  return state;
}

// The file, removed at the end; the process id keeps two runs apart.
class StateFile {
 public:
  StateFile() : path_(std::filesystem::temp_directory_path() / ("tolvik-bench-" + std::to_string(getpid()))) {
    SaveState(LongMeasurement(), path_);
  }
  ~StateFile() {
    if (getpid() == owner_) std::filesystem::remove(path_);
  }
  std::string Path() const { return path_; }
  std::int64_t Bytes() const { return static_cast<std::int64_t>(std::filesystem::file_size(path_)); }

 private:
  std::string path_;
  pid_t owner_ = getpid();
};

const StateFile& File() {
  static const StateFile file;
  return file;
}

void LoadStateFile(benchmark::State& run) {
  const std::string path = File().Path();
  for (auto _ : run) {
    CState state;
    if (!LoadState(state, path)) run.SkipWithError("not loaded");
    benchmark::DoNotOptimize(state.datasets.data);
  }
  run.SetBytesProcessed(run.iterations() * File().Bytes());
}
BENCHMARK(LoadStateFile)->Unit(benchmark::kMillisecond);

void LoadPlainStreams(benchmark::State& run) {
  const std::string path = File().Path();
  for (auto _ : run) {
    std::ifstream in(path);
    std::vector<double> qz, r;
    std::string line, key, equals;
    while (std::getline(in, line)) {
      std::istringstream words(line);
      double value = 0;
      words >> key >> equals >> value;
      if (key == "dataset_qz") qz.push_back(value);
      if (key == "dataset_R0") r.push_back(value);
    }
    benchmark::DoNotOptimize(qz.data());
    benchmark::DoNotOptimize(r.data());
  }
  run.SetBytesProcessed(run.iterations() * File().Bytes());
}
BENCHMARK(LoadPlainStreams)->Unit(benchmark::kMillisecond);

void SaveStateFile(benchmark::State& run) {
  CState state;
  LoadState(state, File().Path());
  const std::string path = File().Path() + "-saved";
  for (auto _ : run) SaveState(state, path);
  std::filesystem::remove(path);
  run.SetBytesProcessed(run.iterations() * File().Bytes());
}
BENCHMARK(SaveStateFile)->Unit(benchmark::kMillisecond);

// Peak resident memory, kB, as the kernel counts it for this process since its last reset.
long PeakKb() {
  std::ifstream in("/proc/self/status");
  std::string word;
  while (in >> word && word != "VmHWM:") {
  }
  long kb = 0;
  in >> kb;
  return kb;
}

// Peak memory of one load over the size of the file, in a child of its own.
void LoadMemory(benchmark::State& run) {
  double ratio = 0;
  for (auto _ : run) {
    int ends[2];
    if (pipe(ends) != 0) run.SkipWithError("no pipe");
    if (fork() == 0) {
      malloc_trim(0);
      std::ofstream("/proc/self/clear_refs") << 5;  // the peak begins here
      const long before = PeakKb();
      CState state;
      LoadState(state, File().Path());
      const double found =
          static_cast<double>(PeakKb() - before) * 1024 / static_cast<double>(File().Bytes());
      _exit(write(ends[1], &found, sizeof found) == sizeof found ? 0 : 1);
    }
    if (read(ends[0], &ratio, sizeof ratio) != sizeof ratio) run.SkipWithError("no answer");
    close(ends[0]);
    close(ends[1]);
    wait(nullptr);
  }
  run.counters["times_file_size"] = ratio;
}
BENCHMARK(LoadMemory)->Iterations(1);

}  // namespace
