// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/check.h"

#include <cstring>
#include <set>

#include "kestrove/codes.h"
#include "kestrove/text.h"
#include "kestrove/users.h"

namespace ctl {
namespace {

class Checker {
 public:
  explicit Checker(const ShmData& store) : store_(store) {}

  std::vector<Finding> run() {
    modes();
    users();
    addresses();
    management();
    routes("route", store_.routes.head, store_.routes.slot, follows4, SHM_ROUTES);
    routes("route6", store_.routes6.head6, store_.routes6.slot, follows6, SHM_ROUTES6);
    rules();
    events();
    switches();
    return std::move(findings_);
  }

 private:
  void report(const char* table, std::string text) { findings_.push_back({table, std::move(text)}); }

  // The number of entries that can be looked at; a count out of its range is a finding.
  uint32_t counted(const char* table, int32_t count, int32_t least, int32_t most) {
    if (count >= least && count <= most) return static_cast<uint32_t>(count);
    report(table,
           "count " + std::to_string(count) + " is not " + std::to_string(least) + " to " + std::to_string(most));
    return count < least ? 0 : static_cast<uint32_t>(most);
  }

  template <size_t N>
  bool terminated(const char (&field)[N]) {
    return strnlen(field, N) < N;
  }

  void modes() {
    if (store_.operationalState > SHM_STATE_DEBUG) {
      report("store", "operational state " + std::to_string(store_.operationalState) + " is not 0 to 5");
    }
    if (store_.config.opModeState > SHM_MODE_POLICY_ROUTING) {
      report("store", "operating mode " + std::to_string(store_.config.opModeState) + " is not 0 to 2");
    }
  }

  void users() {
    const ConfigRecord& config = store_.config;
    uint32_t count = counted("user", config.userCount, 0, SHM_USERS);
    int32_t admins = 0;
    std::set<std::string> names;
    for (uint32_t i = 0; i < count; ++i) {
      const UserAccount& user = config.users[i];
      std::string name(user.username, strnlen(user.username, sizeof user.username));
      if (!terminated(user.username)) report("user", "entry " + std::to_string(i) + ": name without terminator");
      if (name.empty()) report("user", "entry " + std::to_string(i) + ": no name");
      if (!names.insert(name).second) report("user", "entry " + std::to_string(i) + ": name " + name + " stands twice");
      admins += user.superUser == 1;
    }
    if (admins != config.adminUserCount) {
      report("user", "adminUserCount " + std::to_string(config.adminUserCount) + ", but " + std::to_string(admins) +
                         " administrators");
    }
  }

  void addresses() {
    uint32_t count = counted("address6", store_.ip6Count, 0, SHM_IP6_ADDRESSES);
    for (uint32_t i = 0; i < count; ++i) {
      if (store_.ip6Address[i].prefixLength > 128) reportPrefix("address6", i, store_.ip6Address[i].prefixLength);
      for (uint32_t j = 0; j < i; ++j) {
        if (memcmp(store_.ip6Address[i].address, store_.ip6Address[j].address, 16) == 0) {
          report("address6", "entries " + std::to_string(j) + " and " + std::to_string(i) + " hold the same address");
        }
      }
    }
  }

  void management() {
    uint32_t count = counted("management", store_.managementAddressCount, 0, SHM_MANAGEMENT_ADDRESSES);
    for (uint32_t i = 0; i < count; ++i) {
      const ManagementAddress& entry = store_.managementAddress[i];
      std::string place = "entry " + std::to_string(i) + ": ";
      if (entry.ipVersion != SHM_FAMILY_IPV4 && entry.ipVersion != SHM_FAMILY_IPV6) {
        report("management", place + "IP version " + std::to_string(entry.ipVersion));
      }
      if (entry.status != SHM_ADDRESS_APPLIED && entry.status != SHM_ADDRESS_KEPT)
        report("management", place + "status " + std::to_string(entry.status));
      if (entry.ipVersion == SHM_FAMILY_IPV6 && entry.prefixLength6 > 128)
        reportPrefix("management", i, entry.prefixLength6);
    }
  }

  void reportPrefix(const char* table, uint32_t index, uint32_t length) {
    report(table, "entry " + std::to_string(index) + ": prefix length " + std::to_string(length));
  }

  static bool follows4(const RouteEntry& first, const RouteEntry& second) {
    if (first.netmask != second.netmask) return first.netmask > second.netmask;
    return first.destination > second.destination;
  }

  static bool follows6(const Route6Entry& first, const Route6Entry& second) {
    if (first.prefixLength != second.prefixLength) return first.prefixLength > second.prefixLength;
    return memcmp(first.destination, second.destination, 16) > 0;
  }

