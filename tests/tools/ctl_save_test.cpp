// SPDX-License-Identifier: Apache-2.0
// What kestrovectl says of changes that the configuration file does not have.
#include <gmock/gmock.h>
#include <string.h>
#include <sys/mount.h>
#include <unistd.h>

#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char kFolder[] = "/etc/config";
constexpr char kFile[] = "/etc/config/kestrove.conf";

// A disk of its own under a folder, without room for anything more.
void fillDisk(const char* folder) {
  ASSERT_EQ(0, mount("tmpfs", folder, "tmpfs", 0, "size=64k"));
  run(std::string("dd if=/dev/zero of=") + folder + "/filler bs=1k");
}

void makeReadOnly(const char* folder) { ASSERT_EQ(0, mount("tmpfs", folder, "tmpfs", MS_RDONLY, nullptr)); }

struct Changing {
  const char* command;
  const char* input = "";
};

// In this order each of them changes the store.
constexpr Changing kChanges[] = {{"set wanLinkRate 2048000"},
                                 {"set sysName 'branch seven'"},
                                 {"set lanIpAddress 10.1.2.3"},
                                 {"rule add 0 --to 10.0.0.0/8"},
                                 {"rule add 1 --to 11.0.0.0/8"},
                                 {"rule change 0 --kbps 512"},
                                 {"rule move 1 0"},
                                 {"rule delete 0"},
                                 {"user add alice", "Passw0rd!\n"},
                                 {"user passwd alice", "Passw0rd!\nXyzuvw9#k\n"},
                                 {"user remove alice"},
                                 {"route add 172.20.0.0/16 192.168.10.3 --disabled"},
                                 {"route replace 172.20.0.0/16 172.21.0.0/16 192.168.10.3 --disabled"},
                                 {"route freshen"},
                                 {"route remove 172.21.0.0/16"},
                                 {"route6 add fd00:77::/32 fd00:10::3 --disabled"},
                                 {"route6 remove fd00:77::/32"},
                                 {"address add 192.168.77.3/24 --interface router"},
                                 {"address remove 192.168.77.3"},
                                 {"mode single 12 13"},
                                 {"mode pbr on"},
                                 {"mode double"}};

class CtlSaveTest : public StoreTest {
 protected:
  void expectNotSaved(const char* reason) {
    for (const Changing& change : kChanges) {
      Ran ran = ctl(change.command, change.input);
      EXPECT_EQ(8, ran.status) << change.command << ": " << ran.out << ran.err;
      EXPECT_THAT(ran.err, HasSubstr(std::string("applied, not saved: ") + kFile + ": " + reason)) << change.command;
      EXPECT_THAT(ran.err, Not(HasSubstr("Normal successful"))) << change.command;
      EXPECT_THAT(ran.out, AllOf(Not(HasSubstr("saved")), Not(IsEmpty()))) << change.command;
    }
  }
};

TEST_F(CtlSaveTest, OnAFullDiskChangesAreAppliedAndNotSaved) {
  fillDisk(kFolder);
  expectNotSaved("No space left on device");
  EXPECT_EQ(2048000u, shm->config.wanLinkRate);
  EXPECT_STREQ("branch seven", shm->config.sysName);
  EXPECT_EQ(2, shm->filterTable.ruleCount);
}

TEST_F(CtlSaveTest, InAReadOnlyFolderToo) {
  makeReadOnly(kFolder);
  expectNotSaved("Read-only file system");
}

TEST_F(CtlSaveTest, WithRoomTheSameChangesAreDone) {
  for (const Changing& change : kChanges) {
    Ran ran = ctl(change.command, change.input);
    EXPECT_EQ(0, ran.status) << change.command << ": " << ran.err;
    EXPECT_THAT(ran.out, Not(HasSubstr("saved"))) << change.command;
  }
}

TEST_F(CtlSaveTest, InJsonTheResultSaysIt) {
  fillDisk(kFolder);
  Ran ran = ctl("--json set wanLinkRate 2048000");
  EXPECT_EQ(8, ran.status);
  Json result = ran.json();
  EXPECT_EQ(2048000, result["value"]);
  EXPECT_EQ(false, result["saved"]);
  EXPECT_EQ(8, result["error"]["exit"]);
  EXPECT_EQ(10, result["error"]["code"]);
  EXPECT_EQ("applied, not saved: /etc/config/kestrove.conf: No space left on device", result["error"]["message"]);
  EXPECT_THAT(ran.err, IsEmpty());
  ASSERT_EQ(8, ctl("route add 172.20.0.0/16 192.168.10.3").status);
  Json routes = ctl("--json route freshen").json();
  EXPECT_EQ("172.20.0.0", routes["result"][0]["destination"]);
  EXPECT_EQ(8, routes["error"]["exit"]);
}

