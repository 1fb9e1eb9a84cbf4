// SPDX-License-Identifier: Apache-2.0
// Pointers into the store in place of the caller's own: shm is the caller's to use.

#include <gmock/gmock.h>
#include <stdlib.h>
#include <string.h>

#include <functional>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/kernel_calls.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::IsEmpty;
using ::testing::Not;

struct NameRow {
  const char* function;
  std::function<int(const char*)> call;
};

// Every function that takes an interface name and only reads it.
const NameRow kNameRows[] = {
    {"shm_ifconfig", [](const char* name) { return shm_ifconfig(name, quad("10.0.0.1"), quad("255.0.0.0"), 0); }},
    {"shm_if6config", [](const char* name) { return shm_if6config(name, ip6("fd00::1").data(), 64, 1); }},
    {"getIfaceIndex", [](const char* name) { return getIfaceIndex(name); }},
    {"set_iface_up", [](const char* name) { return set_iface_up(name); }},
    {"set_iface_down", [](const char* name) { return set_iface_down(name); }},
    {"br_add_bridge", [](const char* name) { return br_add_bridge(name); }},
    {"br_cmd_addbr", [](const char* name) { return br_cmd_addbr(name); }},
    {"br_cmd_delbr", [](const char* name) { return br_cmd_delbr(name); }},
    {"br_ioctldev", [](const char* name) { return br_ioctldev(name, 14, 0, 0, 0); }},
    {"br_find_bridge", [](const char* name) { return br_find_bridge(name) != nullptr; }},
    {"br_cmd_addif, bridge", [](const char* name) { return br_cmd_addif(nullptr, name, "eth0"); }},
    {"br_cmd_addif, port", [](const char* name) { return br_cmd_addif(nullptr, "br0", name); }},
    {"br_cmd_delif, bridge", [](const char* name) { return br_cmd_delif(nullptr, name, "eth0"); }},
    {"br_cmd_delif, port", [](const char* name) { return br_cmd_delif(nullptr, "br0", name); }},
    {"set_bridge_up, all", [](const char* name) { return set_bridge_up(name, name, name); }},
    {"set_bridge_down, all", [](const char* name) { return set_bridge_down(name, name, name); }},
    {"turnOnBridge, both", [](const char* name) { return turnOnBridge(name, name); }},
    {"turnOffBridge, both", [](const char* name) { return turnOffBridge(name, name); }},
    {"turnOnIpfoward", [](const char* name) { return turnOnIpfoward(name); }},
    {"turnOffIpfoward", [](const char* name) { return turnOffIpfoward(name); }},
    {"shm_vconfig_add1", [](const char* name) { return shm_vconfig_add1(name, 12); }},
    {"shm_vconfig_add2", [](const char* name) { return shm_vconfig_add2(name, 12, 13); }},
    {"shm_vconfig_rem1", [](const char* name) { return shm_vconfig_rem1(name, 12); }},
    {"shm_vconfig_rem2", [](const char* name) { return shm_vconfig_rem2(name, 12, 13); }},
    {"shm_ifconfig_down1", [](const char* name) { return shm_ifconfig_down1(name, 0); }},
    {"shm_ifconfig_down1, VLAN", [](const char* name) { return shm_ifconfig_down1(name, 12); }},
    {"setPermArpEntry", [](const char* name) { return setPermArpEntry(quad("10.0.0.1"), name); }},
};

class StorePointers : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    watchKernel(Kernel::kPretend);
    strcpy(shm->config.wanInterfaceName, "lo");
  }

  // Result and effects of a call with the pretended kernel.
  static std::string effects(const std::function<int()>& call) {
    watchKernel(Kernel::kPretend);
    std::string text = std::to_string(call());
    for (const std::string& line : kernelCalls()) text += "\n" + line;
    for (const std::string& message : messagesSent()) text += "\n" + message.substr(32);  // behind the sequence number
    return text;
  }
};

TEST_F(StorePointers, NamesAreReadAlone) {
  std::vector<char> before(SHM_SIZE);
  memcpy(before.data(), shm, SHM_SIZE);
  for (const NameRow& row : kNameRows) {
    std::string expected = effects([&] { return row.call("lo"); });
    EXPECT_THAT(expected, Not(IsEmpty()));
    EXPECT_EQ(expected, effects([&] { return row.call(shm->config.wanInterfaceName); })) << row.function;
    EXPECT_EQ(0, memcmp(before.data(), shm, SHM_SIZE)) << row.function;
  }
}

TEST_F(StorePointers, NetlinkNameIsReadAlone) {
  auto add = [](const char* name) { return shm_netlinkConfig(name, quad("127.0.0.9"), quad("255.0.0.0"), 0, 1); };
  EXPECT_EQ(effects([&] { return add("lo"); }), effects([&] { return add(shm->config.wanInterfaceName); }));
  EXPECT_STREQ("lo", shm->config.wanInterfaceName);
}

TEST_F(StorePointers, Ipv6AddressOfTheTable) {
  Ip6Address& entry = shm->ip6Address[0];
  setIp6(entry.address, "fd00::7");
  EXPECT_EQ(effects([] { return shm_if6config("lo", ip6("fd00::7").data(), 64, 0); }),
            effects([&] { return shm_if6config("lo", entry.address, 64, 0); }));
  EXPECT_EQ(0, memcmp(entry.address, ip6("fd00::7").data(), 16));
}

TEST_F(StorePointers, HardwareAddressText) {
  strcpy(shm->config.sysName, "00:1a:2b:3c:4d:5e");
  EXPECT_EQ(effects([] { return addArpEntry(quad("10.0.0.1"), "00:1a:2b:3c:4d:5e", 6); }),
            effects([] { return addArpEntry(quad("10.0.0.1"), shm->config.sysName, 6); }));
}

TEST_F(StorePointers, ListOfAddressesOverTheName) {
  char* name = shm->config.sysName;
  strcpy(name, "lo");
  uint8_t own[7][16] = {};
  int count = getIpv6Addrs("lo", own);
  ASSERT_LT(0, count) << "the loop-back has an address";
  EXPECT_EQ(count, getIpv6Addrs(name, name));
  EXPECT_EQ(0, memcmp(own, name, static_cast<size_t>(count) * 16));
}

TEST_F(StorePointers, LinkStatusIntoTheTextsOfTheStore) {
  watchKernel(Kernel::kReal);  // the tool is a recorder
  EXPECT_EQ(-1, getLinkStatus(1, shm->config.sysName, shm->config.sysContact, shm->config.sysLocation));
  writeFile("/run/kestrove/answers/mii-diag.out", "a: 1\nb: 2\nc: 3\n");
  EXPECT_EQ(0, getLinkStatus(1, shm->config.sysName, shm->config.sysContact, shm->config.sysLocation));
  EXPECT_STREQ("1", shm->config.sysName);
  EXPECT_STREQ("3", shm->config.sysContact);
  EXPECT_STREQ("2", shm->config.sysLocation);
}

TEST_F(StorePointers, LinkStatusOverTheNameAskedFor) {
  watchKernel(Kernel::kReal);
  writeFile("/run/kestrove/answers/mii-diag.out", "a: 1\nb: 2\nc: 3\n");
  char first[256], second[256];
  EXPECT_EQ(0, getLinkStatus(1, first, second, shm->config.wanInterfaceName));
  EXPECT_STREQ("2", shm->config.wanInterfaceName);
}

}  // namespace
}  // namespace kestrove::testing
