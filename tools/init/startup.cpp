// SPDX-License-Identifier: Apache-2.0
#include "tools/init/startup.h"

#include <fcntl.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "kestrove/kestrove.h"
#include "tools/common/config_lint.h"
#include "tools/common/loading_note.h"
#include "tools/common/lock_wait.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/history/finish.h"
#include "tools/init/kept_copy.h"

namespace init {
namespace {

constexpr char kNobody[] = "--";
constexpr char kLockFolder[] = "/var/lock";
constexpr char kLockFile[] = "/var/lock/shm";

void warn(const std::string& text) { fprintf(stderr, "shm-init: %s\n", tools::escaped(text).c_str()); }

std::string reason() {
  const char* text = shm_strerror(static_cast<int>(shm_errno));
  return text ? text : "unknown reason";
}

// Ends the hold that the building of the store leaves.
class Built {
 public:
  Built() = default;
  ~Built() { kestrove_release(); }
  Built(const Built&) = delete;
  Built& operator=(const Built&) = delete;
};

bool segmentExists() { return shmget(SHM_KEY, 1, 0) != -1 || errno != ENOENT; }

bool forbidden(int error) { return error == EACCES || error == EPERM; }

[[noreturn]] void refuse(const std::string& what, int error) {
  const std::string text = what + ": " + strerror(error);
  if (forbidden(error)) throw Failure(kNotPermitted, "not permitted: " + text);
  throw Failure(kNotBuilt, text);
}

// What a dead loader left is put right where that needs no waiting.
[[noreturn]] void leaveStore() {
  if (tools::tryLock().state == tools::LockState::kFree && kestrove_hold() == 0) {
    const std::string note = tools::repairAbandonedLoad();
    kestrove_release();
    if (!note.empty()) warn(note);
  }
  throw Failure(kStoreExists, "there is a store already (--replace builds a new one)");
}

// From here on this process has the lock, so that nobody works on a store that is about to go, or on one that is not
// there yet. A lock file that is missing is made by the building itself.
void takeLock(double seconds) {
  const tools::LockAnswer answer = tools::waitForLock(seconds);
  if (answer.state == tools::LockState::kHeld) throw Failure(kLocked, tools::heldTooLong(answer.holder, seconds));
  if (answer.state == tools::LockState::kDenied) refuse(kLockFile, answer.error);
}

void clearTheWay(const Options& options) {
  const bool exists = segmentExists();
  if (exists && !options.replace) leaveStore();
  takeLock(options.waitSeconds);
  errno = 0;
  if (exists && delete_shared_memory() != 0) refuse("the present store cannot be removed", errno);
}

bool readsToItsEnd(const std::string& path) {
  int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd == -1) return false;
  char buffer[65536];
  ssize_t length;
  while ((length = read(fd, buffer, sizeof buffer)) > 0) {
  }
  close(fd);
  return length == 0;
}

// The first save would put what was read in the place of what could not be: such a file is moved aside.
void keepUnreadable(const std::string& path) {
  struct stat facts;
  if (stat(path.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode) || readsToItsEnd(path)) return;
  std::string kept = path + ".unreadable";
  if (rename(path.c_str(), kept.c_str()) == 0) {
    warn(path + " cannot be read; kept as " + kept);
  } else {
    warn(path + " cannot be read and cannot be kept: " + strerror(errno));
  }
}

std::string configFileName() {
  const auto& field = shm->config.configFileName;
  return std::string(field, strnlen(field, sizeof field));
}

// The library has said on standard error which step failed, but not in a form that a program can ask for.
[[noreturn]] void refuseBuilding() {
  const bool denied =
      access(kLockFile, R_OK | W_OK) != 0 && (forbidden(errno) || access(kLockFolder, W_OK) != 0) && forbidden(errno);
  throw Failure(denied ? kNotPermitted : kNotBuilt,
                denied ? std::string("not permitted: ") + kLockFile : "the store cannot be built");
}

// Before anything saves: the file then holds only what could be understood of it.
void keepDamaged(const std::string& path) {
  const tools::ConfigReport report = tools::inspectConfig(path);
  if (report.error != 0 || report.faults.empty()) return;
  const std::string what = path + " is damaged (" + tools::faultText(report) + ")";
  std::string kept;
  const int error = keepCopy(path, kept);
  warn(error == 0 ? what + "; kept as " + kept : what + " and cannot be kept: " + strerror(error));
}

void build(const Options& options) {
  keepUnreadable(options.configPath);
  if (kestrove_build(options.configPath.c_str(), options.eventLogPath.c_str()) != 0 || !shm) refuseBuilding();
  std::string path = configFileName();  // the factory defaults may name another file
  if (path != options.configPath) keepUnreadable(path);
  keepDamaged(path);
}

bool isRuleRow(const std::string& line) {
  size_t start = line.find_first_not_of("\t ");
  if (start == std::string::npos) return false;
  std::string keyword = line.substr(start, line.find_first_of("\t \n", start) - start);
  return keyword == "SELEC_ACCEL" || keyword == "SELEC_ACCEL_V6" || keyword == "SELEC_ACCEL_ANY";
}

// The rule rows of the configuration file alone, in their order, in a file of their own.
class RuleRows {
 public:
  explicit RuleRows(const std::string& configPath) {
    char name[] = "/tmp/shm-init-rules-XXXXXX";
    int fd = mkstemp(name);
    if (fd == -1) throw Failure(kIncomplete, std::string("rule rows: ") + strerror(errno));
    close(fd);
    path_ = name;
    std::ifstream source(configPath);
    std::ofstream rows(path_);
    for (std::string line; std::getline(source, line);) {
      if (isRuleRow(line)) rows << line << '\n';
    }
  }
  ~RuleRows() { unlink(path_.c_str()); }
  RuleRows(const RuleRows&) = delete;
  RuleRows& operator=(const RuleRows&) = delete;
  const char* path() const { return path_.c_str(); }

