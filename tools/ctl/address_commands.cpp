// SPDX-License-Identifier: Apache-2.0
// address: the management addresses and the bridge's own IPv6 addresses.
#include <cstring>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/ctl/address_sense.h"
#include "tools/ctl/change.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/rows.h"

namespace ctl {
namespace {

constexpr Type kKind = takes::code(kInterfaceKinds, "lan|wan|management|bridge|router",
                                   "interface (lan, wan, management, bridge or router)");

struct AddressLine {
  Prefix address;
  int kind = SHM_IF_BRIDGE;
  std::optional<uint32_t> family = {};
  bool ofBridge = false;
  bool asIs = false;
};

Json allRows() {
  Json rows = Json::array();
  int count = accept(getManagementAddrCount(), "addresses");
  for (int i = 0; i < count && i < SHM_MANAGEMENT_ADDRESSES; ++i) {
    ManagementAddress entry;
    accept(getManagementAddr(i, &entry), "address " + std::to_string(i));
    rows.push_back(managementRow(entry));
  }
  count = accept(getIp6Count(), "IPv6 addresses");
  for (int i = 0; i < count && i < SHM_IP6_ADDRESSES; ++i) {
    Ip6Address entry;
    accept(getIp6TableEntry(i, &entry), "IPv6 address " + std::to_string(i));
    rows.push_back(address6Row(entry));
  }
  return rows;
}

// Which addresses an appliance may have is the library's to say.
void requireUsable(const Prefix& given) {
  std::string host = given.host.text;
  uint32_t address = 0;
  accept(validateManagementAddress(host.data(), &address), given.host.text);
  accept(validateNetmask(&given.mask), given.text.substr(given.text.find('/') + 1));
}

ManagementAddress rawEntry(const AddressLine& line) {
  ManagementAddress entry = {};
  entry.interfaceKind = line.kind;
  entry.ipVersion = line.family.value_or(line.address.version());
  memcpy(entry.address6, line.address.host.address6, sizeof entry.address6);
  entry.prefixLength6 = line.address.length6;
  entry.address = line.address.host.address;
  entry.mask = line.address.mask;
  return entry;
}

void refuseNonsense(const AddressLine& line) {
  if (line.family) throw Refusal(kUsage, "--family is of an address that makes no sense: it goes with --as-is");
  if (!isInterfaceKind(line.kind)) throw Refusal(kUsage, std::to_string(line.kind) + ": no " + kKind.meant);
  if (line.address.version() != SHM_FAMILY_IPV6) requireUsable(line.address);
}

ManagementAddress entryOf(const AddressLine& line) {
  if (!line.asIs) refuseNonsense(line);
  return rawEntry(line);
}

Ip6Address bridgeEntry(const ManagementAddress& entry) {
  if (entry.ipVersion != SHM_FAMILY_IPV6) throw Refusal(kUsage, "--br0 takes an IPv6 address");
  Ip6Address own = {};
  memcpy(own.address, entry.address6, sizeof own.address);
  own.prefixLength = entry.prefixLength6;
  return own;
}

void addEntry(const Session& session, const AddressLine& line, ManagementAddress entry) {
  const std::string& address = line.address.text;
  Change change(session);
  if (line.ofBridge) {
    Ip6Address own = bridgeEntry(entry);
    change.made(addIp6(&own), address);
  } else {
    change.made(addManagementAddr(&entry), address);
  }
  change.done(address + " added");
}

void add(const Session& session, const AddressLine& line) {
  requireStore(session);
  addEntry(session, line, entryOf(line));
}

Wish wish(const AddressLine& line) {
  const ManagementAddress entry = entryOf(line);
  if (line.ofBridge) return bridgeEntry(entry);
  return entry;
}

// Of a saved script, which has the mask as a word of its own and takes whatever the table holds.
struct ScriptLine {
  std::string address, length;
  bool bridge = false;
  bool router = false;
  bool management = false;
};

AddressLine lineOf(const ScriptLine& line) {
  if (line.bridge + line.router + line.management > 1)
    throw Refusal(kUsage, "an address goes with one of -b, -v and -m");
  return {.address = parsePrefix(line.address + "/" + line.length, Family::kBoth),
          .kind = line.router       ? SHM_IF_LAN
                  : line.management ? SHM_IF_MANAGEMENT
                                    : SHM_IF_BRIDGE};
}

void addOfScript(const Session& session, const ScriptLine& line) {
  const AddressLine own = lineOf(line);
  requireStore(session);
  addEntry(session, own, rawEntry(own));
}

Wish wishOfScript(const ScriptLine& line) { return rawEntry(lineOf(line)); }

// The library sets no code for an address that is not there.
void requireOwn(const Ip6Address& wanted, const std::string& address) {
  Ip6Address entry;
  for (int i = 0; i < SHM_IP6_ADDRESSES && getIp6TableEntry(i, &entry) == 0; ++i) {
    if (memcmp(entry.address, wanted.address, sizeof entry.address) == 0) return;
  }
  throw Refusal(kRefused, address + ": " + shm_strerror(SHM_ENOENT), SHM_ENOENT);
}

void remove(const Session& session, const AddressLine& line) {
  requireStore(session);
  const std::string& address = line.address.text;
  const ManagementAddress entry = entryOf(line);
  Change change(session);
  if (line.ofBridge) {
    const Ip6Address own = bridgeEntry(entry);
    requireOwn(own, address);
    change.made(removeIp6(own.address), address);
    return change.done(address + " removed");
  }
  ManagementAddress stored;
  bool known = getManagementAddrCount() > 0 && findManagementAddr(line.address.host.text.c_str(), &stored) == 0;
  if (!known) throw Refusal(kRefused, address + ": " + shm_strerror(SHM_ENOENT), SHM_ENOENT);
  change.made(removeManagementAddr(&stored), address);
  change.done(address + " removed");
}

}  // namespace

std::vector<Command> addressCommands() {
  const Type prefix = takes::prefix(Family::kBoth);
  const auto own = flag("--br0", &AddressLine::ofBridge, "The table of the bridge's own IPv6 addresses");
  return {
      group("address", "Management addresses, and the IPv6 addresses of br0"),
      command("address list", "All addresses", showing<allRows>),
      setting("address add", "Add an address", add, wish,
              {needed("ADDRESS", &AddressLine::address, prefix, "IPv4 or IPv6"), own,
               option("--interface", &AddressLine::kind, kKind, "Where it is used"),
               option("--family", &AddressLine::family, takes::number(), "Another number than that of its family"),
               flag("--as-is", &AddressLine::asIs, "Take what makes no sense, as a store may hold it")}),
      changing("address remove", "Remove an address", remove,
               {needed("ADDRESS", &AddressLine::address, prefix.from(Completion::kAddresses), "IPv4 or IPv6"), own}),
      ofScripts(group("ip", "Management addresses in the words of a saved script")),
      ofScripts(setting("ip add", "Add an address", addOfScript, wishOfScript,
                        {needed("ADDRESS", &ScriptLine::address, takes::text(), "IPv4 or IPv6"),
                         needed("MASK", &ScriptLine::length, takes::text(), "Its netmask, or its prefix length"),
                         flag("-b", &ScriptLine::bridge, "On the bridge, as without an option"),
                         flag("-v", &ScriptLine::router, "On the LAN side"),
                         flag("-m", &ScriptLine::management, "On the management port")}))};
}

}  // namespace ctl
