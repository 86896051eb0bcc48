// SPDX-License-Identifier: GPL-2.0-or-later
// library-cases FOLDER: plays every JSON file of a folder against the exported functions, each in a process
// and a working directory of its own, prints the differences and last "N passed, M failed".
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "boundary/cases/case_player.h"
#include "support/scratch.h"

namespace {

namespace fs = std::filesystem;

// Plays one case; the exit value of its process.
int PlayCase(const fs::path& file) {
  std::optional<std::string> difference;
  try {
    nlohmann::json plan;
    std::ifstream(file) >> plan;
    difference = tolvik::testing::CasePlayer(plan).Play();
  } catch (const std::exception& error) {
    difference = error.what();
  }
  if (difference) std::printf("%s: %s\n", file.stem().c_str(), difference->c_str());
  std::fflush(stdout);
  return difference ? 1 : 0;
}

// A fresh process for each case, since fits, evolution and server live to the end of theirs.
bool RunCase(const fs::path& file) {
  const tolvik::testing::ScratchFolder folder;
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    fs::current_path(folder.Path("."));
    _exit(PlayCase(file));
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) return false;
  if (WIFSIGNALED(status)) std::printf("%s: ended by signal %d\n", file.stem().c_str(), WTERMSIG(status));
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: library-cases FOLDER\n", stderr);
    return 2;
  }
  std::vector<fs::path> files;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(argv[1], error)) {
    if (entry.path().extension() == ".json") files.push_back(fs::absolute(entry.path()));
  }
  if (error) std::fprintf(stderr, "library-cases: %s: %s\n", argv[1], error.message().c_str());
  std::sort(files.begin(), files.end());
  int passed = 0, failed = 0;
  for (const fs::path& file : files) ++(RunCase(file) ? passed : failed);
  std::printf("%d passed, %d failed\n", passed, failed);
  return failed == 0 && !files.empty() ? 0 : 1;
}
