// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/metric_facts.h"

#include <sys/shm.h>

#include "kestrove/kestrove.h"
#include "tools/ctl/watch/lock_waiters.h"

namespace ctl {
namespace {

void readSegment(MetricFacts& facts) {
  struct shmid_ds segment = {};
  const int id = shmget(SHM_KEY, 1, 0);
  if (id == -1 || shmctl(id, IPC_STAT, &segment) == -1) return;
  facts.segmentBytes = segment.shm_segsz;
  facts.attachedProcesses = segment.shm_nattch;
}

void readStore(const Session& session, MetricFacts& facts) {
  try {
    requireStore(session);
    facts.store = runningImage(session);
  } catch (const Refusal& refusal) {
    facts.refusal = refusal;
  }
}

}  // namespace

MetricFacts readMetricFacts(const Session& session) {
  MetricFacts facts;
  facts.lock = tools::lookAtLock();
  if (facts.lock.state == tools::LockState::kHeld) facts.lockWaiters = waitersBehind(facts.lock.holder.pid).size();
  readSegment(facts);
  getSystemUptime(&facts.uptimeHundredths);
  readStore(session, facts);
  return facts;
}

}  // namespace ctl
