// SPDX-License-Identifier: GPL-2.0-or-later
// Runs a program to its end, for benchmarks of its whole time.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace tolvik::bench {

/// Starts a program in our environment, discards its output and waits for its end. Returns the exit value, or
/// -1 when it did not exit by itself.
inline int RunProgram(std::vector<std::string> words) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  int status = -1;
  if (posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ) == 0) waitpid(child, &status, 0);
  posix_spawn_file_actions_destroy(&actions);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace tolvik::bench
