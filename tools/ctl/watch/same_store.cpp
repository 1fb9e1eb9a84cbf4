// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/same_store.h"

#include <sys/shm.h>

#include "kestrove/kestrove.h"
#include "tools/ctl/session.h"

namespace ctl {
namespace {

int presentSegment() { return shmget(SHM_KEY, 1, 0); }

}  // namespace

SameStore::SameStore() : segment_(presentSegment()) {}

void SameStore::require() const {
  if (presentSegment() != segment_) throw Refusal(kNoStore, "the store is gone or was built anew", SHM_EATTACH);
}

}  // namespace ctl
