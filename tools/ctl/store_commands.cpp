// status, load, save, check.
#include <fcntl.h>
#include <sys/shm.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/common/loading_note.h"
#include "tools/ctl/check.h"
#include "tools/ctl/commands.h"

namespace ctl {
namespace {

constexpr char kLockFile[] = "/var/lock/shm";

// Asked on a descriptor of its own while this process holds no lock: closing it would drop one.
Json lockHolder() {
  int fd = open(kLockFile, O_RDWR | O_CLOEXEC);
  if (fd == -1) return std::string("no lock file: ") + strerror(errno);
  struct flock request = {};
  request.l_type = F_WRLCK;
  request.l_whence = SEEK_SET;
  int result = fcntl(fd, F_GETLK, &request);
  close(fd);
  if (result == -1) return std::string("unknown: ") + strerror(errno);
  if (request.l_type == F_UNLCK) return "nobody";
  return "process " + std::to_string(request.l_pid);
}

Json segmentFacts() {
  int id = shmget(SHM_KEY, 1, 0);
  if (id == -1) return {{"store", "absent"}};
  struct shmid_ds facts = {};
  if (shmctl(id, IPC_STAT, &facts) == -1) throw Refusal(kSystem, std::string("segment: ") + strerror(errno));
  bool ours = facts.shm_segsz >= SHM_SIZE;
  return {{"store", ours ? "present" : "foreign segment under the key"},
          {"key", SHM_KEY},
          {"size", facts.shm_segsz},
          {"attachedProcesses", facts.shm_nattch}};
}

void status(const Session& session) {
  Json facts = segmentFacts();
  facts["lockHeldBy"] = lockHolder();
  if (facts["store"] != "present") {
    session.show(facts);
    throw Refusal(kNoStore, "");
  }
  requireStore();
  int state = accept(getSharedMemoryStatus(), "state");
  facts["state"] = state;
  facts["stateName"] = strOperationalState(state);
  facts["configurationFile"] = text(shm->config.configFileName);
  session.show(facts);
}

void load(const Session& session, const std::string& path) {
  requireStore();
  tools::LoadingNote note(static_cast<uint32_t>(accept(getShmOperationalState(), "state")));
  if (!note.written()) fprintf(stderr, "kestrovectl: the load cannot be noted; a kill now would leave state 4\n");
  int result = load_shared_memory(path.c_str());
  if (result < 0) throw Refusal(kSystem, path + ": " + (result == -2 ? "does not exist" : "cannot be read"));
  session.done("loaded " + path);
}

void save(const Session& session) {
  requireStore();
  const bool configuring = getShmOperationalState() == SHM_STATE_CONFIGURATION;
  accept(configuring ? write_shared_memory() : save_shared_memory(), "the configuration cannot be saved");
  session.done("saved " + text(shm->config.configFileName));
}

void check(const Session& session) {
  requireStore();
  accept(shm_lock(), "lock");
  std::vector<Finding> findings = checkStore(*shm);
  shm_unlock();
  for (Finding& finding : checkPasswordFile(*shm)) findings.push_back(finding);
  Json rows = Json::array();
  for (const Finding& finding : findings) rows.push_back({{"table", finding.table}, {"finding", finding.text}});
  session.show(session.json || !rows.empty() ? Json{{"findings", rows}} : Json("every table is sound"));
  if (!rows.empty()) throw Refusal(kFindings, "");
}

}  // namespace

void addStoreCommands(CLI::App& app, Session& session) {
  app.add_subcommand("status", "Store, state, size, attached processes, holder of the lock")->callback([&session] {
    status(session);
  });

  CLI::App* loading = app.add_subcommand("load", "Read a configuration file into the store");
  static std::string path;
  loading->add_option("FILE", path, "Configuration file")->required();
  loading->callback([&session] { load(session, path); });

  app.add_subcommand("save", "Write the configuration file")->callback([&session] { save(session); });
  app.add_subcommand("check", "Check the invariants of every table, changing nothing")->callback([&session] {
    check(session);
  });
}

}  // namespace ctl
