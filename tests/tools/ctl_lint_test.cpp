// SPDX-License-Identifier: Apache-2.0
// lint from the outside: findings by line and column, and an appliance that stays as it is.
#include <gmock/gmock.h>
#include <string.h>

#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

constexpr char kFile[] = "/tmp/some.conf";
constexpr char kFaulty[] = "LAN_MTU 1400\n\n  LAN_ADDR 10.1.2\nROUTE 172.20.0.0 255.255.0.0 192.168.10.3\n";

class CtlLintTest : public StoreTest {
 protected:
  static Ran lint(const std::string& text, const std::string& options = "") {
    writeFile(kFile, text);
    return ctl(options + " lint " + kFile);
  }
};

TEST_F(CtlLintTest, FindingsStandInTheOrderOfTheirPlaces) {
  Ran ran = lint(kFaulty);
  EXPECT_EQ(4, ran.status);
  EXPECT_EQ(
      "/tmp/some.conf:3:12: \"10.1.2\" is no address: nothing is stored\n"
      "/tmp/some.conf:4:1: dropped: 3 of 4 columns\n",
      ran.out);
  EXPECT_EQ("", ran.err);
}

TEST_F(CtlLintTest, ASoundFileHasNone) {
  Ran ran = lint("LAN_MTU 1400\n");
  EXPECT_EQ(0, ran.status);
  EXPECT_EQ("/tmp/some.conf: no findings\n", ran.out);
  EXPECT_EQ(Json::array(), lint("LAN_MTU 1400\n", "--json").json());
}

TEST_F(CtlLintTest, AsJsonAFindingHasItsKind) {
  Ran ran = lint(kFaulty, "--json");
  EXPECT_EQ(4, ran.status);
  const Json expected = {
      {{"line", 3}, {"column", 12}, {"text", "\"10.1.2\" is no address: nothing is stored"}, {"kind", "dropped"}},
      {{"line", 4}, {"column", 1}, {"text", "dropped: 3 of 4 columns"}, {"kind", "dropped"}}};
  EXPECT_EQ(expected, ran.json());
}

TEST_F(CtlLintTest, NothingOfTheApplianceChanges) {
  writeFile("/etc/resolv.conf", "nameserver 192.0.2.1\n");
  const std::string store(reinterpret_cast<const char*>(shm), SHM_SIZE);
  const std::string users = readFile("/etc/passwd");
  EXPECT_EQ(4, lint("WEB_CACHE 1\nDNS_ADDR 10.0.0.1\nUSER_ACCOUNT alice 1 0 0\nADMIN_USERNAME rooter\n"
                    "ADMIN_PASSWORD secret99\nROUTE 172.20.0.0 255.255.0.0 192.168.10.3 3\nKESTROVE_CONFIG /tmp/x\n")
                   .status);
  EXPECT_EQ(0, memcmp(store.data(), shm, SHM_SIZE));
  EXPECT_EQ("nameserver 192.0.2.1\n", readFile("/etc/resolv.conf"));
  EXPECT_EQ(users, readFile("/etc/passwd"));
  EXPECT_FALSE(fileExists("/etc/config/kestrove.conf"));
  EXPECT_FALSE(fileExists("/run/kestrovectl-lint"));
}

TEST_F(CtlLintTest, Ipv6RulesGoByTheApplianceOrTheOption) {
  const std::string rule = "SELEC_ACCEL_V6 :: 0 :: 0 6 0 0 80 80 5 NONE 20000 1 3\n";
  EXPECT_THAT(lint(rule).out, EndsWith("dropped: this appliance has no IPv6 support (ipv6Support)\n"));
  writeFile(kFile, rule);
  EXPECT_EQ("/tmp/some.conf: no findings\n", ctl(std::string("lint --ipv6 on ") + kFile).out);
  shm->config.ipv6Support = SHM_ON;
  EXPECT_EQ("/tmp/some.conf: no findings\n", lint(rule).out);
}

TEST_F(CtlLintTest, TheFactoryDefaultsCountWithTheFile) {
  writeFile("/etc/config/factory.defaults",
            "MANAGEMENT_NAME eth2\nROUTE 172.20.0.0 255.255.0.0 192.168.10.3 3\nCIFS 1\n");
  EXPECT_EQ("/tmp/some.conf:1:1: dropped: it is there already\n",
            lint("ROUTE 172.20.0.0 255.255.0.0 192.168.10.4 3\n").out);
  EXPECT_EQ("/etc/config/factory.defaults: no findings\n", ctl("lint /etc/config/factory.defaults").out);
}

TEST(CtlLint, NeedsNoStore) {
  writeFile(kFile, kFaulty);
  Ran ran = ctl(std::string("lint ") + kFile);
  EXPECT_EQ(4, ran.status) << ran.err;
  EXPECT_THAT(ran.out, HasSubstr("some.conf:4:1: "));
  EXPECT_EQ(3, ctl("status").status) << "and leaves none";
}

TEST(CtlLint, WhatIsNoConfigurationFile) {
  struct Row {
    const char* make;
    const char* path;
    const char* said;
  };
  for (const Row& row :
       {Row{"true", "/tmp/none.conf", "/tmp/none.conf: No such file or directory\n"},
        {"true", "/tmp", "/tmp: a folder, no configuration file\n"},
        {"mkfifo /tmp/pipe", "/tmp/pipe", "/tmp/pipe: a pipe, no configuration file\n"},
        {"cp /bin/sh /tmp/binary", "/tmp/binary", "/tmp/binary: no line with a known keyword, no configuration file\n"},
        {": >/tmp/empty", "/tmp/empty", "/tmp/empty: no line with a known keyword, no configuration file\n"},
        {"truncate -s 10M /tmp/large", "/tmp/large",
         "/tmp/large: 10485760 bytes, no configuration file (at most 8388608)\n"}}) {
    ASSERT_EQ(0, run(std::string("sh -c '") + row.make + "'").status);
    Ran ran = ctl(std::string("lint ") + row.path);
    EXPECT_EQ(5, ran.status) << row.path;
    EXPECT_EQ(std::string("kestrovectl: ") + row.said, ran.err);
    EXPECT_EQ("", ran.out);
    EXPECT_EQ(5, ctl(std::string("--json lint ") + row.path).json()["error"]["exit"]) << row.path;
  }
}

}  // namespace
}  // namespace kestrove::testing
