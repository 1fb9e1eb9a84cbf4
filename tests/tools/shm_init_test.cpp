// SPDX-License-Identifier: Apache-2.0
// The start-up program, from its files to the store that it leaves.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "kestrove/kestrove.h"
#include "tests/support/peer.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"

using namespace kestrove::testing;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace {

enum { kBuilt, kStoreExists, kUsage, kNotBuilt, kUnconfigured, kIncomplete, kLocked, kNotPermitted };

constexpr char kConfig[] = "/etc/config/kestrove.conf";
constexpr char kFactory[] = "/etc/config/factory.defaults";
constexpr char kPlatform[] = "/etc/config/platform";

struct Start {
  int status;
  std::string output;
  std::string complaints;
};

Start shmInit(const std::string& arguments = "") {
  std::string line = std::string(KESTROVE_SHM_INIT) + " " + arguments + " >/tmp/output 2>/tmp/complaints";
  int status = system(line.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile("/tmp/output"), readFile("/tmp/complaints")};
}

class ShmInit : public ::testing::Test {
 protected:
  void TearDown() override { dropStore(); }
  // Runs it and attaches the store that it made.
  Start start(const std::string& arguments = "") {
    Start run = shmInit(arguments);
    dropAttachment();
    if (shm_lock() == 0) shm_unlock();
    return run;
  }

 private:
  static void dropAttachment() {
    if (shm) shm_detach();
    shm = nullptr;
  }
};

bool storeExists() { return shmget(SHM_KEY, 1, 0) != -1; }

TEST_F(ShmInit, HelpNamesOptionsAndExitStatus) {
  Start run = shmInit("--help");
  EXPECT_EQ(kBuilt, run.status);
  for (const char* word :
       {"--replace", "--config", "--event-log", "--platform", "--ipv6", "--version", "Exit status"}) {
    EXPECT_THAT(run.output, HasSubstr(word));
  }
  EXPECT_THAT(run.complaints, IsEmpty());
  EXPECT_FALSE(storeExists());
}

TEST_F(ShmInit, VersionTellsTheLayout) {
  Start run = shmInit("--version");
  char expected[96];
  snprintf(expected, sizeof expected, "shm-init %s, layout %016llx\n", kestrove_version(),
           static_cast<unsigned long long>(kestrove_layout_hash()));
  EXPECT_EQ(kBuilt, run.status);
  EXPECT_EQ(expected, run.output);
  EXPECT_FALSE(storeExists());
}

TEST_F(ShmInit, WrongUsageBuildsNothing) {
  for (const char* arguments :
       {"--none", "extra", "--platform 16", "--platform -1", "--platform x", "--ipv6 7", "--wan-opt maybe",
        "--interval 0", "--interval 86401", "--config", "--platform-file /none"}) {
    Start run = shmInit(arguments);
    EXPECT_EQ(kUsage, run.status) << arguments;
    EXPECT_THAT(run.complaints, StartsWith("shm-init: ")) << arguments;
    EXPECT_THAT(run.output, IsEmpty());
  }
  EXPECT_FALSE(storeExists());
}

TEST_F(ShmInit, BuildsAnOperationalStore) {
  writeFile(kFactory, "LAN_MTU 1300\n");
  writeFile(kConfig, "INTERNET_MTU 1200\n");
  Start run = start();
  EXPECT_EQ(kBuilt, run.status) << run.complaints;
  EXPECT_THAT(run.output, IsEmpty());
  EXPECT_THAT(run.complaints, IsEmpty());
  EXPECT_EQ(uint32_t{SHM_STATE_OPERATIONAL}, shm->operationalState);
  EXPECT_EQ(1300u, shm->config.lanMaximumTransferUnit);
  EXPECT_EQ(1200u, shm->config.wanMaximumTransferUnit);
  EXPECT_FALSE(fileLockHeld());
}

TEST_F(ShmInit, LastEventIsTheStart) {
  writeFile(kConfig, "");
  start();
  int count = getEventCount();
  ASSERT_LE(3, count);
  const EventRecord& last = shm->eventLog.record[count - 1];
  EXPECT_EQ(2u, last.eventId);
  EXPECT_EQ(0u, last.source);
  EXPECT_STREQ("--", last.userName);
}

TEST_F(ShmInit, OtherPathsAreUsed) {
  writeFile("/tmp/other.conf", "LAN_MTU 1111\n");
  EXPECT_EQ(kBuilt, start("--config /tmp/other.conf --event-log /tmp/other.log").status);
  EXPECT_STREQ("/tmp/other.conf", shm->config.configFileName);
  EXPECT_STREQ("/tmp/other.log", shm->config.eventLogFileName);
  EXPECT_EQ(1111u, shm->config.lanMaximumTransferUnit);
}

TEST_F(ShmInit, MissingConfigurationStaysUnconfigured) {
  Start run = start();
  EXPECT_EQ(kUnconfigured, run.status);
  EXPECT_THAT(run.complaints, HasSubstr("no configuration could be read"));
  EXPECT_EQ(uint32_t{SHM_STATE_UNCONFIGURED}, shm->operationalState);
}

TEST_F(ShmInit, ExistingStoreIsRefused) {
  makeStore();
  shm->config.zipType = 77;
  Start run = shmInit();
  EXPECT_EQ(kStoreExists, run.status);
  EXPECT_THAT(run.complaints, HasSubstr("--replace"));
  EXPECT_EQ(77u, shm->config.zipType);
}

TEST_F(ShmInit, ExistingStoreIsReplacedWhenTold) {
  makeStore();
  shm->config.zipType = 77;
  ShmData* before = shm;
  writeFile(kConfig, "LAN_MTU 1400\n");
  shm = nullptr;
  EXPECT_EQ(kBuilt, start("--replace").status);
  EXPECT_EQ(0u, shm->config.zipType);
  EXPECT_EQ(1400u, shm->config.lanMaximumTransferUnit);
  EXPECT_EQ(77u, before->config.zipType) << "who is attached keeps the old one";
}

TEST_F(ShmInit, StoreOfAnotherSizeIsReplacedToo) {
  ASSERT_NE(-1, shmget(SHM_KEY, 4096, IPC_CREAT | 0666));
  EXPECT_EQ(kStoreExists, shmInit().status);
  writeFile(kConfig, "");
  EXPECT_EQ(kBuilt, start("--replace").status);
  EXPECT_NE(nullptr, shm);
}

TEST_F(ShmInit, LockFileThatCannotBeMadeIsNamed) {
  unlink("/var/lock/shm");
  ASSERT_EQ(0, mkdir("/var/lock/shm", 0755));
  Start run = shmInit();
  EXPECT_EQ(kNotBuilt, run.status);
  EXPECT_THAT(run.complaints, HasSubstr("Error creating lock file: Is a directory\n"));
  rmdir("/var/lock/shm");
}

TEST_F(ShmInit, PlatformComesFromItsFile) {
  writeFile(kConfig, "");
  writeFile(kPlatform,
            "# the words without a keyword\nhardwarePlatform 14\n\nipv6Support on  # also\n wanOptSupport off\n"
            "accumulationInterval 60\n");
  EXPECT_EQ(kBuilt, start().status);
  EXPECT_EQ(14u, shm->config.hardwarePlatform);
  EXPECT_EQ(uint32_t{SHM_ON}, shm->config.ipv6Support);
  EXPECT_EQ(SHM_OFF, shm->config.wanOptSupport);
  EXPECT_EQ(60, shm->statistics.accumulationInterval);
}

TEST_F(ShmInit, OptionsGoBeforeThePlatformFile) {
  writeFile(kConfig, "");
  writeFile("/tmp/platform", "hardwarePlatform 14\naccumulationInterval 60\n");
  EXPECT_EQ(kBuilt, start("--platform-file /tmp/platform --platform 3 --wan-opt on").status);
  EXPECT_EQ(3u, shm->config.hardwarePlatform);
  EXPECT_EQ(SHM_ON, shm->config.wanOptSupport);
  EXPECT_EQ(60, shm->statistics.accumulationInterval);
}

TEST_F(ShmInit, PlatformThatIsNotGivenStaysZero) {
  writeFile(kConfig, "");
  EXPECT_EQ(kBuilt, start().status);
  EXPECT_EQ(0u, shm->config.hardwarePlatform);
  EXPECT_EQ(0u, shm->config.ipv6Support);
  EXPECT_EQ(0, shm->config.wanOptSupport);
  EXPECT_EQ(0, shm->statistics.accumulationInterval);
}

TEST_F(ShmInit, PlatformFileWithAFaultIsNamedByLine) {
  for (const char* line : {"hardwarePlatform 16", "hardwarePlatform", "hardwarePlatform 1 2", "ipv6Support 1",
                           "colour red", "accumulationInterval 0", "accumulationInterval 99999999999"}) {
    writeFile(kPlatform, std::string("# first\n") + line + "\n");
    Start run = shmInit();
    EXPECT_EQ(kUsage, run.status) << line;
    EXPECT_THAT(run.complaints, HasSubstr("/etc/config/platform: line 2: ")) << line;
  }
  EXPECT_FALSE(storeExists());
}

constexpr char kRules[] =
    "SELEC_ACCEL               10.1.0.0         255.255.0.0      0.0.0.0          0.0.0.0          "
    "6         0         0         0         0        5           NONE 20000     1         3        \n"
    "SELEC_ACCEL_V6            2001:db8::                       32        ::                               0         "
    "6         0         0         80        80       5           NONE 20000     1         3        \n"
    "SELEC_ACCEL_ANY           17        0         0         53        53       5           NONE 20000     1         "
    "3        \n";

std::vector<uint32_t> families() {
  std::vector<uint32_t> families;
  for (int i = 0; i < shm->filterTable.ruleCount && i < SHM_RULES; ++i) {
    families.push_back(shm->filterTable.rule[i].ipVersion);
  }
  return families;
}

TEST_F(ShmInit, WithoutIpv6ItsRulesAreLeftOut) {
  writeFile(kConfig, kRules);
  EXPECT_EQ(kBuilt, start().status);
  EXPECT_THAT(families(), ElementsAre(4u, 4u, 4u));
}

TEST_F(ShmInit, WithIpv6TheRulesAreReadAgainInTheirOrder) {
  writeFile(kConfig, std::string("LAN_MTU 1400\n") + kRules + "ROUTE 10.1.0.0 255.255.0.0 10.0.0.1 2\n");
  Start run = start("--ipv6 on");
  EXPECT_EQ(kBuilt, run.status) << run.complaints;
  EXPECT_THAT(families(), ElementsAre(4u, 6u, 1u, 1u));
  EXPECT_EQ(8, shm->filterTable.rule[3].priority) << "the default rule is last";
  EXPECT_EQ(10000, shm->filterTable.rule[3].bandwidth);
  EXPECT_THAT(run.output, IsEmpty()) << "what the reader prints is not the program's output";
  EXPECT_THAT(readFile(kConfig), HasSubstr("SELEC_ACCEL_V6")) << "nothing was saved in between";
}

TEST_F(ShmInit, ModeIsThatOfTheTwoSwitches) {
  struct Row {
    const char* switches;
    uint32_t mode;
  };
  for (const Row& row : {Row{"", 0},
                         {"SINGLE_INTERFACE 1\n", 1},
                         {"SINGLE_INTERFACE 1\nPBR 1\n", 2},
                         {"PBR 1\n", 0},
                         {"SINGLE_INTERFACE 0\nPBR 1\n", 0},
                         {"SINGLE_INTERFACE 1\nPBR 0\n", 1}}) {
    writeFile(kConfig, row.switches);
    EXPECT_EQ(kBuilt, start("--replace").status) << row.switches;
    EXPECT_EQ(row.mode, shm->config.opModeState) << row.switches;
  }
}

TEST_F(ShmInit, ModeIsSetUpAndThePacketFilterReset) {
  writeFile(kConfig, "REAL_LAN_NAME eth0\nPHYSICAL_LAN_NAME eth1\nPHYSICAL_WAN_NAME eth0\n");
  EXPECT_EQ(kBuilt, start().status);
  EXPECT_THAT(shellLines(), Contains(HasSubstr("/usr/bin/init-bridging ")));
  EXPECT_THAT(programs(), Contains(HasSubstr("iptables-restore")));
}

TEST_F(ShmInit, OldAccountIsMoved) {
  writeFile(kConfig, "ADMIN_USERNAME bossy\nADMIN_PASSWORD Secret-12\n");
  EXPECT_EQ(kBuilt, start().status);
  EXPECT_EQ(1, authenticateUser("bossy", "Secret-12"));
  EXPECT_EQ(1, shm->config.adminUserCount);
}

TEST_F(ShmInit, OldAccountThatCannotBeMovedIsNamed) {
  std::string full = "ADMIN_USERNAME bossy\nADMIN_PASSWORD Secret-12\n";
  for (const char* name : {"usera", "userb", "userc", "userd", "usere"}) {
    full += std::string("USER_ACCOUNT ") + name + " 0 0 0\n";
  }
  writeFile(kConfig, full);
  Start run = start();
  EXPECT_EQ(kIncomplete, run.status);
  EXPECT_THAT(run.complaints, AllOf(HasSubstr("the old administrator account"), HasSubstr("The table is full")));
  EXPECT_EQ(2u, shm->eventLog.record[getEventCount() - 1].eventId) << "the steps behind it are done all the same";
}

// A plain file whose reading fails.
void makeUnreadable(const char* path) {
  writeFile(path, "LAN_MTU 1400\n");
  ASSERT_EQ(0, mount("/proc/self/mem", path, nullptr, MS_BIND, nullptr));
}

TEST_F(ShmInit, UnreadableConfigurationIsNamedAndNeverOverwritten) {
  makeUnreadable(kConfig);
  Start run = start();
  EXPECT_THAT(run.complaints, HasSubstr("cannot be read"));
  umount2(kConfig, MNT_DETACH);
  EXPECT_EQ("LAN_MTU 1400\n", readFile(kConfig));
}

TEST_F(ShmInit, UnreadableFileOfTheFactoryDefaultsIsNamedToo) {
  writeFile(kFactory, "KESTROVE_CONFIG /etc/config/other.conf\n");
  makeUnreadable("/etc/config/other.conf");
  Start run = start();
  EXPECT_THAT(run.complaints, HasSubstr("/etc/config/other.conf cannot be read"));
  umount2("/etc/config/other.conf", MNT_DETACH);
  EXPECT_EQ("LAN_MTU 1400\n", readFile("/etc/config/other.conf"));
}

TEST_F(ShmInit, StoreLeftInLoadingByADeadProcessIsRepairedAndNamed) {
  makeStore();
  shm->operationalState = SHM_STATE_CONFIGURATION;
  writeFile("/var/lock/shm.loading", "999999 12345 1\n");
  Start run = shmInit();
  EXPECT_EQ(kStoreExists, run.status);
  EXPECT_THAT(run.complaints, HasSubstr("process 999999 died"));
  EXPECT_EQ(uint32_t{SHM_STATE_OPERATIONAL}, shm->operationalState);
}

// Another process that has the lock file locked, with a store or without one.
class LockHolder {
 public:
  LockHolder()
      : peer_([](const Peer::Line& line) {
          create_lock_file();
          int fd = open("/var/lock/shm", O_RDWR);
          struct flock whole = {};
          whole.l_type = F_WRLCK;
          whole.l_whence = SEEK_SET;
          fcntl(fd, F_SETLKW, &whole);
          line.say('l');
          line.hear();
          return 0;
        }) {
    EXPECT_EQ('l', peer_.line().hear());
  }
  pid_t pid() const { return peer_.pid(); }

 private:
  Peer peer_;
};

TEST_F(ShmInit, AStoreThatIsLockedIsReplacedOnlyInTime) {
  makeStore();
  shm->config.zipType = 77;
  LockHolder holder;
  kill(holder.pid(), SIGSTOP);
  usleep(50000);
  Start run = shmInit("--replace --wait 0.2");
  EXPECT_EQ(kLocked, run.status);
  EXPECT_THAT(run.complaints, AllOf(HasSubstr("process " + std::to_string(holder.pid()) + " ("),
                                    HasSubstr("), which is stopped; not free within 0.2 seconds (--wait)")));
  EXPECT_TRUE(storeExists());
  EXPECT_EQ(77u, shm->config.zipType);
  kill(holder.pid(), SIGCONT);
}

TEST_F(ShmInit, AStoreThatIsThereIsNotWaitedFor) {
  makeStore();
  LockHolder holder;
  EXPECT_EQ(kStoreExists, shmInit().status);
}

TEST_F(ShmInit, ALockWithoutAStoreIsWaitedForToo) {
  LockHolder holder;
  EXPECT_EQ(kLocked, shmInit("--wait 0").status);
  EXPECT_FALSE(storeExists());
}

TEST_F(ShmInit, WhoWaitsFindsTheStoreReady) {
  writeFile(kConfig, "SINGLE_INTERFACE 1\n");
  makeStore();
  shm->config.zipType = 77;
  // Asks again and again for the lock of the new store: the first look is what counts.
  Peer waiter([](const Peer::Line& line) {
    line.say('r');
    for (int i = 0; i < 2000; ++i) {
      int id = shmget(SHM_KEY, SHM_SIZE, 0);
      void* segment = id == -1 ? nullptr : shmat(id, nullptr, 0);
      if (segment && segment != reinterpret_cast<void*>(-1) && static_cast<ShmData*>(segment)->config.zipType != 77) {
        shm = static_cast<ShmData*>(segment);
        if (shm_lock() != 0) return 9;
        bool ready = shm->operationalState == SHM_STATE_OPERATIONAL && shm->config.opModeState == 1;
        shm_unlock();
        return ready ? 0 : 1;
      }
      if (segment) shmdt(segment);
      usleep(500);
    }
    return 2;
  });
  ASSERT_EQ('r', waiter.line().hear());
  EXPECT_EQ(kBuilt, shmInit("--replace").status);
  EXPECT_EQ(0, waiter.join());
}

TEST_F(ShmInit, ADamagedConfigurationIsKeptBesideTheNewOne) {
  const std::string damaged = "LAN_MTU 1400\nLAN_ADDR 10.1.2\ncolour red\n";
  writeFile(kConfig, damaged);
  Start run = start();
  EXPECT_EQ(kBuilt, run.status);
  EXPECT_THAT(run.complaints,
              HasSubstr("/etc/config/kestrove.conf is damaged (line 2: LAN_ADDR: no address: 10.1.2; line 3: unknown "
                        "keyword colour); kept as /etc/config/kestrove.conf.damaged\n"));
  EXPECT_EQ(damaged, readFile("/etc/config/kestrove.conf.damaged"));
  EXPECT_THAT(readFile(kConfig), ::testing::Not(HasSubstr("colour"))) << "the mode's event has saved";
}

TEST_F(ShmInit, ACopyIsKeptOnceAndNeverLost) {
  writeFile(kConfig, "colour red\n");
  start();
  writeFile(kConfig, "colour red\n");
  EXPECT_THAT(start("--replace").complaints, HasSubstr("kept as /etc/config/kestrove.conf.damaged\n"));
  EXPECT_FALSE(fileExists("/etc/config/kestrove.conf.damaged.2"));
  writeFile(kConfig, "colour blue\n");
  EXPECT_THAT(start("--replace").complaints, HasSubstr("kept as /etc/config/kestrove.conf.damaged.2\n"));
  EXPECT_EQ("colour red\n", readFile("/etc/config/kestrove.conf.damaged"));
  EXPECT_EQ("colour blue\n", readFile("/etc/config/kestrove.conf.damaged.2"));
}

TEST_F(ShmInit, ADamagedFileThatTheFactoryDefaultsNameIsKeptToo) {
  writeFile(kFactory, "KESTROVE_CONFIG /etc/config/other.conf\n");
  writeFile("/etc/config/other.conf", "LAN_NAME abcdefghijklmnop\n");
  EXPECT_THAT(start().complaints, HasSubstr("kept as /etc/config/other.conf.damaged"));
}

TEST_F(ShmInit, ASoundConfigurationIsNotKept) {
  writeFile(kConfig, "LAN_MTU 1400\n");
  Start run = start();
  EXPECT_THAT(run.complaints, IsEmpty());
  EXPECT_FALSE(fileExists("/etc/config/kestrove.conf.damaged"));
  EXPECT_THAT(start("--replace").complaints, IsEmpty()) << "what was saved of it";
}

TEST_F(ShmInit, ACopyThatCannotBeMadeIsNamed) {
  writeFile(kConfig, "colour red\n");
  ASSERT_EQ(0, mount("tmpfs", "/etc/config", "tmpfs", 0, "size=16k"));
  writeFile(kConfig, "colour red\n");
  ASSERT_EQ(0, system("cat /dev/zero >/etc/config/filler 2>/dev/null; true"));
  EXPECT_THAT(start().complaints, HasSubstr(" and cannot be kept: No space left on device"));
}

TEST_F(ShmInit, OutputThatCannotBeWrittenIsNamed) {
  for (const char* option : {"--help", "--version"}) {
    int status = system((std::string(KESTROVE_SHM_INIT) + " " + option + " >/dev/full 2>/tmp/complaints").c_str());
    EXPECT_EQ(kIncomplete, WEXITSTATUS(status));
    EXPECT_EQ("shm-init: standard output: No space left on device\n", readFile("/tmp/complaints"));
  }
}

TEST_F(ShmInit, ControlCharactersAreRefused) {
  Start run = shmInit("--config \"$(printf '/tmp/a\\nb')\"");
  EXPECT_EQ(kUsage, run.status);
  EXPECT_THAT(run.complaints, HasSubstr("word 2 of the command line holds a control character: /tmp/a\\x0ab"));
  EXPECT_FALSE(storeExists());
}

TEST_F(ShmInit, WhoMayNotIsToldSo) {
  ASSERT_EQ(0, create_lock_file());
  chmod("/var/lock/shm", 0);
  int status = system("setpriv --bounding-set -dac_override,-dac_read_search " KESTROVE_SHM_INIT " 2>/tmp/complaints");
  EXPECT_EQ(kNotPermitted, WEXITSTATUS(status));
  EXPECT_THAT(readFile("/tmp/complaints"), HasSubstr("not permitted: /var/lock/shm"));
  unlink("/var/lock/shm");
  chmod("/var/lock", 0555);
  status = system("setpriv --bounding-set -dac_override,-dac_read_search " KESTROVE_SHM_INIT " 2>/tmp/complaints");
  EXPECT_EQ(kNotPermitted, WEXITSTATUS(status)) << "no lock file, in a folder of others";
}

}  // namespace
