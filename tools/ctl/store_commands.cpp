// SPDX-License-Identifier: Apache-2.0
// status, save, check.
#include <sys/shm.h>

#include <cerrno>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/common/loading_note.h"
#include "tools/common/lock_wait.h"
#include "tools/ctl/check.h"
#include "tools/ctl/commands.h"

namespace ctl {
namespace {

Json segmentFacts() {
  int id = shmget(SHM_KEY, 1, 0);
  if (id == -1 && errno == ENOENT) return {{"store", "absent"}};
  struct shmid_ds facts = {};
  if (id == -1 || shmctl(id, IPC_STAT, &facts) == -1) throw systemRefusal("the segment", errno);
  bool ours = facts.shm_segsz >= SHM_SIZE;
  return {{"store", ours ? "present" : "foreign segment under the key"},
          {"key", SHM_KEY},
          {"size", facts.shm_segsz},
          {"attachedProcesses", facts.shm_nattch}};
}

std::string holderText(const tools::LockAnswer& answer) {
  switch (answer.state) {
    case tools::LockState::kFree: return "nobody";
    case tools::LockState::kHeld: return tools::describe(answer.holder);
    case tools::LockState::kMissing: return "nobody: there is no lock file";
    case tools::LockState::kDenied:
    case tools::LockState::kFailed: return std::string("unknown: /var/lock/shm: ") + strerror(answer.error);
  }
  return {};
}

void addState(Json& facts, uint32_t state) {
  facts["state"] = state;
  facts["stateName"] = strOperationalState(static_cast<int>(state));
}

// False where others have the lock by now.
bool readLocked(const Session& session, Json& facts) {
  Session hasty = session;
  hasty.waitSeconds = 0;
  try {
    requireStore(hasty);
    awaitLock(hasty);
  } catch (const Refusal& refusal) {
    if (refusal.exit() != kLocked) throw;
    return false;
  }
  int state = accept(getSharedMemoryStatus(), "state");
  addState(facts, static_cast<uint32_t>(state));
  facts["configurationFile"] = text(shm->config.configFileName);
  return true;
}

// One word is whole at every moment; a text may be half written.
void readUnlocked(Json& facts) {
  const int id = shmget(SHM_KEY, SHM_SIZE, 0);
  void* segment = id == -1 ? reinterpret_cast<void*>(-1) : shmat(id, nullptr, SHM_RDONLY);
  if (segment == reinterpret_cast<void*>(-1)) throw systemRefusal("the store", errno);
  addState(facts, static_cast<const ShmData*>(segment)->operationalState);
  shmdt(segment);
  facts["configurationFile"] = "not read: that needs the lock";
}

// Never waits: what needs a lock that others have is left out.
void status(const Session& session) {
  Json facts = segmentFacts();
  const tools::LockAnswer lock = tools::tryLock();
  facts["lockHeldBy"] = holderText(lock);
  const bool present = facts["store"] == "present";
  if (present && (lock.state != tools::LockState::kFree || !readLocked(session, facts))) readUnlocked(facts);
  session.show(facts);
  if (!present) throw Refusal(kNoStore, "");
}

void save(const Session& session) {
  requireStore(session);
  awaitLock(session);
  const bool configuring = getShmOperationalState() == SHM_STATE_CONFIGURATION;
  const std::string path = text(shm->config.configFileName);
  awaitLock(session);
  shm_errno = SHM_OK;
  errno = 0;
  const int result = configuring ? write_shared_memory() : save_shared_memory();
  if (result == 0 && shm_errno == SHM_OK) return session.done("saved " + path);
  const Refusal reason = errno != 0 ? systemRefusal(path, errno) : refusal(path);
  if (reason.exit() == kNotPermitted) throw Refusal(reason);
  throw Refusal(kNotSaved, std::string("not saved: ") + reason.what(), static_cast<int>(shm_errno), reason.error());
}

void check(const Session& session) {
  requireStore(session);
  std::vector<Finding> findings;
  {
    awaitLock(session);
    const tools::Hold hold;
    if (!hold) throw refusal("the store cannot be locked");
    findings = checkStore(*shm);
    for (Finding& finding : checkPasswordFile(*shm)) findings.push_back(finding);
  }
  Json rows = Json::array();
  for (const Finding& finding : findings) rows.push_back({{"table", finding.table}, {"finding", finding.text}});
  session.show(!session.forPeople() || !rows.empty() ? Json{{"findings", rows}} : Json("every table is sound"));
  if (!rows.empty()) throw Refusal(kFindings, "");
}

}  // namespace

std::vector<Command> storeCommands() {
  return {command("status", "Store, state, size, attached processes, holder of the lock; never waits", status),
          changing("save", "Write the configuration file", save),
          command("check", "Check the invariants of every table, changing nothing", check)};
}

}  // namespace ctl
