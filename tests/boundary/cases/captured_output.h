// SPDX-License-Identifier: GPL-2.0-or-later
// The output of a call.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>

namespace tolvik::testing {

/// Captures standard output from its construction to Take or to its destruction.
class CapturedOutput {
 public:
  CapturedOutput() : file_(std::tmpfile()) {
    if (file_ == nullptr) throw std::runtime_error("no temporary file");
    std::fflush(stdout);
    saved_ = dup(STDOUT_FILENO);
    dup2(fileno(file_), STDOUT_FILENO);
  }
  ~CapturedOutput() { Take(); }
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  /// Restores standard output and returns the captured text.
  std::string Take() {
    if (file_ == nullptr) return {};
    std::fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
    std::string text;
    std::rewind(file_);
    for (int c; (c = std::fgetc(file_)) != EOF;) text += static_cast<char>(c);
    std::fclose(file_);
    file_ = nullptr;
    return text;
  }

 private:
  std::FILE* file_;
  int saved_ = -1;
};

}  // namespace tolvik::testing
