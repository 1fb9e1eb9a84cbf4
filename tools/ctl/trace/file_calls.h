// SPDX-License-Identifier: Apache-2.0
// Files that a command writes, as effects.
#pragma once

#include <sys/types.h>

#include <optional>
#include <vector>

#include "tools/ctl/trace/calls.h"
#include "tools/ctl/trace/effect.h"

namespace ctl {

// "write PATH", "create PATH", "rename PATH to PATH", "remove PATH", "make folder PATH". Nothing for what only reads,
// for devices, and for the lock and the notes beside it, which every command has.
std::optional<Effect> fileEffect(pid_t process, const SystemCall& call);

// Puts the answer to one of these into the list. What leaves nothing behind goes out of it, with an empty kind: a file
// that was made and removed again; one that was made under another name is the file that it became; a second writing.
void settleFile(std::vector<Effect>& effects, size_t index, int64_t answer);

}  // namespace ctl
