// SPDX-License-Identifier: Apache-2.0
// System calls as effects.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>

#include "tools/ctl/trace/effect.h"

namespace ctl {

struct SystemCall {
  uint64_t number;
  uint64_t arguments[6];
};

// The call itself where a program reached it through the one call that carries all of the socket's (32-bit programs).
SystemCall unpacked(pid_t process, const SystemCall& call);

// What a call that a stopped process is about to make does outside it. Nothing for calls that only look.
std::optional<Effect> effectOf(pid_t process, const SystemCall& call);

// Whether the call receives on the same descriptor as the one that sent.
bool receivesAfter(const SystemCall& sent, const SystemCall& call);

// The kernel's answer to a netlink message, in what a receiving call has read.
std::optional<int> receivedAnswer(pid_t process, const SystemCall& call, int64_t length);

}  // namespace ctl
