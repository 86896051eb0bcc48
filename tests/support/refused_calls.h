// SPDX-License-Identifier: GPL-2.0-or-later
// A kernel that refuses system calls, for situations that a test cannot make otherwise: an old file system, a
// kill at one exact point.
#pragma once

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cstddef>
#include <initializer_list>
#include <vector>

namespace tolvik::testing {

/// One rule: a call of that number, and where `flag` is not 0 only one whose third argument has that bit.
struct RefusedCall {
  long number;
  unsigned flag = 0;
};

/// Makes the calls end by `action` for the rest of this process: use it in a forked one. False where the
/// kernel does not allow such a filter.
inline bool FilterCalls(std::initializer_list<RefusedCall> calls, unsigned action) {
  std::vector<sock_filter> program;
  for (const RefusedCall& call : calls) {
    program.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)));
    program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(call.number), 0, 3));
    program.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])));
    program.push_back(BPF_JUMP(BPF_JMP | (call.flag == 0 ? BPF_JGE : BPF_JSET) | BPF_K, call.flag, 0, 1));
    program.push_back(BPF_STMT(BPF_RET | BPF_K, action));
  }
  program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog filter = {static_cast<unsigned short>(program.size()), program.data()};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

/// The calls fail with that error.
inline bool RefuseCalls(std::initializer_list<RefusedCall> calls, int error) {
  return FilterCalls(calls, SECCOMP_RET_ERRNO | static_cast<unsigned>(error));
}

/// The process dies at once where it makes one of the calls.
inline bool DieAtCalls(std::initializer_list<RefusedCall> calls) {
  return FilterCalls(calls, SECCOMP_RET_KILL_PROCESS);
}

/// O_TMPFILE without the O_DIRECTORY in it.
inline constexpr RefusedCall kOpenNameless = {SYS_openat, O_TMPFILE & ~O_DIRECTORY};

}  // namespace tolvik::testing
