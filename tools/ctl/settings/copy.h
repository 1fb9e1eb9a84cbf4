// SPDX-License-Identifier: Apache-2.0
// Work on a copy of the appliance that cannot reach the real one.
#pragma once

#include <functional>

#include "tools/ctl/settings/image.h"

namespace ctl {

struct CopyResult {
  Image after;  // the store of the copy when the work was done
  Json json;    // what the work gave back
};

// A refusal on its way from one process to another.
Json packed(const Refusal& refusal);
Refusal unpacked(const Json& refusal);

// Runs the work in a process of its own, in namespaces of its own (mounts, network, System V IPC, processes, host
// name), with a store that starts as the one given: attached, unlocked, without engine and tasks. Everything that is
// mounted is read-only there, but for copies of what the library writes; no program, no signal and no clock of the
// appliance can be reached. The Refusal that the work throws is thrown on; a process that dies is kSystem.
CopyResult onCopy(const Image& start, const std::function<Json()>& work);

}  // namespace ctl