TEST_F(CtlSaveTest, AValueThatIsRefusedOnAFullDiskIsRefused) {
  fillDisk(kFolder);
  Ran ran = ctl("set wanMaximumTransferUnit 1501");
  EXPECT_EQ(1, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("wanMaximumTransferUnit takes 576..1500 bytes"));
}

TEST_F(CtlSaveTest, ConfigurationModeStores) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  Ran ran = ctl("set wanLinkRate 2048000");
  EXPECT_EQ(0, ran.status);
  EXPECT_THAT(ran.out, HasSubstr("stored, not saved: the store is in Configuration Mode\n"));
  Json result = ctl("--json set wanLinkRate 2048001").json();
  EXPECT_EQ(false, result["saved"]);
  EXPECT_EQ("the store is in Configuration Mode", result["reason"]);
  EXPECT_THAT(ctl("user add alice", "Passw0rd!\n").out, HasSubstr("user alice added\nstored, not saved: "));
  EXPECT_FALSE(fileExists(kFile));
}

TEST_F(CtlSaveTest, InConfigurationModeNoRouteIsRemoved) {
  ASSERT_EQ(0, ctl("route add 172.20.0.0/16 192.168.10.3 --disabled").status);
  shm->operationalState = SHM_STATE_CONFIGURATION;
  for (const char* command : {"route remove 172.20.0.0/16", "route replace 172.20.0.0/16 172.21.0.0/16 192.168.10.3"}) {
    Ran ran = ctl(command);
    EXPECT_EQ(1, ran.status) << command;
    EXPECT_THAT(ran.err, HasSubstr("172.20.0.0/16: in Configuration Mode no route is removed")) << command;
  }
}

TEST_F(CtlSaveTest, ItemsThatNoChangeSavesAreNamed) {
  EXPECT_THAT(ctl("set snmpVersion 3").out, HasSubstr("stored, not saved: the next save of anything writes it"));
  EXPECT_THAT(ctl("set snmpVersion 3").out, Not(HasSubstr("not saved"))) << "nothing changed";
  EXPECT_THAT(ctl("set httpSessionTimeout 60").out,
              HasSubstr("stored, not saved: the configuration file has no line for it"));
}

TEST_F(CtlSaveTest, SaveSaysWhatCameOfIt) {
  EXPECT_EQ("saved /etc/config/kestrove.conf\n", ctl("save").out);
  fillDisk(kFolder);
  Ran ran = ctl("save");
  EXPECT_EQ(8, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("not saved: /etc/config/kestrove.conf: No space left on device"));
  EXPECT_THAT(ran.out, IsEmpty());
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(8, ctl("save").status);
  EXPECT_EQ(8, ctl("--json save").json()["error"]["exit"]);
}

TEST_F(CtlSaveTest, SaveInAReadOnlyFolder) {
  makeReadOnly(kFolder);
  Ran ran = ctl("save");
  EXPECT_EQ(8, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("not saved: /etc/config/kestrove.conf: Read-only file system"));
}

TEST_F(CtlSaveTest, APasswordFileThatCannotBeWrittenKeepsItsUser) {
  ASSERT_EQ(0, ctl("user add alice", "Passw0rd!\n").status);
  ASSERT_EQ(0, mount("/etc/passwd", "/etc/passwd", nullptr, MS_BIND, nullptr));
  ASSERT_EQ(0, mount("/etc/passwd", "/etc/passwd", nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr));
  Ran refused = ctl("user add bobby", "Passw0rd!\n");
  EXPECT_EQ(1, refused.status);
  EXPECT_THAT(refused.err, HasSubstr("bobby: Error opening file"));
  Ran half = ctl("user remove alice");
  EXPECT_EQ(8, half.status);
  EXPECT_THAT(half.err, HasSubstr("alice: gone from the store, but its password line stays and nothing is saved: "));
}

TEST_F(CtlSaveTest, AnEventLogThatCannotBeWrittenIsNamed) {
  fillDisk("/var/log/kestrove");
  Ran cleared = ctl("events clear");
  EXPECT_EQ(8, cleared.status);
  EXPECT_THAT(cleared.err, HasSubstr("the event log is cleared, not saved: Error"));
  Ran reset = ctl("stats reset compression");
  EXPECT_EQ(0, reset.status);
  EXPECT_THAT(reset.err, HasSubstr("reset; the event log's file cannot be written: "));
}

TEST_F(CtlSaveTest, AnEngineThatCannotBeSignalledDoesNotMakeAChangeUnsaved) {
  shm->taskPids[4] = 999999;
  Ran ran = ctl("set wanLinkRate 2048000");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(readFile(kFile), HasSubstr("2048000"));
}

}  // namespace
}  // namespace kestrove::testing
