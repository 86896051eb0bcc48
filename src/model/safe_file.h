// SPDX-License-Identifier: GPL-2.0-or-later
// A result file that is replaced as a whole or not at all.
#pragma once

#include <sys/types.h>

#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace tolvik {

/// A file for writing that replaces the old one only when Commit() renames it, so that a kill or a full disk
/// leaves the complete old file or the complete new one. Where the file system has files without a name, the
/// new file is invisible before Commit(), and a kill leaves no trace of it.
///
/// A symbolic link keeps its target, and an existing file keeps its owner and its permissions. A pipe or a
/// device is written as the text comes. A file in a folder that permits no new ones, or whose owner cannot be
/// kept, gets its content by OverwriteFile in Commit(). Without Commit() no file changes.
class SafeFile {
 public:
  explicit SafeFile(const std::string& file_name);
  ~SafeFile();
  SafeFile(const SafeFile&) = delete;
  SafeFile& operator=(const SafeFile&) = delete;

  /// False when the file cannot be opened for writing; an existing file stays.
  bool IsOpen() const { return fd_ >= 0; }

  /// Stream of the new content. Its state is bad once the disk refuses more.
  std::ostream& Stream() { return stream_; }

  /// Puts the content in its place; to be called once, at the end. False when any of it could not be written.
  bool Commit();

 private:
  // Writes to the open file in large blocks.
  class Buffer : public std::streambuf {
   public:
    explicit Buffer(const int& fd);

   protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override;

   private:
    const int& fd_;
    std::vector<char> block_;
  };

  void Open(const std::string& file_name);
  void OpenCopy();
  bool OpenAside(int old);
  bool OpenNameless();
  bool OpenNamed();
  bool TakeOver(int old);
  bool IsStored();
  bool PutIntoPlace();
  bool TakeName();
  void Discard();

  // Destination of the text: a pipe or a device; or a file that replaces the target or is copied over it.
  enum class Way { kStraight, kRename, kCopy };

  int fd_ = -1;
  Way way_ = Way::kStraight;
  std::string target_;  // links resolved
  std::string aside_;   // name of the file beside it, empty while it has none
  Buffer buffer_{fd_};
  std::ostream stream_{&buffer_};
};

}  // namespace tolvik
