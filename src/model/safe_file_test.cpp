// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/safe_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include "support/scratch.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

namespace fs = std::filesystem;
using testing::ScratchFolder;

bool Save(const std::string& name, const std::string& text) {
  SafeFile file(name);
  if (!file.IsOpen()) return false;
  file.Stream() << text;
  return file.Commit();
}

std::size_t FilesIn(const ScratchFolder& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder.Path("")), {}));
}

mode_t ModeOf(const std::string& name) {
  struct stat status {};
  stat(name.c_str(), &status);
  return status.st_mode & 07777;
}

uid_t OwnerOf(const std::string& name) {
  struct stat status {};
  stat(name.c_str(), &status);
  return status.st_uid;
}

ino_t InodeOf(const std::string& name) {
  struct stat status {};
  stat(name.c_str(), &status);
  return status.st_ino;
}

constexpr uid_t kNobody = 65534;

// Permissions bind ordinary users only: a test run as root temporarily becomes one, the owner of the folder
// and of the files that are given to it.
class OrdinaryUser {
 public:
  explicit OrdinaryUser(const ScratchFolder& folder, bool give_files = true) {
    if (geteuid() != 0) return;
    EXPECT_EQ(chown(folder.Path("").c_str(), kNobody, kNobody), 0);
    for (const auto& entry : fs::directory_iterator(folder.Path(""))) {
      if (!give_files) break;
      EXPECT_EQ(chown(entry.path().c_str(), kNobody, kNobody), 0);
    }
    EXPECT_EQ(setegid(kNobody), 0);
    EXPECT_EQ(seteuid(kNobody), 0);
    changed_ = true;
  }
  ~OrdinaryUser() {
    if (!changed_) return;
    EXPECT_EQ(seteuid(0), 0);
    EXPECT_EQ(setegid(0), 0);
  }

 private:
  bool changed_ = false;
};

// A disk that holds at most this many bytes of one file.
class SmallDisk {
 public:
  explicit SmallDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  }
  ~SmallDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  rlimit before_{};
  void (*handler_)(int);
};

TEST(SafeFile, MakesANewFileUnderTheUmask) {
  const ScratchFolder folder;
  const mode_t umask_before = umask(027);
  EXPECT_TRUE(Save(folder.Path("new"), "text\n"));
  umask(umask_before);
  EXPECT_EQ(folder.Read("new"), "text\n");
  EXPECT_EQ(ModeOf(folder.Path("new")), 0640u);
  EXPECT_EQ(FilesIn(folder), 1u) << "nothing stays aside";
}

TEST(SafeFile, ReplacesAFileAndKeepsItsPermissions) {
  const ScratchFolder folder;
  const std::string name = folder.Write("old", "a much longer old text");
  chmod(name.c_str(), 0604);
  const ino_t before = InodeOf(name);
  EXPECT_TRUE(Save(name, "new"));
  EXPECT_EQ(folder.Read("old"), "new");
  EXPECT_EQ(ModeOf(name), 0604u);
  EXPECT_NE(InodeOf(name), before) << "written aside, not in place";
  EXPECT_EQ(FilesIn(folder), 1u);
}

TEST(SafeFile, OldFileStandsUntilCommit) {
  const ScratchFolder folder;
  const std::string name = folder.Write("old", "old");
  {
    SafeFile file(name);
    file.Stream() << "new" << std::flush;
    EXPECT_EQ(folder.Read("old"), "old");
  }
  EXPECT_EQ(folder.Read("old"), "old") << "no Commit, no change";
  EXPECT_EQ(FilesIn(folder), 1u);
}

TEST(SafeFile, AFileWithoutANameOfItsOwnStandsUntilCommitToo) {
  const ScratchFolder folder;
  const std::string name = folder.Write("out", "old");
  const int fd = open(name.c_str(), O_WRONLY);
  {
    SafeFile file("/proc/self/fd/" + std::to_string(fd));
    ASSERT_TRUE(file.IsOpen());
    file.Stream() << "new" << std::flush;
    EXPECT_EQ(folder.Read("out"), "old");
  }
  close(fd);
  EXPECT_EQ(folder.Read("out"), "old");
}

