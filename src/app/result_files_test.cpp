// SPDX-License-Identifier: GPL-2.0-or-later
// Result files of the long commands: always the complete old one or the complete new one, after a kill and on
// a full disk too.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdlib>
#include <random>
#include <sstream>
#include <thread>

#include "app/fit_commands.h"
#include "app/fitmap_command.h"
#include "app/kk_command.h"
#include "app/map_file.h"
#include "support/child.h"
#include "support/fit_project.h"
#include "support/sanitized.h"
#include "support/scratch.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

using namespace std::chrono_literals;
using testing::Child;
using testing::FilmState;
using testing::ScratchFolder;

// The keys of a state file, without the values that a fit changes.
std::string Keys(const std::string& text) {
  std::string keys;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) keys += line.substr(0, line.find('=')) + "\n";
  return text.ends_with("\n") ? keys : keys + "cut";
}

int CountFiles(const ScratchFolder& folder) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder.Path("."))) {
    (void)entry;
    ++files;
  }
  return files;
}

// A thousand in an ordinary build; under a sanitizer each fork copies its shadow memory, which takes a
// hundred times as long.
constexpr int kKills = testing::kSanitized ? 100 : 1000;

TEST(ResultFiles, KillsLeaveWholeFiles) {
  const ScratchFolder folder;
  std::vector<CState> states = {FilmState(3), FilmState(3)};
  const std::string keys = Keys(FormatState(states[0]));
  const std::string old = FormatState(states[0]);
  std::mt19937 random(1);
  std::uniform_int_distribution<int> microseconds(0, 6000);
  int replaced = 0;
  for (int i = 0; i < kKills; ++i) {
    folder.Write("a.new", old);
    Child child(
        folder.Path("."),
        [&] {
          FitCommand(states, {"a", "b"});
        },
        Child::Output::kDropped);
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
    child.Kill();
    const std::string now = folder.Read("a.new");
    ASSERT_EQ(Keys(now), keys) << "kill " << i;
    replaced += now != old ? 1 : 0;
    if (std::filesystem::exists(folder.Path("b.new"))) {
      ASSERT_EQ(Keys(folder.Read("b.new")), keys) << "kill " << i;
    }
  }
  EXPECT_GT(replaced, kKills / 10);  // the kills happened between and during saves
}

TEST(ResultFiles, KillsLeaveAWholeTableOfTheKramersKronigFit) {
  const ScratchFolder folder;
  std::string table;
  for (int E = 780; E < 920; ++E)
    table += std::to_string(E) + " 1e-3 " + std::to_string(1e-5 * (E % 30)) + "\n";
  folder.Write("LSAT2.db", table);
  std::mt19937 random(2);
  std::uniform_int_distribution<int> microseconds(0, 8000);
  int written = 0;
  for (int i = 0; i < 100; ++i) {
    Child child(
        folder.Path("."), [] { FitKramersKronigCommand("LSAT2.db"); }, Child::Output::kDropped);
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
    child.Kill();
    if (!std::filesystem::exists(folder.Path("fitdb.txt"))) continue;
    const std::string text = folder.Read("fitdb.txt");
    EXPECT_TRUE(text.starts_with("790.000000 ")) << text;
    EXPECT_NE(text.find("\n910.000000 "), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with("\n"));
    ++written;
  }
  EXPECT_GT(written, 10);
}

void LimitFileSize(pid_t process, rlim_t bytes) {
  rlimit limit{};
  ASSERT_EQ(prlimit(process, RLIMIT_FSIZE, nullptr, &limit), 0);
  limit.rlim_cur = bytes;
  ASSERT_EQ(prlimit(process, RLIMIT_FSIZE, &limit, nullptr), 0);
}

TEST(ResultFiles, AFullDiskKeepsTheOldFileAndTheFitGoesOn) {
  const ScratchFolder folder;
  folder.Write("film.new", "the old file\n");
  std::vector<CState> states = {FilmState()};
  Child child(folder.Path("."), [&] {
    LimitFileSize(0, 600);
    FitCommand(states, {"film"});
  });
  std::string lines = child.ReadOut(7 + 2 + 10 + 1 + 10 + 1 + 1, 30s);  // three saves
  EXPECT_NE(lines.find("iteration=21: "), std::string::npos) << lines;
  EXPECT_EQ(folder.Read("film.new"), "the old file\n");

  LimitFileSize(child.Id(), RLIM_INFINITY);  // there is room again
  for (int i = 0; i < 400 && folder.Read("film.new") == "the old file\n"; ++i) child.ReadOut(11, 1s);
  child.Kill();
  EXPECT_EQ(Keys(folder.Read("film.new")), Keys(FormatState(states[0])));
}

TEST(ResultFiles, AFullDiskLeavesNothingBeside) {
  const ScratchFolder folder;
  std::vector<CState> states = {FilmState()};
  Child child(folder.Path("."), [&] {
    LimitFileSize(0, 600);
    states[0].fitalgorithm = 5;
    FitCommand(states, {"film"});
  });
  child.ReadOut(9, 30s);
  child.ReadOut(3, 30s);  // the first save is over
  LimitFileSize(child.Id(), 0);
  EXPECT_LE(CountFiles(folder), 1);  // at most the one that is being written
  EXPECT_FALSE(std::filesystem::exists(folder.Path("film.new")));
}

TEST(ResultFiles, FitMapKeepsTheOldStateOnAFullDisk) {
  const ScratchFolder folder;
  folder.Write("test.all", "the old file\n");
  Child child(folder.Path("."), [&] {
    LimitFileSize(0, 600);
    CState state = FilmState();
    state.mode = 2;  // needs no tables
    CMapFile map(state);
    FitMapCommand(map);
  });
  EXPECT_EQ(child.ReadErr(3, 30s), "save state\nFit thickness 1\nFit sigma 1\n");
  EXPECT_EQ(child.Wait(), 0);
  EXPECT_EQ(folder.Read("test.all"), "the old file\n");
}

}  // namespace
}  // namespace tolvik
