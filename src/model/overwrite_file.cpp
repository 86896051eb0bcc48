// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/overwrite_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace tolvik {
namespace {

constexpr std::size_t kBlock = 1 << 16;
constexpr mode_t kNewFile = 0666;  // less the umask

off_t SizeOf(int fd) {
  struct stat status;
  return fstat(fd, &status) == 0 ? status.st_size : -1;
}

bool CutAt(int fd, off_t size) {
  return ftruncate(fd, size) == 0;
}

// Copies the content of one file over that of another, which is cut only afterwards: its blocks stay with the
// file. Some disks refuse only when they are forced to write, hence the fsync.
bool CopyContent(int from, int to) {
  std::vector<char> block(kBlock);
  if (lseek(to, 0, SEEK_SET) != 0) return false;
  off_t size = 0;
  while (true) {
    const ssize_t count = pread(from, block.data(), block.size(), size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) return CutAt(to, size) && fsync(to) == 0;
    if (!WriteAll(to, block.data(), static_cast<std::size_t>(count))) return false;
    size += count;
  }
}

// Reserves blocks for the first bytes of a file, which may become longer. Succeeds on a file system that
// cannot reserve.
bool Reserve(int fd, off_t size) {
  if (size <= 0) return size == 0;
  const int error = posix_fallocate(fd, 0, size);
  return error == 0 || error == EOPNOTSUPP || error == EINVAL;
}

bool ReplaceOrRestore(int from, int to, int kept) {
  const off_t old_size = SizeOf(to);
  const bool can_restore = kept >= 0 && CopyContent(to, kept);
  if (!Reserve(to, SizeOf(from))) {
    if (SizeOf(to) != old_size) CutAt(to, old_size);  // a part was reserved
    return false;
  }
  if (CopyContent(from, to)) return true;
  if (can_restore) CopyContent(kept, to);
  return false;
}

}  // namespace

bool WriteAll(int fd, const char* text, std::size_t count) {
  while (count > 0) {
    const ssize_t written = write(fd, text, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    text += written;
    count -= static_cast<std::size_t>(written);
  }
  return true;
}

int OpenInMemory() {
  return memfd_create("tolvik", MFD_CLOEXEC);
}

bool OverwriteFile(int from, const std::string& file_name) {
  int to = open(file_name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kNewFile);
  // A file may be writable and not readable; then only the reserved space protects it.
  if (to < 0) to = open(file_name.c_str(), O_WRONLY | O_CLOEXEC);
  if (to < 0) return false;
  const int kept = OpenInMemory();
  const bool replaced = ReplaceOrRestore(from, to, kept);
  if (kept >= 0) close(kept);
  return close(to) == 0 && replaced;
}

}  // namespace tolvik
