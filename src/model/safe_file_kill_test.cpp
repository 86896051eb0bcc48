// SPDX-License-Identifier: GPL-2.0-or-later
// Files that a kill, or a refusing kernel, leaves in the folder of a file that is being saved.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "model/safe_file.h"
#include "support/child.h"
#include "support/refused_calls.h"
#include "support/scratch.h"

namespace tolvik {
namespace {

namespace fs = std::filesystem;
using testing::RefuseCalls;
using testing::RunAside;
using testing::ScratchFolder;

constexpr int kNotAllowed = 77;  // exit value of a child whose kernel takes no filter
const std::string kText(300000, 'x');

void Fill(SafeFile& file) {
  file.Stream() << kText << std::flush;
}

int Save(const std::string& name) {
  SafeFile file(name);
  Fill(file);
  return file.Commit() ? 0 : 1;
}

// Saves while the kernel refuses these calls.
int SaveRefused(const std::string& name, std::initializer_list<testing::RefusedCall> calls, int error) {
  return RunAside([&] { return RefuseCalls(calls, error) ? Save(name) : kNotAllowed; });
}

bool HasNamelessFiles(const ScratchFolder& folder) {
  const int fd = open(folder.Path("").c_str(), O_TMPFILE | O_RDWR, 0600);
  if (fd >= 0) close(fd);
  return fd >= 0;
}

// Names in the folder that the test did not make.
std::vector<std::string> Leftovers(const ScratchFolder& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder.Path(""))) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with(".tolvik-")) names.push_back(name);
  }
  return names;
}

TEST(SafeFileKill, WhileWritingLeavesTheOldFileAndNothingElse) {
  const ScratchFolder folder;
  const std::string name = folder.Write("old", "old");
  for (const std::string& target : {name, folder.Path("new")}) {
    EXPECT_EQ(RunAside([&] {
                SafeFile file(target);
                Fill(file);
                kill(getpid(), SIGKILL);
                return 0;
              }),
              -SIGKILL);
  }
  EXPECT_EQ(folder.Read("old"), "old");
  EXPECT_FALSE(fs::exists(folder.Path("new")));
  EXPECT_EQ(Leftovers(folder).size(), HasNamelessFiles(folder) ? 0u : 2u);
}

TEST(SafeFileKill, BeforeTheRenameLeavesTheOldFileAndAWholeNewOne) {
  const ScratchFolder folder;
  const std::string name = folder.Write("old", "old");
  const int result = RunAside([&] {
    const bool deadly = testing::DieAtCalls({
#ifdef SYS_rename
        {SYS_rename},
#endif
        {SYS_renameat},
        {SYS_renameat2}});
    return deadly ? Save(name) : kNotAllowed;
  });
  EXPECT_TRUE(result == -SIGSYS || result == kNotAllowed) << result;
  EXPECT_EQ(folder.Read("old"), "old");
  const std::vector<std::string> left = Leftovers(folder);
  ASSERT_EQ(left.size(), result == -SIGSYS ? 1u : 0u);
  for (const std::string& file : left) EXPECT_EQ(folder.Read(file), kText);
}

TEST(SafeFileRefusal, WithoutNamelessFilesANamedOneStandsAside) {
  for (const int error : {EOPNOTSUPP, EISDIR, EINVAL, ENOENT}) {
    const ScratchFolder folder;
    const std::string name = folder.Write("old", "old");
    fs::permissions(name, fs::perms(0604));
    for (const std::string& target : {name, folder.Path("new")}) {
      const int result = SaveRefused(target, {testing::kOpenNameless}, error);
      ASSERT_TRUE(result == 0 || result == kNotAllowed) << result;
      EXPECT_EQ(folder.Read(fs::path(target).filename()) == kText, result == 0);
    }
    EXPECT_EQ(fs::status(name).permissions(), fs::perms(0604));
    EXPECT_TRUE(Leftovers(folder).empty());
  }
}

TEST(SafeFileRefusal, ANamedFileGoesWhenItIsNotCommitted) {
  const ScratchFolder folder;
  const int result = RunAside([&] {
    if (!RefuseCalls({testing::kOpenNameless}, EOPNOTSUPP)) return kNotAllowed;
    SafeFile file(folder.Path("new"));
    Fill(file);
    return Leftovers(folder).size() == 1 ? 0 : 1;  // seen while it is written
  });
  EXPECT_TRUE(result == 0 || result == kNotAllowed) << result;
  EXPECT_TRUE(fs::is_empty(folder.Path("")));
}

TEST(SafeFileRefusal, AFileThatCannotBeNamedIsCopied) {
  const ScratchFolder folder;
  const std::string name = folder.Write("old", std::string(400000, 'o'));
  const int result = SaveRefused(name, {{SYS_linkat}}, EPERM);
  ASSERT_TRUE(result == 0 || result == kNotAllowed) << result;
  if (result == 0) {
    EXPECT_EQ(folder.Read("old"), kText);
  }
  EXPECT_TRUE(Leftovers(folder).empty());
}

}  // namespace
}  // namespace tolvik