  template <typename Slot, typename Follows>
  void routes(const char* table, uint32_t head, const Slot* slots, Follows follows, uint32_t capacity) {
    std::vector<bool> seen(capacity, false);
    uint32_t used = 0;
    for (uint32_t i = 0; i < capacity; ++i) {
      used += slots[i].inUse == 1;
      if (slots[i].inUse != 1 && slots[i].inUse != SHM_NO_SLOT) {
        report(table, "slot " + std::to_string(i) + ": in-use word " + std::to_string(slots[i].inUse));
      }
    }
    uint32_t walked = 0;
    const Slot* previous = nullptr;
    for (uint32_t slot = head; slot != SHM_NO_SLOT && (slot != head || !previous); slot = previous->next) {
      std::string place = "slot " + std::to_string(slot);
      if (slot >= capacity) {
        report(table, (previous ? "chain leads to " : "head names ") + place + ", beyond the table");
        break;
      }
      if (slots[slot].inUse != 1) {
        if (previous || used != 0) report(table, "chain leads to " + place + ", which is free");
        break;
      }
      if (seen[slot]) {
        report(table, "chain comes back to " + place);
        break;
      }
      if (previous && !follows(*previous, slots[slot])) report(table, place + " stands out of order");
      if (slots[slot].status < SHM_ROUTE_INACTIVE || slots[slot].status > SHM_ROUTE_ACTIVE) {
        report(table, place + ": status " + std::to_string(slots[slot].status));
      }
      seen[slot] = true;
      previous = &slots[slot];
      ++walked;
    }
    if (previous && previous->next == head) report(table, "chain comes back to its head");
    if (walked != used) {
      report(table, std::to_string(used) + " slots in use, " + std::to_string(walked) + " reached from the head");
    }
  }

  void rules() {
    uint32_t count = counted("rule", store_.filterTable.ruleCount, 1, SHM_RULES);
    for (uint32_t i = 0; i < count; ++i) {
      const FilterRule& rule = store_.filterTable.rule[i];
      std::string place = "rule " + std::to_string(i) + ": ";
      if (rule.target < SHM_TARGET_BRIDGE) report("rule", place + "target " + std::to_string(rule.target));
      if (rule.ruleAction == SHM_RULE_ACTIVE && rule.proto == SHM_PROTO_UDP && rule.accel != SHM_OFF)
        report("rule", place + "UDP accelerated");
      if (rule.ruleAction == SHM_RULE_ACTIVE && rule.ipVersion == SHM_FAMILY_IPV4 &&
          ((rule.srcAddr & ~rule.srcMask) != 0 || (rule.dstAddr & ~rule.dstMask) != 0)) {
        report("rule", place + "address beyond its mask");
      }
    }
  }

  void events() {
    const EventLog& log = store_.eventLog;
    if (log.eventLogFull > 1) report("event", "full word " + std::to_string(log.eventLogFull) + " is not 0 or 1");
    if (log.readIndex >= SHM_EVENTS)
      report("event", "readIndex " + std::to_string(log.readIndex) + " is beyond the ring");
    if (log.writeIndex >= SHM_EVENTS) {
      report("event", "writeIndex " + std::to_string(log.writeIndex) + " is beyond the ring");
    }
    if (log.eventLogFull == 0 && log.readIndex != 0) report("event", "readIndex is not 0 before the ring is full");
    if (log.eventLogFull == 1 && log.readIndex != log.writeIndex) {
      report("event", "the ring is full, but readIndex and writeIndex differ");
    }
  }

  void switches() {
    const ConfigRecord& config = store_.config;
    const struct {
      const char* name;
      uint32_t value;
    } all[] = {{"compression", config.compression},
               {"loggingOperState", config.loggingOperState},
               {"snmpOperState", config.snmpOperState},
               {"httpOperState", config.httpOperState},
               {"cliOperState", config.cliOperState},
               {"kestroveOperState", config.kestroveOperState},
               {"sshdOperState", config.sshdOperState},
               {"bannerOperState", config.bannerOperState},
               {"singleInterfaceMode", config.singleInterfaceMode},
               {"pbrOperState", config.pbrOperState}};
    // 0 is a switch that no file has named yet, 3 one that a file named with a value other than 0 and 1.
    for (const auto& one : all) {
      if (one.value > 3) report("item", std::string(one.name) + " holds " + std::to_string(one.value));
    }
  }

  const ShmData& store_;
  std::vector<Finding> findings_;
};

}  // namespace

std::vector<Finding> checkStore(const ShmData& store) { return Checker(store).run(); }

std::vector<Finding> checkPasswordFile(const ShmData& store) {
  std::vector<Finding> findings;
  const int32_t count = store.config.userCount;
  for (int32_t i = 0; i < count && i < SHM_USERS; ++i) {
    const UserAccount& user = store.config.users[i];
    std::string name(user.username, strnlen(user.username, sizeof user.username));
    char hash[256] = {};
    if (name.empty() || getUserPassword(name.c_str(), hash) == 0) continue;
    findings.push_back({"user", name + " stands in the store, but not in /etc/passwd"});
  }
  return findings;
}

}  // namespace ctl
