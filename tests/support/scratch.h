// SPDX-License-Identifier: GPL-2.0-or-later
// A folder of its own for one test, removed at the end.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace tolvik::testing {

class ScratchFolder {
 public:
  ScratchFolder() {
    // mkdtemp replaces six letters X at the end.
    std::string pattern =
        (std::filesystem::temp_directory_path() / "tolvik-test-").string() + std::string(6, 'X');
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch folder");
    path_ = pattern;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  /// Path of a file of that name in the folder.
  std::string Path(const std::string& name) const { return (path_ / name).string(); }

  /// Writes a file byte for byte and returns its path.
  std::string Write(const std::string& name, const std::string& text) const {
    std::ofstream(Path(name), std::ios::binary) << text;
    return Path(name);
  }

  /// The whole file, byte for byte.
  std::string Read(const std::string& name) const {
    std::ifstream in(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

 private:
  std::filesystem::path path_;
};

}  // namespace tolvik::testing
