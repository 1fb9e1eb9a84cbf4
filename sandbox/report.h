// SPDX-License-Identifier: Apache-2.0
// How the launcher ends when it cannot go on.
#pragma once

namespace kestrove::sandbox {

// The launcher's own failures, apart from every status a command is likely to give.
constexpr int kLauncherFailed = 125;
constexpr int kNotExecutable = 126;
constexpr int kNotFound = 127;

// One line on standard error; %m is the reason of the last system call. Never returns.
[[noreturn]] void giveUp(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace kestrove::sandbox
