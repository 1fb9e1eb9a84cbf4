// SPDX-License-Identifier: Apache-2.0
// The exported operations on the rule table.
#include "kestrove/rules.h"
#include "kestrove/codes.h"

#include "kestrove/engine.h"
#include "kestrove/persistence.h"
#include "net/policy/normalise.h"
#include "store/bounds.h"
#include "store/change_save.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/mode.h"
#include "store/pending.h"
#include "store/rule_slots.h"
#include "store/segment.h"

namespace kestrove {
namespace {

FilterRule* rules() { return shm->filterTable.rule; }

bool inUse(int position) { return position >= 0 && position < ruleEntries(*shm); }
bool isDefaultRule(int position) { return position == ruleEntries(*shm) - 1; }

int checkEditable(int position) {
  if (!inUse(position)) return fail(SHM_EINVAL);
  return isDefaultRule(position) ? fail(SHM_EREADONLY) : 0;
}

// A rule that no engine hears of is in the table all the same.
void markAndSignal() {
  markPending(SHM_CHANGE_RULES);
  notifyKestrove();
}

// In Configuration Mode neither: -1 for saveRuleTable, which does nothing else; the others have changed the table.
int saveAndSignal() {
  if (configurationMode()) return -1;
  ChangeSave save;
  save.run(save_shared_memory);
  if (!debugMode()) markAndSignal();
  save.leaveCode();
  return 0;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

// The caller's record is normalised in place, that of a rule that is then refused too: kept on purpose.
int insertRule(int position, FilterRule* rule) {
  if (!rule) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  clearOtherFamilies(*rule);
  if (!masksAreValid(*rule)) return fail(SHM_EMASK);
  if (!inUse(position)) return fail(SHM_EINVAL);
  if (ruleEntries(*shm) == SHM_RULES) return fail(SHM_EFULL);
  raiseBandwidth(*rule);
  reduceActiveRule(*rule);
  FilterRule stored = *rule;  // before the shift, for a caller that hands in a record of the table itself
  stored.order = 0;
  openRule(*shm, position, stored);
  saveAndSignal();
  return 0;
}

// The two last arguments are accepted for old callers and mean nothing.
int addRule(int position, FilterRule* rule, int, int) { return insertRule(position, rule); }

int moveRule(int from, int to) {
  StoreLock lock;
  if (!lock) return -1;
  if (!inUse(to)) return fail(SHM_EINVAL);
  if (checkEditable(from) != 0) return -1;
  if (to == from || to == from + 1) return 0;  // places count as before the move: both are where it stands
  shiftRule(*shm, from, from > to ? to : to - 1);
  saveAndSignal();
  return 0;
}

int changeRule(int position, FilterRule* rule) {
  if (!rule) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock || checkEditable(position) != 0) return -1;
  raiseBandwidth(*rule);
  clearOtherFamilies(*rule);
  if (!masksAreValid(*rule)) return fail(SHM_EMASK);
  reduceActiveRule(*rule);
  replaceRule(*shm, position, *rule);
  saveAndSignal();
  return 0;
}

int deleteRule(int position) {
  StoreLock lock;
  if (!lock || checkEditable(position) != 0) return -1;
  closeRule(*shm, position);
  saveAndSignal();
  return 0;
}

int getRuleTableEntry(int position, FilterRule* out) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  if (!inUse(position)) return fail(SHM_EINVAL);
  *out = rules()[position];
  return 0;
}

// Unlocks without a lock, too, and so leaves the code of that: kept on purpose.
int getRuleCount(void) {
  StoreLock lock;
  if (lock) return shm->filterTable.ruleCount;
  shm_unlock();
  return -1;
}

// Takes no lock of its own: for callers that changed the table by themselves.
int saveRuleTable(void) { return attachStore() ? saveAndSignal() : -1; }
