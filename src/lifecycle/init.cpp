// SPDX-License-Identifier: Apache-2.0
// The birth of the store.
#include <errno.h>
#include <syslog.h>

#include "kestrove/codes.h"
#include "kestrove/events.h"
#include "kestrove/persistence.h"
#include "kestrove/segment.h"
#include "kestrove/stats.h"
#include "kestrove/unit.h"
#include "lifecycle/fresh.h"
#include "lifecycle/short_version.h"
#include "store/fail.h"
#include "store/segment.h"
#include "store/text.h"
#include "sys/replace.h"

namespace kestrove {
namespace {

constexpr char kFactoryDefaults[] = "/etc/config/factory.defaults";
constexpr char kEventLogFile[] = "/var/log/kestrove/event.log";
constexpr size_t kLongestPath = 127;
constexpr char kNobody[] = "--";

struct Minimums {
  uint32_t rate;
  uint32_t mtu;
};
// They bound the items of rates and MTUs, and the bandwidth of rules.
constexpr Minimums kDrelmMinimums = {256000, 128};
constexpr Minimums kMinimums = {10000, 576};

bool drelm() { return shm->config.productId == SHM_PRODUCT_DRELM; }

int failWith(const char* text) {
  shm_perror(text);
  return -1;
}

int takeLock() {
  if (create_lock_file() != 0) return failWith("Error creating lock file");
  if (takeStoreLock() != 0) return failWith("Error taking shm lock");
  holdNewStore();
  return 0;
}

// Failures leave the lock counted: the start-up program gives up then.
int makeSegment() {
  if (!shm) syslog(LOG_WARNING, "Shm pointer was not null.");  // test and text disagree: kept on purpose
  Segment made = createSegment();
  if (made == Segment::kFailed) return -1;
  if (!shm) return fail(SHM_EATTACH);
  if (made == Segment::kCreated) layOutRouteTables();
  return 0;
}

void setMinimums() {
  Minimums minimums = drelm() ? kDrelmMinimums : kMinimums;
  shm->config.minRate = minimums.rate;
  shm->config.minMtu = minimums.mtu;
}

// A name from the factory defaults goes before the one given.
void nameFiles(const char* configPath, const char* eventLogPath) {
  ConfigRecord& config = shm->config;
  if (fieldLength(config.configFileName) == 0) setField(config.configFileName, configPath, kLongestPath);
  setField(config.eventLogFileName, eventLogPath, kLongestPath);
}

void loadConfiguration() {
  char path[sizeof shm->config.configFileName + 1];
  copyField(path, sizeof path, shm->config.configFileName);
  sys::removeLeftovers(path);  // of saves that were killed
  if (load_shared_memory(path) < 0) shm->operationalState = SHM_STATE_UNCONFIGURED;
}

// A log that can be read goes on in the fixed place, wherever it came from; one that cannot keeps its name.
void loadEventLog() {
  char path[sizeof shm->config.eventLogFileName + 1];
  copyField(path, sizeof path, shm->config.eventLogFileName);
  if (read_event_log(path, &shm->eventLog) == 0) {
    setField(shm->config.eventLogFileName, kEventLogFile);
  } else {
    syslog(LOG_INFO, "Error opening event log (%s): %m", kEventLogFile);
  }
}

// A port that is missing leaves zeros.
void readHardwareAddresses() {
  writeMacAddr(SHM_IF_BASE, shm->lanHardwareAddress);
  writeMacAddr(SHM_IF_WAN, shm->wanHardwareAddress);
  writeMacAddr(SHM_IF_MANAGEMENT, shm->managementHardwareAddress);
}

// No terminator is written: the bytes behind are zero in a fresh segment.
template <size_t N>
void deriveShortVersion(const char (&full)[N], char (&brief)[N]) {
  shortVersion(fieldView(full)).copy(brief, N);
}

void deriveIdentity() {
  ConfigRecord& config = shm->config;
  deriveShortVersion(config.kestroveFullVersion, config.kestroveVersion);
  setGatewayId();  // of a vendor that is not known it is stored all the same
  if (drelm()) deriveShortVersion(config.drelmFullVersion, config.drelmVersion);
}

void fillStore(const char* configPath, const char* eventLogPath) {
  load_shared_memory(kFactoryDefaults);  // without them the store begins with zeros
  // Of the product that the defaults name; one that only the configuration names comes too late: kept on purpose.
  setMinimums();
  resetRuleTable();  // the default rule has the least rate for its bandwidth
  nameFiles(configPath, eventLogPath);
  loadConfiguration();
  loadEventLog();
  readHardwareAddresses();
  deriveIdentity();
  resetStats(SHM_SOURCE_SYSTEM, kNobody);  // behind the log's image, which would overwrite its events
}

// The operations of the filling are parts of this one: whoever waits for the store gets in when it is whole.
int build(const char* configPath, const char* eventLogPath, bool keepHold) {
  if (!configPath || !eventLogPath) return fail(SHM_EINVAL);
  if (takeLock() != 0) return -1;
  if (makeSegment() != 0) {
    giveUpNewStore();
    return -1;
  }
  fillStore(configPath, eventLogPath);
  endHoldOfNewStore(keepHold);
  return 0;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int init_shared_memory(const char* configPath, const char* eventLogPath) {
  return build(configPath, eventLogPath, false);
}

int kestrove_build(const char* configPath, const char* eventLogPath) { return build(configPath, eventLogPath, true); }