TEST(SafeFile, AFullDiskLeavesTheOldFile) {
  const ScratchFolder folder;
  const std::string name = folder.Write("old", "old");
  {
    const SmallDisk disk(100000);
    EXPECT_FALSE(Save(name, std::string(300000, 'x')));
    EXPECT_FALSE(Save(folder.Path("new"), std::string(300000, 'x')));
    EXPECT_TRUE(Save(folder.Path("small"), std::string(99999, 'x')));
  }
  EXPECT_EQ(folder.Read("old"), "old");
  EXPECT_FALSE(fs::exists(folder.Path("new")));
  EXPECT_EQ(FilesIn(folder), 2u) << "nothing stays aside";
}

TEST(SafeFile, DevicesAreWrittenInPlace) {
  EXPECT_TRUE(Save("/dev/null", "text"));
  EXPECT_FALSE(Save("/dev/full", "text"));
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST(SafeFile, APipeIsWrittenInPlace) {
  const ScratchFolder folder;
  const std::string name = folder.Path("pipe");
  ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
  const std::string text(200000, 'p');
  bool saved = false;
  std::thread writer([&] { saved = Save(name, text); });
  EXPECT_EQ(folder.Read("pipe"), text);
  writer.join();
  EXPECT_TRUE(saved);
  EXPECT_TRUE(fs::is_fifo(name));
}

TEST(SafeFile, StandardStreamsAreNotReplaced) {
  // A virtual link of the kernel shows a name, but writing goes to the open file.
  const ScratchFolder folder;
  const std::string name = folder.Write("out", "old");
  const int fd = open(name.c_str(), O_WRONLY);
  ASSERT_GE(fd, 0);
  const ino_t before = InodeOf(name);
  EXPECT_TRUE(Save("/proc/self/fd/" + std::to_string(fd), "new"));
  close(fd);
  EXPECT_EQ(folder.Read("out"), "new");
  EXPECT_EQ(InodeOf(name), before);
}

TEST(SafeFile, LinksKeepPointingWhereTheyDid) {
  const ScratchFolder folder;
  fs::create_directory(folder.Path("deep"));
  const std::string target = folder.Write("deep/target", "old");
  fs::create_symlink("deep/target", folder.Path("link"));
  fs::create_symlink("link", folder.Path("chain"));
  EXPECT_TRUE(Save(folder.Path("chain"), "new"));
  EXPECT_TRUE(fs::is_symlink(folder.Path("chain")));
  EXPECT_TRUE(fs::is_symlink(folder.Path("link")));
  EXPECT_EQ(folder.Read("deep/target"), "new");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path("deep")), {}), 1);
}

TEST(SafeFile, ALinkToNothingGetsItsFile) {
  const ScratchFolder folder;
  fs::create_symlink("target", folder.Path("link"));
  EXPECT_TRUE(Save(folder.Path("link"), "new"));
  EXPECT_TRUE(fs::is_symlink(folder.Path("link")));
  EXPECT_EQ(folder.Read("target"), "new");
}

TEST(SafeFile, LinksInACircleCannotBeOpened) {
  const ScratchFolder folder;
  fs::create_symlink("b", folder.Path("a"));
  fs::create_symlink("a", folder.Path("b"));
  EXPECT_FALSE(Save(folder.Path("a"), "new"));
  EXPECT_EQ(FilesIn(folder), 2u);
}

TEST(SafeFile, AFolderThatTakesNoNewFileIsWrittenInPlace) {
  const ScratchFolder folder;
  const std::string name = folder.Write("old", "old and longer");
  chmod(folder.Path("").c_str(), 0555);
  const ino_t before = InodeOf(name);
  {
    const OrdinaryUser user(folder);
    EXPECT_TRUE(Save(name, "new"));
    EXPECT_FALSE(Save(folder.Path("another"), "new"));
  }
  chmod(folder.Path("").c_str(), 0755);
  EXPECT_EQ(folder.Read("old"), "new");
  EXPECT_EQ(InodeOf(name), before);
  EXPECT_EQ(FilesIn(folder), 1u);
}

TEST(SafeFile, AProtectedFileIsNotReplaced) {
  const ScratchFolder folder;
  const std::string name = folder.Write("old", "old");
  chmod(name.c_str(), 0444);
  {
    const OrdinaryUser user(folder);
    EXPECT_FALSE(Save(name, "new"));
  }
  EXPECT_EQ(folder.Read("old"), "old");
  EXPECT_EQ(FilesIn(folder), 1u);
}

