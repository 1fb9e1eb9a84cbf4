// SPDX-License-Identifier: Apache-2.0
// preview from the outside: what a command makes different on a copy, and an appliance that stays as it is.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <string.h>

#include <sstream>

#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr int kBridge = 4;
constexpr char kConfiguration[] = "/etc/config/kestrove.conf";

// An appliance whose bridge is up, with a saved file.
class PreviewTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    strcpy(shm->config.physicalLanInterfaceName, "eth1");
    strcpy(shm->config.bridgeRouterPhysicalName, "eth0");
    strcpy(shm->config.physicalWanInterfaceName, "eth0");
    shm->config.singleInterfaceMode = SHM_OFF;
    shm->managementAddress[0] = {4, 1, inet_addr("192.168.10.9"), inet_addr("255.255.255.0"), {}, 0, kBridge};
    shm->managementAddressCount = 1;
    ASSERT_EQ(0, save_shared_memory());
    ASSERT_EQ(0, run("sh -c 'ip link add br0 type bridge && ip link set eth0 master br0 && ip link set eth1 master br0 "
                     "&& ip link set br0 up && ip addr add 192.168.10.9/24 dev br0'")
                     .status);
  }

  static std::string appliance() {
    return std::string(reinterpret_cast<const char*>(shm), SHM_SIZE) + readFile(kConfiguration) +
           readFile("/etc/passwd") + withoutLinkLocal(run("ip -o addr").out) +
           withoutLinkLocal(run("ip route show table all").out) + run("ip rule").out;
  }
  // The kernel goes on making those ready by itself.
  static std::string withoutLinkLocal(const std::string& lines) {
    std::istringstream all(lines);
    std::string kept;
    for (std::string line; std::getline(all, line);) {
      if (line.find("fe80::") == std::string::npos) kept += line + "\n";
    }
    return kept;
  }

  // With --json, from the outside.
  static Ran preview(const std::string& command, const std::string& input = "") {
    const std::string before = appliance();
    Ran ran = ctl("--json preview " + command, input);
    EXPECT_EQ(before, appliance()) << command;
    return ran;
  }

  static std::string kernelChange(const Json& result, const char* section, const char* side) {
    for (const Json& change : result["kernel"]) {
      if (change["section"] == section) return change[side];
    }
    return "";
  }
};

TEST_F(PreviewTest, ASettingIsInTheStoreAndInTheFile) {
  const Json result = preview("set sysName seven").json();
  EXPECT_EQ(0, result["exit"]);
  EXPECT_EQ("set sysName seven\n", result["store"]["diff"]["after"]);
  ASSERT_EQ(1u, result["files"].size()) << result["files"];
  EXPECT_EQ(kConfiguration, result["files"][0]["path"]);
  EXPECT_THAT(result["files"][0]["after"].get<std::string>(), HasSubstr("SYS_NAME                  seven\n"));
  EXPECT_EQ(Json::array(), result["kernel"]);
  EXPECT_EQ(Json::array(), result["notes"]);
}

TEST_F(PreviewTest, ForAReaderEachSectionIsAUnifiedDifference) {
  Ran ran = ctl("preview route add 172.20.0.0/16 192.168.10.3");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(ran.out, AllOf(StartsWith("--- store\n+++ store\n@@ routes @@\n+route add 172.20.0.0/16 192.168.10.3\n"
                                        "--- /etc/config/kestrove.conf\n+++ /etc/config/kestrove.conf\n@@ -"),
                             HasSubstr("--- kernel routes\n+++ kernel routes\n"),
                             HasSubstr("\n+172.20.0.0/16 via 192.168.10.3 dev br0\n")));
}

