// SPDX-License-Identifier: GPL-2.0-or-later
// How long does the program take from its start to its exit? Beside it the same for /bin/true, which is what
// the system itself needs to start and reap a process.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <string>
#include <vector>

namespace {

// Starts a program with its output thrown away and waits for its end; the exit value.
int RunProgram(std::vector<std::string> words) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  int status = -1;
  if (posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), nullptr) == 0) waitpid(child, &status, 0);
  posix_spawn_file_actions_destroy(&actions);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

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