TEST(SafeFile, AFileKeepsItsOwner) {
  const ScratchFolder folder;
  const std::string mine = folder.Write("mine", "old");
  const bool root = geteuid() == 0;  // only root can change owners, or own files of others
  if (root) {
    EXPECT_EQ(chown(mine.c_str(), kNobody, kNobody), 0);
  }
  EXPECT_TRUE(Save(mine, "new"));
  EXPECT_EQ(OwnerOf(mine), root ? kNobody : geteuid());

  // A file of another user that all may write: replacing it would change its owner, so it is written in
  // place.
  const std::string theirs = folder.Write("theirs", "old and longer");
  chmod(theirs.c_str(), 0666);
  const uid_t owner = OwnerOf(theirs);
  {
    const OrdinaryUser user(folder, false);
    EXPECT_TRUE(Save(theirs, "new"));
  }
  EXPECT_EQ(OwnerOf(theirs), owner);
  EXPECT_EQ(folder.Read("theirs"), "new");
  EXPECT_EQ(FilesIn(folder), 2u);
}

// Saves over a file that is a mount point, which no rename can replace. Exit value 0 on success, 77 where
// mounting is not allowed.
int SaveOverMountPoint(const ScratchFolder& folder) {
  if (unshare(geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS) != 0) return 77;
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return 77;
  const std::string inside = folder.Path("inside"), outside = folder.Path("outside");
  if (mount(outside.c_str(), inside.c_str(), nullptr, MS_BIND, nullptr) != 0) return 77;
  if (!Save(inside, "new")) return 1;
  return folder.Read("inside") == "new" ? 0 : 2;
}

TEST(SafeFile, AMountPointIsWrittenInPlace) {
  const ScratchFolder folder;
  folder.Write("inside", "hidden");
  folder.Write("outside", "old and longer");
  const pid_t child = fork();
  if (child == 0) _exit(SaveOverMountPoint(folder));
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  const bool mounted = WEXITSTATUS(status) != 77;
  EXPECT_TRUE(!mounted || WEXITSTATUS(status) == 0) << WEXITSTATUS(status);
  EXPECT_EQ(folder.Read("outside"), mounted ? "new" : "old and longer");
  EXPECT_EQ(folder.Read("inside"), "hidden");
  EXPECT_EQ(FilesIn(folder), 2u);
}

TEST(SafeFile, FoldersAndMissingFoldersCannotBeOpened) {
  const ScratchFolder folder;
  for (const std::string& name : {folder.Path(""), folder.Path("missing/file"), std::string()}) {
    SafeFile file(name);
    EXPECT_FALSE(file.IsOpen()) << name;
    file.Stream() << "text";
    EXPECT_FALSE(file.Stream().good());
    EXPECT_FALSE(file.Commit());
  }
  EXPECT_EQ(FilesIn(folder), 0u);
}

TEST(SafeFile, LongTextsAndManySmallOnesArriveWhole) {
  const ScratchFolder folder;
  SafeFile file(folder.Path("big"));
  std::string expected;
  for (int i = 0; i < 50000; ++i) {
    file.Stream() << i << '\n';
    expected += std::to_string(i) + '\n';
    if (i % 20000 == 0) {
      const std::string block(100000, 'x');
      file.Stream() << block;
      expected += block;
    }
  }
  ASSERT_TRUE(file.Commit());
  EXPECT_EQ(folder.Read("big"), expected);
}

TEST(SafeFile, ARelativeNameStaysInItsFolder) {
  const ScratchFolder folder;
  const fs::path before = fs::current_path();
  fs::current_path(folder.Path(""));
  const bool saved = Save("plain", "text");
  fs::current_path(before);
  EXPECT_TRUE(saved);
  EXPECT_EQ(folder.Read("plain"), "text");
}

TEST(SafeFile, SaveStateReportsWhatHappened) {
  const ScratchFolder folder;
  const CState state;
  EXPECT_TRUE(SaveState(state, folder.Path("a.state")));
  EXPECT_FALSE(SaveState(state, folder.Path("missing/a.state")));
  EXPECT_FALSE(SaveState(state, "/dev/full"));
}

}  // namespace
}  // namespace tolvik
