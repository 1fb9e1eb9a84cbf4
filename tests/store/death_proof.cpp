// SPDX-License-Identifier: Apache-2.0
#include "tests/store/death_proof.h"

#include <stddef.h>
#include <string.h>

#include "store/journal.h"
#include "store/slots.h"
#include "tests/support/records.h"
#include "tests/support/single_step.h"
#include "tests/support/store.h"
#include "tools/ctl/check.h"

namespace kestrove::testing {
namespace {

constexpr size_t kWatchedSlots = 8;
constexpr size_t kMostFaults = 20;

template <typename T>
std::string bytesOf(const T& value, size_t size = sizeof(T)) {
  return {reinterpret_cast<const char*>(&value), size};
}

template <typename Record>
std::string bytesOfAll(const Record* records, int32_t count) {
  return count <= 0 ? "" : bytesOf(*records, static_cast<size_t>(count) * sizeof(Record));
}

template <typename Slot, size_t N>
std::string bytesOfList(const Slot (&slots)[N], uint32_t head) {
  std::string bytes;
  eachInOrder(slots, head, [&](const Slot& slot) {
    bytes += bytesOf(slot, offsetof(Slot, inUse));
    return true;
  });
  return bytes;
}

std::string bytesOfEvents(const EventLog& log) {
  if (!log.eventLogFull) return bytesOfAll(log.record, static_cast<int32_t>(log.writeIndex));
  auto oldest = static_cast<int32_t>(log.readIndex);
  return bytesOfAll(log.record + oldest, SHM_EVENTS - oldest) + bytesOfAll(log.record, oldest);
}

// All of the store but the tails of its large tables.
std::vector<Stretch> usualStretches() {
  auto offset = [](const void* place) {
    return static_cast<size_t>(static_cast<const char*>(place) - reinterpret_cast<const char*>(shm));
  };
  auto upTo = [&](const void* from, const void* to) { return Stretch{offset(from), offset(to) - offset(from)}; };
  const EventLog& log = shm->eventLog;
  return {upTo(shm, &shm->routes.slot[kWatchedSlots]), upTo(&shm->reserved11, &shm->routes6.slot[kWatchedSlots]),
          upTo(&shm->filterTable, &shm->filterTable.rule[kWatchedSlots]), upTo(&shm->qos, &log.record[kWatchedSlots]),
          upTo(&shm->reserved17, shm + 1)};
}

void copy(ShmData& to, const ShmData& from, const Stretch& stretch) {
  memcpy(reinterpret_cast<char*>(&to) + stretch.at, reinterpret_cast<const char*>(&from) + stretch.at, stretch.size);
}

bool same(const ShmData& a, const ShmData& b, const Stretch& stretch) {
  return memcmp(reinterpret_cast<const char*>(&a) + stretch.at, reinterpret_cast<const char*>(&b) + stretch.at,
                stretch.size) == 0;
}

std::unique_ptr<ShmData> copyOfStore() { return std::make_unique<ShmData>(*shm); }

bool quiet(const ShmData& store) {
  for (uint8_t byte : store.reserved32) {
    if (byte != 0) return false;
  }
  return true;
}

}  // namespace

Tables::Tables(const ShmData& store)
    : users(bytesOfAll(store.config.users, store.config.userCount) + bytesOf(store.config.adminUserCount)),
      addresses(bytesOfAll(store.managementAddress, store.managementAddressCount)),
      addresses6(bytesOfAll(store.ip6Address, store.ip6Count)),
      routes(bytesOfList(store.routes.slot, store.routes.head)),
      routes6(bytesOfList(store.routes6.slot, store.routes6.head6)),
      rules(bytesOfAll(store.filterTable.rule, store.filterTable.ruleCount)),
      events(bytesOfEvents(store.eventLog)) {}

DeathProof::DeathProof(std::function<void()> operation, std::vector<Stretch> stretches, Tell between)
    : operation_(std::move(operation)),
      between_(std::move(between)),
      stretches_(std::move(stretches)),
      start_(copyOfStore()),
      last_(copyOfStore()),
      holder_(copyOfStore()),
      before_(*shm) {
  for (const Stretch& stretch : usualStretches()) stretches_.push_back(stretch);
}

Proof DeathProof::run() {
  Steps steps = singleStep(operation_, [this] {
    if (changed()) askNextHolder();
    return proof_.faults.size() < kMostFaults;
  });
  proof_.instructions = steps.count;
  if (steps.finished) endOfWork();
  if (!steps.finished && proof_.faults.empty()) fault("the work does not end");
  return std::move(proof_);
}

bool DeathProof::dieAt(int instant) {
  int instants = 0;
  return !singleStep(operation_, [&] { return !changed() || ++instants < instant; }).finished;
}

bool DeathProof::changed() {
  bool any = false;
  for (const Stretch& stretch : stretches_) {
    if (same(*shm, *last_, stretch)) continue;
    copy(*last_, *shm, stretch);
    any = true;
  }
  return any;
}

void DeathProof::askNextHolder() {
  ++proof_.instants;
  for (const Stretch& stretch : stretches_) copy(*holder_, *last_, stretch);
  Outcome outcome = finishWork(*holder_);
  proof_.finished += outcome == Outcome::kFinished;
  proof_.takenBack += outcome == Outcome::kTakenBack;
  if (outcome == Outcome::kNonsense) fault("the note is nonsense");
  if (!quiet(*holder_)) fault("the note is still there");
  std::vector<ctl::Finding> findings = ctl::checkStore(*holder_);
  for (const ctl::Finding& finding : findings) fault(finding.table + ": " + finding.text);
  if (findings.empty()) judge(Tables(*holder_));
}

void DeathProof::judge(const Tables& tables) {
  if (tables == before_) {
    if (after_) fault("the change is gone again");
  } else if (between_ && between_(tables)) {
    return;
  } else if (!after_) {
    after_ = std::make_unique<Tables>(tables);
  } else if (tables != *after_) {
    fault("a state in between");
  }
}

void DeathProof::fault(const std::string& text) {
  proof_.faults.push_back("instant " + std::to_string(proof_.instants) + ": " + text);
}

bool DeathProof::watched(size_t at) const {
  for (const Stretch& stretch : stretches_) {
    if (at >= stretch.at && at < stretch.at + stretch.size) return true;
  }
  return false;
}

void DeathProof::endOfWork() {
  if (changed()) askNextHolder();
  Tables end(*shm);
  if (!quiet(*shm)) fault("the work leaves a note");
  if (after_ && *after_ != end) fault("the end is not what the instants led to");
  if (!after_ && !between_ && end != before_) fault("the end was not seen coming");
  const auto* now = reinterpret_cast<const char*>(shm);
  const auto* then = reinterpret_cast<const char*>(start_.get());
  for (size_t i = 0; i < sizeof(ShmData); ++i) {
    if (now[i] == then[i] || watched(i)) continue;
    return fault("byte " + std::to_string(i) + " changed unwatched");
  }
}

FilterRule ruleNamed(int32_t port) {
  FilterRule rule = tcpRule();
  rule.srcPort = rule.srcPortEnd = rule.destPort = rule.destPortEnd = port;
  rule.priority = port;
  rule.bandwidth = 1000000 + port;
  return rule;
}

UserAccount userNamed(const char* name, int32_t superUser) {
  UserAccount account = {};
  memcpy(account.username, name, strlen(name));
  account.superUser = superUser;
  account.lastLoginSeconds = account.lastPasswdChange = 1000 + name[0];
  return account;
}

RouteEntry routeNamed(uint8_t number) {
  return {uint32_t{number} << 8 | 10, 0x00FFFFFF, uint32_t{number} << 24 | 10, 2, 0, 0};
}

Route6Entry routeNamed6(uint8_t number) {
  Route6Entry route = {};
  memset(route.destination, number, sizeof route.destination);
  memset(route.gateway, number + 100, sizeof route.gateway);
  memset(route.interfaceName, number, sizeof route.interfaceName - 1);
  route.prefixLength = 64;
  route.status = 2;
  return route;
}

Ip6Address addressNamed6(uint8_t number) {
  Ip6Address address = {};
  memset(address.address, number, sizeof address.address);
  address.prefixLength = number;
  return address;
}

ManagementAddress managementNamed(uint8_t number) {
  ManagementAddress address = {};
  address.ipVersion = 4;
  address.status = 2;
  address.address = uint32_t{number} << 8 | 10;
  address.mask = 0x00FFFFFF;
  address.interfaceKind = 4;
  return address;
}

void makeSmallTables() {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  shm->config.loggingOperState = SHM_ON;
  const char* const names[] = {"alpha", "bravo", "charlie"};
  for (uint8_t i = 0; i < 3; ++i) {
    FilterRule rule = ruleNamed(i + 1);
    insertRule(i, &rule);
    shm->config.users[i] = userNamed(names[i], i < 2);
    RouteEntry route = routeNamed(static_cast<uint8_t>(20 + i));
    addUserRoute(&route);
    Route6Entry route6 = routeNamed6(static_cast<uint8_t>(20 + i));
    addUserRoute6(&route6);
    Ip6Address address6 = addressNamed6(static_cast<uint8_t>(20 + i));
    shm_addIp6(&address6);
    ManagementAddress management = managementNamed(static_cast<uint8_t>(20 + i));
    addManagementAddr(&management);
    logEvent(i, 1, names[i]);
  }
  shm->config.userCount = 3;
  shm->config.adminUserCount = 2;
}

}  // namespace kestrove::testing