TEST_F(PreviewTest, TheKernelAnswersAsTheAppliances) {
  ASSERT_EQ(0, run("sh -c 'ip route add 172.20.0.0/16 via 192.168.10.3 && ip route add 172.21.0.0/16 dev br0 table 77 "
                   "&& ip rule add from 10.0.0.0/8 lookup 77 pref 500 && ip addr add 192.168.44.1/24 dev eth2'")
                   .status);
  const Json there = preview("route add 172.20.0.0/16 192.168.10.3").json();
  EXPECT_EQ(Json::array(), there["notes"]);
  EXPECT_EQ("", kernelChange(there, "routes", "after")) << "the kernel has it already";
  const Json other = preview("address add 192.168.77.3/24 --interface bridge").json();
  EXPECT_THAT(kernelChange(other, "routes", "before"), AllOf(HasSubstr("172.20.0.0/16 via 192.168.10.3 dev br0\n"),
                                                             HasSubstr("172.21.0.0/16 dev br0 table 77")));
  EXPECT_THAT(kernelChange(other, "addresses", "before"), HasSubstr("eth2 inet 192.168.44.1/24 scope global eth2\n"));
  EXPECT_THAT(kernelChange(other, "addresses", "after"), HasSubstr("br0 inet 192.168.77.3/24 "));
}

TEST_F(PreviewTest, AModeChangeMovesThePortsOfTheBridge) {
  const Json result = preview("mode single 12 13").json();
  EXPECT_EQ("br0: eth0 eth1\n", kernelChange(result, "bridges", "before"));
  EXPECT_EQ("br0: eth1 eth0.12\n", kernelChange(result, "bridges", "after"));
  EXPECT_THAT(kernelChange(result, "links", "after"), HasSubstr("eth0.13 up"));
}

TEST_F(PreviewTest, ARefusedCommandShowsWhatItDidBefore) {
  Ran ran = preview("route remove 172.20.0.0/16");
  EXPECT_EQ(1, ran.status);
  EXPECT_EQ(1, ran.json()["exit"]);
  EXPECT_FALSE(ran.json()["store"]["changed"]);
  EXPECT_THAT(ran.err, HasSubstr("172.20.0.0/16: The requested entity does not exist"));
  Ran told = ctl("preview frobnicate");
  EXPECT_EQ(2, told.status);
  EXPECT_EQ("nothing changes\n", told.out);
  EXPECT_THAT(told.err, HasSubstr("the command itself ends with status 2"));
}

TEST_F(PreviewTest, PasswordsStayHidden) {
  Ran ran = preview("user add carol --admin", "Passw0rd!\n");
  ASSERT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(ran.out, AllOf(HasSubstr("carol:(hidden "), Not(HasSubstr("$6$")), Not(HasSubstr("Passw0rd"))));
}

TEST_F(PreviewTest, FilesThatTheCommandNamesAreSeen) {
  writeFile("/tmp/some.conf", "LAN_MTU 1400\n");
  Ran ran = run("cd /tmp && " KESTROVECTL " preview load some.conf");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(ran.out, HasSubstr("+set lanMaximumTransferUnit 1400\n"));
}

TEST_F(PreviewTest, ALivingEngineIsToldAndADeadOneIsNot) {
  shm->taskPids[SHM_TASK_ENGINE] = getpid();
  EXPECT_EQ(0, preview("set compression on").status);
  shm->taskPids[SHM_TASK_ENGINE] = 0x7FFFFFF0;
  EXPECT_EQ(ctl("set compression off").status, preview("set compression off").status);
}

TEST_F(PreviewTest, WhatItDoesNotTry) {
  EXPECT_EQ(2, ctl("preview").status);
  for (const char* word : {"preview save", "explain save", "shell"}) {
    Ran ran = ctl(std::string("preview ") + word);
    EXPECT_EQ(2, ran.status);
    EXPECT_THAT(ran.err, HasSubstr("preview does not try "));
  }
  EXPECT_THAT(ctl("preview-inside /tmp -- save").err, HasSubstr("/tmp/image: no image of a store"));
}

}  // namespace
}  // namespace kestrove::testing
