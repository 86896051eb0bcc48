// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/safe_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace tolvik {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBlock = 1 << 16;
constexpr mode_t kNewFile = 0666;  // less the umask
constexpr int kMaxLinks = 40;

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

// The file at the end of a chain of symbolic links, existing or not. Empty where there is none: links in a
// circle, and links that the kernel makes up, as /dev/stdout, which lead to an open file and not to a name.
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

// A folder that takes no new file may still hold one that can be written.
bool IsRefusal(int error) {
  return error == EACCES || error == EPERM || error == EROFS || error == EBUSY || error == EXDEV;
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
  if (aside_.empty()) stream_.flush();
  Close();
  if (!aside_.empty()) unlink(aside_.c_str());
}

void SafeFile::Open(const std::string& file_name) {
  struct stat status;
  const bool exists = stat(file_name.c_str(), &status) == 0;
  target_ = ResolveLinks(file_name);
  if (target_.empty() || (exists && !S_ISREG(status.st_mode))) return OpenInPlace(file_name);
  // A file that may not be written is not replaced either.
  const int old = exists ? open(target_.c_str(), O_WRONLY | O_CLOEXEC) : -1;
  if (exists && old < 0) return;
  const bool refused = !OpenAside(old);
  if (old >= 0) close(old);
  if (refused) OpenInPlace(target_);
}

void SafeFile::OpenInPlace(const std::string& file_name) {
  fd_ = open(file_name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kNewFile);
}

// Opens a new file in the folder of the target, so that it can be renamed over it. False when permissions
// stand against it; any other failure, as a full disk, leaves nothing open and the old file as it is.
bool SafeFile::OpenAside(int old) {
  static std::atomic<unsigned> counter{0};
  const fs::path folder = fs::path(target_).parent_path();
  do {
    const std::string name = ".tolvik-" + std::to_string(getpid()) + "-" + std::to_string(counter++) + ".tmp";
    aside_ = (folder / name).string();
    fd_ = open(aside_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFile);
  } while (fd_ < 0 && errno == EEXIST);
  if (fd_ < 0) {
    aside_.clear();
    return !IsRefusal(errno);
  }
  if (old < 0 || TakeOver(old)) return true;
  Close();
  unlink(aside_.c_str());
  aside_.clear();
  return false;
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
  const bool whole = stream_.flush().good();
  if (!Close() || !whole) return false;  // a file aside goes with this object
  return aside_.empty() || MoveIntoPlace();
}

bool SafeFile::MoveIntoPlace() {
  if (std::rename(aside_.c_str(), target_.c_str()) == 0) {
    aside_.clear();
    return true;
  }
  return IsRefusal(errno) && CopyIntoPlace();
}

// For a name that takes no other file: a mount point, or a file of someone else in a folder like /tmp.
bool SafeFile::CopyIntoPlace() {
  const int from = open(aside_.c_str(), O_RDONLY | O_CLOEXEC);
  const int to = open(target_.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  std::vector<char> block(kBlock);
  ssize_t count = 0;
  bool whole = from >= 0 && to >= 0;
  while (whole && (count = read(from, block.data(), block.size())) > 0) {
    whole = WriteAll(to, block.data(), static_cast<std::size_t>(count));
  }
  if (from >= 0) close(from);
  return to >= 0 && close(to) == 0 && whole && count == 0;
}

bool SafeFile::Close() {
  if (fd_ < 0) return true;
  const bool closed = close(fd_) == 0;
  fd_ = -1;
  return closed;
}

}  // namespace tolvik
