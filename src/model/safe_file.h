// SPDX-License-Identifier: GPL-2.0-or-later
// A result file that is replaced as a whole or not at all.
#pragma once

#include <sys/types.h>

#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace tolvik {

/// A file for writing that stands aside until Commit() renames it over the old one, so that a kill or a full
/// disk leaves the old file or the new one, never a half.
///
/// A symbolic link keeps pointing where it did and an existing file keeps its permissions. A pipe or a device
/// is written in place, and so is a file in a folder that takes no new ones. Without Commit() a file written
/// aside disappears again.
class SafeFile {
 public:
  explicit SafeFile(const std::string& file_name);
  ~SafeFile();
  SafeFile(const SafeFile&) = delete;
  SafeFile& operator=(const SafeFile&) = delete;

  /// False when the file cannot be opened for writing; whatever stands there stays.
  bool IsOpen() const { return fd_ >= 0; }

  /// What is written here is the content of the file. Its state is bad once the disk refuses more.
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
  void OpenInPlace(const std::string& file_name);
  bool OpenAside(int old);
  bool TakeOver(int old);
  bool MoveIntoPlace();
  bool CopyIntoPlace();
  bool Close();

  int fd_ = -1;
  std::string target_;  // links resolved
  std::string aside_;   // empty while writing in place
  Buffer buffer_{fd_};
  std::ostream stream_{&buffer_};
};

}  // namespace tolvik
