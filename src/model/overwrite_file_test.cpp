// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/overwrite_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>

#include "support/child.h"
#include "support/refused_calls.h"
#include "support/scratch.h"

namespace tolvik {
namespace {

using testing::RunAside;
using testing::ScratchFolder;

// A file in memory with that text.
class Source {
 public:
  explicit Source(const std::string& text) : fd(OpenInMemory()) {
    EXPECT_TRUE(WriteAll(fd, text.data(), text.size()));
  }
  ~Source() { close(fd); }
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  const int fd;
};

// A disk that holds at most this many bytes of one file, for the rest of this process.
void LimitDisk(rlim_t bytes) {
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit{bytes, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &limit);
}

TEST(OverwriteFile, ReplacesShorterEqualAndLongerContent) {
  const ScratchFolder folder;
  for (const std::size_t before : {0u, 1u, 200000u, 300000u}) {
    for (const std::size_t after : {0u, 1u, 200000u, 300000u}) {
      const std::string text(after, 'n');
      const Source source(text);
      const std::string name = folder.Write("file", std::string(before, 'o'));
      EXPECT_TRUE(OverwriteFile(source.fd, name));
      EXPECT_EQ(folder.Read("file"), text) << before;
    }
  }
  const Source source("text");
  EXPECT_TRUE(OverwriteFile(source.fd, folder.Path("new")));
  EXPECT_EQ(folder.Read("new"), "text");
  EXPECT_FALSE(OverwriteFile(source.fd, folder.Path("")));
  EXPECT_FALSE(OverwriteFile(source.fd, folder.Path("missing/file")));
}

// Overwrites 50 kB by 300 kB on a disk of 100 kB while the kernel refuses a call. The old content must stay.
void OverwriteOnAFullDisk(std::initializer_list<testing::RefusedCall> calls, int error) {
  const ScratchFolder folder;
  const std::string old(50000, 'o');
  const std::string name = folder.Write("file", old);
  const Source source(std::string(300000, 'n'));
  const int result = RunAside([&] {
    if (calls.size() > 0 && !testing::RefuseCalls(calls, error)) return 77;
    LimitDisk(100000);
    return OverwriteFile(source.fd, name) ? 1 : 0;
  });
  EXPECT_TRUE(result == 0 || (calls.size() > 0 && result == 77)) << result;
  EXPECT_EQ(folder.Read("file"), old);
}

TEST(OverwriteFile, AFullDiskLeavesTheOldContent) {
  OverwriteOnAFullDisk({}, 0);
}

TEST(OverwriteFile, ReservedSpaceGuardsContentThatCannotBeKept) {
  OverwriteOnAFullDisk({{SYS_memfd_create}}, ENOSYS);
}

TEST(OverwriteFile, KeptContentComesBackWhereSpaceCannotBeReserved) {
  OverwriteOnAFullDisk({{SYS_fallocate}}, EINVAL);
}

}  // namespace
}  // namespace tolvik
