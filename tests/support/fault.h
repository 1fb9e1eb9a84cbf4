// SPDX-License-Identifier: Apache-2.0
// System calls that fail, one at a time.
//
// A piece of work runs in a child process whose system calls are traced. One of them, counted from the start of the
// work, is struck: it fails with a chosen error instead of being made, or the process is killed just before it. A sweep
// raises the number until the work makes no such call any more.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "kestrove/kestrove.h"

namespace kestrove::testing {

constexpr int kKilled = 0;  // in place of an error

struct Strike {
  int call;   // from 1; calls of the memory allocator are not counted
  int error;  // an errno value, or kKilled
};

struct Aftermath {
  bool struck = false;    // the work made that many calls
  long systemCall = -1;   // its number in the kernel's table
  bool finished = false;  // the work came back
  int status = 0;         // of the child, as waitpid gives it
  int result = 0;         // of the work
  unsigned code = 0;      // shm_errno after it
  int leaked = 0;         // descriptors more than before
};

using Work = std::function<int()>;

Aftermath strike(const Work& work, const Strike& strike);

// Runs the work once for every call that it makes and every error, each time after prepare(), and hands what came of
// it to check(); with a stride only every so manieth call, beginning with the first. At least one call must have been
// struck for each error.
void sweepFaults(const std::vector<int>& errors, const std::function<void()>& prepare, const Work& work,
                 const std::function<void(const Strike&, const Aftermath&)>& check, int stride = 1);

// Every call where KESTROVE_CRASH_STRIDE is 1; few of those of a long piece of work where it is not set.
int crashStride(int usual);

// SIGKILL, EIO, ENOSPC, EMFILE and EINTR.
std::vector<int> usualFaults();

// Whoever was struck has not kept the lock.
inline void expectLockFree() {
  EXPECT_EQ(0, shm_lock());
  EXPECT_EQ(0, shm_unlock());
}

// For SCOPED_TRACE.
std::string describe(const Strike& strike, const Aftermath& aftermath);

}  // namespace kestrove::testing