 private:
  std::string path_;
};

void keepOnlyDefaultRule() {
  FilterTable& table = shm->filterTable;
  if (table.ruleCount > 1 && table.ruleCount <= SHM_RULES) table.rule[0] = table.rule[table.ruleCount - 1];
  table.rule[0].ipVersion = SHM_FAMILY_ANY;
  table.ruleCount = 1;
}

// Rows were read when IPv6 support was not known yet: read again now that it is, before anything saves.
void rereadRules() {
  RuleRows rows(configFileName());
  keepOnlyDefaultRule();
  if (load_shared_memory(rows.path()) != 0) throw Failure(kIncomplete, "the rules cannot be read again");
}

void applyPlatform(const Platform& platform) {
  bool had = shm->config.ipv6Support == SHM_ON;
  storePlatform(platform);
  if (!had && shm->config.ipv6Support == SHM_ON) rereadRules();
}

void becomeOperational() {
  if (shm->operationalState != SHM_STATE_UNCONFIGURED) shm->operationalState = SHM_STATE_OPERATIONAL;
}

// The mode has no keyword: the two switches say which it is.
void deriveMode() {
  ConfigRecord& config = shm->config;
  bool single = config.singleInterfaceMode == SHM_ON;
  config.opModeState = single && config.pbrOperState == SHM_ON ? 2 : single ? 1 : 0;
}

// A later step that fails is named; the ones behind it are tried all the same.
bool finish() {
  bool whole = true;
  if (addOldUser() < 0) {
    warn("the old administrator account cannot be moved: " + reason());
    whole = false;
  }
  becomeOperational();
  deriveMode();
  OpModeContext context = {};
  if (OpModeState(SHM_MODE_EVENT_POWERED_ON, &context) != 0) {
    warn("the operating mode cannot be set up: " + reason());
    whole = false;
  }
  if (updateKernelRules() != 0) {
    warn("the packet filter cannot be reset");
    whole = false;
  }
  if (logEvent(SHM_EVENT_SYSTEM_STARTED, SHM_SOURCE_SYSTEM, kNobody) != 0 && shm_errno != SHM_ELOGOFF) {
    warn("the start cannot be logged: " + reason());
  }
  return whole;
}

}  // namespace

Exit startUp(const Options& options) {
  ctl::EndAtStart unconfirmed(options.waitSeconds);
  clearTheWay(options);
  build(options);
  Built held;  // who waits for the store finds it ready
  applyPlatform(options.platform);
  bool whole = finish();
  whole = unconfirmed.end() && whole;
  if (shm->operationalState == SHM_STATE_UNCONFIGURED) {
    warn("no configuration could be read; the store holds the factory defaults");
    return kUnconfigured;
  }
  return whole ? kBuilt : kIncomplete;
}

}  // namespace init
