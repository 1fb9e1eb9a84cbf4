// address: the management addresses and the bridge's own IPv6 addresses.
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/change.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/rows.h"

namespace ctl {
namespace {

const std::map<std::string, int> kKinds = {{"lan", 0}, {"wan", 1}, {"management", 3}, {"bridge", 4}, {"router", 5}};

std::string address;
std::string kind = "bridge";
bool ofBridge = false;

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

uint32_t prefixOf(const std::string& length, uint32_t most) {
  if (length.empty()) return most;
  if (length.size() > 3 || length.find_first_not_of("0123456789") != std::string::npos || std::stoul(length) > most) {
    throw Refusal(kUsage, length + ": no prefix length (0 to " + std::to_string(most) + ")");
  }
  return static_cast<uint32_t>(std::stoul(length));
}

ManagementAddress given() {
  size_t slash = address.find('/');
  std::string host = address.substr(0, slash);
  std::string length = slash == std::string::npos ? "" : address.substr(slash + 1);
  ManagementAddress entry = {};
  entry.interfaceKind = kKinds.at(kind);
  if (host.find(':') != std::string::npos) {
    entry.ipVersion = 6;
    parseAddress6(host, entry.address6);
    entry.prefixLength6 = prefixOf(length, 128);
    return entry;
  }
  char copy[64] = {};
  entry.ipVersion = 4;
  if (host.size() >= sizeof copy) throw Refusal(kUsage, host + ": no address");
  memcpy(copy, host.data(), host.size());
  accept(validateManagementAddress(copy, &entry.address), host);
  entry.mask = parseMask(length.empty() ? "32" : length);
  accept(validateNetmask(&entry.mask), length);
  return entry;
}

Ip6Address bridgeEntry(const ManagementAddress& entry) {
  if (entry.ipVersion != 6) throw Refusal(kUsage, "--br0 takes an IPv6 address");
  Ip6Address own = {};
  memcpy(own.address, entry.address6, sizeof own.address);
  own.prefixLength = entry.prefixLength6;
  return own;
}

void add(const Session& session) {
  requireStore(session);
  ManagementAddress entry = given();
  Change change(session);
  if (ofBridge) {
    Ip6Address own = bridgeEntry(entry);
    change.made(addIp6(&own), address);
  } else {
    change.made(addManagementAddr(&entry), address);
  }
  change.done(address + " added");
}

// The library sets no code for an address that is not there.
void requireOwn(const Ip6Address& wanted) {
  Ip6Address entry;
  for (int i = 0; i < SHM_IP6_ADDRESSES && getIp6TableEntry(i, &entry) == 0; ++i) {
    if (memcmp(entry.address, wanted.address, sizeof entry.address) == 0) return;
  }
  throw Refusal(kRefused, address + ": " + shm_strerror(SHM_ENOENT), SHM_ENOENT);
}

void remove(const Session& session) {
  requireStore(session);
  ManagementAddress entry = given();
  Change change(session);
  if (ofBridge) {
    const Ip6Address own = bridgeEntry(entry);
    requireOwn(own);
    change.made(removeIp6(own.address), address);
    return change.done(address + " removed");
  }
  ManagementAddress stored;
  std::string host = address.substr(0, address.find('/'));
  bool known = getManagementAddrCount() > 0 && findManagementAddr(host.c_str(), &stored) == 0;
  if (!known) throw Refusal(kRefused, address + ": " + shm_strerror(SHM_ENOENT), SHM_ENOENT);
  change.made(removeManagementAddr(&stored), address);
  change.done(address + " removed");
}

}  // namespace

void addAddressCommands(CLI::App& app, Session& session) {
  CLI::App* group = app.add_subcommand("address", "Management addresses, and the IPv6 addresses of br0");
  group->require_subcommand(1);
  group->add_subcommand("list", "All addresses")->callback([&session] { showRead(session, allRows); });
  CLI::App* adding = group->add_subcommand("add", "Add an address");
  CLI::App* removing = group->add_subcommand("remove", "Remove an address");
  for (CLI::App* command : {adding, removing}) {
    command->add_option("ADDRESS", address, "ADDRESS/LENGTH, IPv4 or IPv6")->required();
    command->add_flag("--br0", ofBridge, "The table of the bridge's own IPv6 addresses");
  }
  adding->add_option("--interface", kind, "lan, wan, management, bridge or router")
      ->check(CLI::IsMember({"lan", "wan", "management", "bridge", "router"}));
  adding->callback([&session] { add(session); });
  removing->callback([&session] { remove(session); });
}

}  // namespace ctl
