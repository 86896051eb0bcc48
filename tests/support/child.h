// SPDX-License-Identifier: GPL-2.0-or-later
// A function in a process of its own, for commands that never return.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace tolvik::testing {

/// Runs a function in a forked process in the given working directory. Its standard output and standard error
/// come through pipes. The destructor kills it.
class Child {
 public:
  enum class Output { kRead, kDropped };

  template <class Function>
  Child(const std::string& folder, Function run, Output output = Output::kRead) {
    int out[2], err[2];
    if (pipe(out) != 0 || pipe(err) != 0) throw std::runtime_error("no pipe");
    std::fflush(stdout);
    pid_ = fork();
    if (pid_ < 0) throw std::runtime_error("no fork");
    if (pid_ == 0) {
      const int null = open("/dev/null", O_WRONLY);
      dup2(output == Output::kRead ? out[1] : null, STDOUT_FILENO);
      dup2(output == Output::kRead ? err[1] : null, STDERR_FILENO);
      for (int fd : {out[0], out[1], err[0], err[1], null}) close(fd);
      std::filesystem::current_path(folder);
      run();
      std::fflush(stdout);
      _exit(0);
    }
    close(out[1]);
    close(err[1]);
    out_ = out[0];
    err_ = err[0];
  }
  ~Child() {
    Kill();
    close(out_);
    close(err_);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  pid_t Id() const { return pid_; }

  /// Ends the process at once; it has no chance to clean up.
  void Kill() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, &status_, 0);
    pid_ = 0;
  }

  /// Waits for the end of the process. The exit value, or -1 for a signal.
  int Wait() {
    if (pid_ > 0) waitpid(pid_, &status_, 0);
    pid_ = 0;
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
  }

  /// The standard output up to that many lines, the end of the process or the end of the time.
  std::string ReadOut(int lines, std::chrono::milliseconds within) { return Read(out_, lines, within); }
  std::string ReadErr(int lines, std::chrono::milliseconds within) { return Read(err_, lines, within); }

 private:
  static std::string Read(int fd, int lines, std::chrono::milliseconds within) {
    const auto end = std::chrono::steady_clock::now() + within;
    std::string text;
    while (lines > 0) {
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
      pollfd ready = {fd, POLLIN, 0};
      char c;
      if (left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) != 1 || read(fd, &c, 1) != 1)
        break;
      text += c;
      if (c == '\n') --lines;
    }
    return text;
  }

  pid_t pid_ = 0;
  int status_ = 0;
  int out_ = -1;
  int err_ = -1;
};

/// Runs a function in a forked process with the streams of this one. Returns its exit value, or minus the
/// number of the signal that ended it.
template <class Function>
int RunAside(Function run) {
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no fork");
  if (child == 0) _exit(run());
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace tolvik::testing
