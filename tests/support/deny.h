// SPDX-License-Identifier: Apache-2.0
// A process in which the kernel refuses a system call. For use in another process: there is no way back.
#pragma once

#include <errno.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

namespace kestrove::testing {

#ifdef SYS_setuid32
constexpr long kSetUid = SYS_setuid32;
#else
constexpr long kSetUid = SYS_setuid;
#endif
constexpr long kFork = SYS_clone;

// From now on the call fails with EPERM in this process and its children.
inline void denySystemCall(long number) {
  sock_filter program[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<uint32_t>(number), 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  sock_fprog filter = {sizeof program / sizeof program[0], program};
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) abort();
}

}  // namespace kestrove::testing
