// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/safe_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "model/overwrite_file.h"

namespace tolvik {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBlock = 1 << 16;
constexpr mode_t kNewFile = 0666;  // less the umask
constexpr int kMaxLinks = 40;

// The file at the end of a chain of symbolic links, existing or not. Empty where there is none: links in a
// circle, and virtual links of the kernel such as /dev/stdout, which lead to an open file and not to a name.
std::string ResolveLinks(const std::string& file_name) {
  fs::path path = file_name;
  std::error_code error;
  for (int i = 0; i < kMaxLinks; ++i) {
    if (!fs::is_symlink(fs::symlink_status(path, error))) return path.string();
    if (path.native().starts_with("/proc/")) return {};
    const fs::path next = fs::read_symlink(path, error);
    if (error) return {};
    path = next.is_absolute() ? next : path.parent_path() / next;
  }
  return {};
}

// A folder that permits no new file may still contain one that can be written.
bool IsRefusal(int error) {
  return error == EACCES || error == EPERM || error == EROFS || error == EBUSY || error == EXDEV;
}

// The name that the kernel gives to an open file.
std::string KernelName(int fd) {
  return "/proc/self/fd/" + std::to_string(fd);
}

bool Link(int fd, const std::string& name) {
  return linkat(AT_FDCWD, KernelName(fd).c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

std::string NameBeside(const fs::path& target) {
  static std::atomic<unsigned> counter{0};
  const std::string name = ".tolvik-" + std::to_string(getpid()) + "-" + std::to_string(counter++) + ".tmp";
  return (target.parent_path() / name).string();
}

}  // namespace

SafeFile::Buffer::Buffer(const int& fd) : fd_(fd), block_(kBlock) {
  setp(block_.data(), block_.data() + block_.size());
}

SafeFile::Buffer::int_type SafeFile::Buffer::overflow(int_type c) {
  if (sync() != 0) return traits_type::eof();
  if (!traits_type::eq_int_type(c, traits_type::eof())) sputc(traits_type::to_char_type(c));
  return traits_type::not_eof(c);
}

std::streamsize SafeFile::Buffer::xsputn(const char* text, std::streamsize count) {
  if (count < epptr() - pptr()) return std::streambuf::xsputn(text, count);
  if (sync() != 0 || !WriteAll(fd_, text, static_cast<std::size_t>(count))) return 0;
  return count;
}

int SafeFile::Buffer::sync() {
  const auto count = static_cast<std::size_t>(pptr() - pbase());
  setp(block_.data(), block_.data() + block_.size());
  return WriteAll(fd_, block_.data(), count) ? 0 : -1;
}

SafeFile::SafeFile(const std::string& file_name) {
  Open(file_name);
  if (!IsOpen()) stream_.setstate(std::ios::badbit);
}

SafeFile::~SafeFile() {
  if (way_ == Way::kStraight) stream_.flush();
  Discard();
}

void SafeFile::Open(const std::string& file_name) {
  struct stat status;
  const bool exists = stat(file_name.c_str(), &status) == 0;
  target_ = ResolveLinks(file_name);
  const bool has_name = !target_.empty();
  if (exists ? !S_ISREG(status.st_mode) : !has_name) {
    fd_ = open(file_name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kNewFile);
    return;
  }
  if (!has_name) target_ = file_name;
  // A file that may not be written is not replaced either.
  const int old = exists ? open(target_.c_str(), O_WRONLY | O_CLOEXEC) : -1;
  if (exists && old < 0) return;
  if (!has_name || !OpenAside(old)) OpenCopy();
  if (old >= 0) close(old);
}

// Opens a file in memory, for a target that cannot be replaced by a rename.
void SafeFile::OpenCopy() {
  way_ = Way::kCopy;
  const int target = open(target_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kNewFile);
  if (target < 0) return;
  close(target);
  fd_ = OpenInMemory();
}

// Opens a new file in the folder of the target, so that it can be renamed over it. False when permissions
// forbid it; any other failure, such as a full disk, leaves nothing open and the old file unchanged.
bool SafeFile::OpenAside(int old) {
  way_ = Way::kRename;
  if (!OpenNameless() && !OpenNamed()) return !IsRefusal(errno);
  if (old < 0 || TakeOver(old)) return true;
  Discard();
  return false;
}

// False where the file system has no such files, or where they cannot be given a name later.
bool SafeFile::OpenNameless() {
  const fs::path folder = fs::path(target_).parent_path();
  fd_ = open(folder.empty() ? "." : folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kNewFile);
  if (IsOpen() && access(KernelName(fd_).c_str(), F_OK) != 0) Discard();
  return IsOpen();
}

bool SafeFile::OpenNamed() {
  do {
    aside_ = NameBeside(target_);
    fd_ = open(aside_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kNewFile);
  } while (fd_ < 0 && errno == EEXIST);
  if (!IsOpen()) aside_.clear();
  return IsOpen();
}

// Gives the new file the owner and the permissions of the old one; false when the owner would change.
bool SafeFile::TakeOver(int old) {
  struct stat before, now;
  if (fstat(old, &before) != 0 || fstat(fd_, &now) != 0) return false;
  const bool same_owner = before.st_uid == now.st_uid && before.st_gid == now.st_gid;
  if (!same_owner && fchown(fd_, before.st_uid, before.st_gid) != 0) return false;
  return fchmod(fd_, before.st_mode & 07777) == 0;
}

bool SafeFile::Commit() {
  if (!IsOpen()) return false;
  const bool done = IsStored() && (way_ == Way::kStraight || PutIntoPlace());
  Discard();
  return done;
}

// Some file systems report a full disk only at a close; closing a second descriptor makes them report it.
bool SafeFile::IsStored() {
  if (!stream_.flush().good()) return false;
  const int second = dup(fd_);
  return second < 0 || close(second) == 0;
}

bool SafeFile::PutIntoPlace() {
  return (way_ == Way::kRename && TakeName()) || OverwriteFile(fd_, target_);
}

// A free name is taken at once. A taken one can only be renamed over, which needs a name first: a kill
// between the two steps leaves a complete file beside the old one.
bool SafeFile::TakeName() {
  if (aside_.empty()) {
    if (Link(fd_, target_)) return true;
    std::string name = NameBeside(target_);
    while (!Link(fd_, name)) {
      if (errno != EEXIST) return false;
      name = NameBeside(target_);
    }
    aside_ = name;
  }
  if (std::rename(aside_.c_str(), target_.c_str()) != 0) return false;
  aside_.clear();
  return true;
}

void SafeFile::Discard() {
  if (fd_ >= 0) close(fd_);
  fd_ = -1;
  if (!aside_.empty()) unlink(aside_.c_str());
  aside_.clear();
}

}  // namespace tolvik
