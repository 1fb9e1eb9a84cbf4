// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "kestrove/kestrove.h"
#include "tests/support/files.h"
#include "tests/support/peer.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

using namespace kestrove::testing;
using ::testing::Contains;
using ::testing::Not;
using ::testing::StartsWith;

namespace {

constexpr char kFactory[] = "/etc/config/factory.defaults";
constexpr char kFirstStart[] = "warning: Shm pointer was not null.";

class Birth : public ::testing::Test {
 protected:
  void TearDown() override { dropStore(); }
  int birth() { return init_shared_memory(kConfigFile, kEventFile); }
};

// What a failing birth printed to standard error.
std::string complaint(int expected = -1) {
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(expected, init_shared_memory(kConfigFile, kEventFile));
  return ::testing::internal::GetCapturedStderr();
}

TEST_F(Birth, WithoutAnyFileGivesAnUnconfiguredStore) {
  ASSERT_EQ(0, birth());
  EXPECT_EQ(0, shm_lock_count);
  EXPECT_FALSE(fileLockHeld());
  EXPECT_EQ(uint32_t{SHM_STATE_UNCONFIGURED}, shm->operationalState);
  EXPECT_STREQ(kConfigFile, shm->config.configFileName);
  EXPECT_STREQ(kEventFile, shm->config.eventLogFileName);
}

TEST_F(Birth, SegmentHasKeySizeAndMode) {
  ASSERT_EQ(0, birth());
  shmid_ds status;
  ASSERT_EQ(0, shmctl(shmget(6001, 1308576, 0), IPC_STAT, &status));
  EXPECT_EQ(1308576u, status.shm_segsz);
  EXPECT_EQ(0666u, status.shm_perm.mode & 0777);
}

TEST_F(Birth, FirstStartWarnsOfItsNullPointer) {
  ASSERT_EQ(0, birth());
  EXPECT_THAT(syslogLines(), Contains(kFirstStart));
}

TEST_F(Birth, LockFileIsMadeAndEmptied) {
  mkdir("/var/lock", 0755);
  writeFile(kLockFile, "old");
  ASSERT_EQ(0, birth());
  EXPECT_EQ("", readFile(kLockFile));
}

TEST_F(Birth, GoodFileLeavesStateZero) {
  writeFile(kConfigFile, "LAN_MTU 1400\n");
  ASSERT_EQ(0, birth());
  EXPECT_EQ(0u, shm->operationalState);
  EXPECT_EQ(1400u, shm->config.lanMaximumTransferUnit);
}

TEST_F(Birth, ConfigurationFileGoesOverTheFactoryDefaults) {
  writeFile(kFactory, "LAN_MTU 1300\nINTERNET_MTU 1200\n");
  writeFile(kConfigFile, "LAN_MTU 1400\n");
  ASSERT_EQ(0, birth());
  EXPECT_EQ(1400u, shm->config.lanMaximumTransferUnit);
  EXPECT_EQ(1200u, shm->config.wanMaximumTransferUnit);
}

TEST_F(Birth, MissingFactoryDefaultsAreLogged) {
  writeFile(kConfigFile, "");
  ASSERT_EQ(0, birth());
  EXPECT_THAT(syslogLines(), Contains("err: Error opening /etc/config/factory.defaults: No such file or directory"));
  EXPECT_EQ(0u, shm->operationalState);
}

TEST_F(Birth, FactoryDefaultsMayNameAnotherFile) {
  writeFile(kFactory, "KESTROVE_CONFIG /etc/config/other.conf\n");
  writeFile("/etc/config/other.conf", "LAN_MTU 1111\n");
  writeFile(kConfigFile, "LAN_MTU 1400\n");
  ASSERT_EQ(0, birth());
  EXPECT_STREQ("/etc/config/other.conf", shm->config.configFileName);
  EXPECT_EQ(1111u, shm->config.lanMaximumTransferUnit);
}

TEST_F(Birth, PathsAreCutTo127Characters) {
  std::string path = "/" + std::string(200, 'p');
  ASSERT_EQ(0, init_shared_memory(path.c_str(), path.c_str()));
  EXPECT_EQ(path.substr(0, 127), shm->config.configFileName);
  EXPECT_EQ(path.substr(0, 127), shm->config.eventLogFileName);
}

TEST_F(Birth, MinimumsAreThoseOfTheProductInTheFactoryDefaults) {
  writeFile(kFactory, "PRODUCT_ID 5\n");
  ASSERT_EQ(0, birth());
  EXPECT_EQ(256000u, shm->config.minRate);
  EXPECT_EQ(128u, shm->config.minMtu);
}

TEST_F(Birth, MinimumsOfEveryOtherProduct) {
  writeFile(kConfigFile, "PRODUCT_ID 5\n");  // read after the minimums are set
  ASSERT_EQ(0, birth());
  EXPECT_EQ(5u, shm->config.productId);
  EXPECT_EQ(10000u, shm->config.minRate);
  EXPECT_EQ(576u, shm->config.minMtu);
}

TEST_F(Birth, RuleTableHoldsTheDefaultRuleAlone) {
  ASSERT_EQ(0, birth());
  FilterRule expected = {};
  expected.ipVersion = 4;
  expected.priority = 8;
  expected.accel = 1;
  expected.ruleAction = 3;
  expected.target = 1;
  expected.bandwidth = 10000;
  EXPECT_EQ(1, shm->filterTable.ruleCount);
  EXPECT_EQ(0, memcmp(&expected, &shm->filterTable.rule[0], sizeof expected));
}

TEST_F(Birth, DefaultRuleHasTheProductsRate) {
  writeFile(kFactory, "PRODUCT_ID 5\n");
  ASSERT_EQ(0, birth());
  EXPECT_EQ(256000, shm->filterTable.rule[0].bandwidth);
}

TEST_F(Birth, RouteTablesAreEmptyBeforeAnyFileIsRead) {
  ASSERT_EQ(0, birth());
  EXPECT_EQ(0u, shm->routes.head);
  EXPECT_EQ(0u, shm->routes6.head6);
  for (const RouteEntry& slot : shm->routes.slot) {
    ASSERT_EQ(SHM_NO_SLOT, slot.inUse);
    ASSERT_EQ(SHM_NO_SLOT, slot.next);
  }
  for (const Route6Entry& slot : shm->routes6.slot) {
    ASSERT_EQ(SHM_NO_SLOT, slot.inUse);
    ASSERT_EQ(SHM_NO_SLOT, slot.next);
  }
}

TEST_F(Birth, RoutesOfTheFactoryDefaultsStay) {
  writeFile(kFactory, "ROUTE 10.1.0.0 255.255.0.0 10.0.0.1 1\n");
  ASSERT_EQ(0, birth());
  RouteEntry route;
  EXPECT_EQ(0, getFirstRouteTableEntry(&route));
  EXPECT_STREQ("10.1.0.0", ipv4_to_a(route.destination));
}

TEST_F(Birth, ReadableEventLogMovesToTheFixedPath) {
  auto log = std::make_unique<EventLog>();
  memset(log.get(), 0, sizeof *log);
  log->writeIndex = 1;
  log->record[0].eventId = 24;
  ASSERT_EQ(0, write_event_log("/tmp/events", log.get()));
  ASSERT_EQ(0, init_shared_memory(kConfigFile, "/tmp/events"));
  EXPECT_STREQ(kEventFile, shm->config.eventLogFileName);
  EXPECT_EQ(24u, shm->eventLog.record[0].eventId);
  EXPECT_THAT(syslogLines(), Not(Contains(StartsWith("info: Error opening event log"))));
}

TEST_F(Birth, MissingEventLogKeepsItsNameAndIsLoggedUnderTheFixedOne) {
  ASSERT_EQ(0, init_shared_memory(kConfigFile, "/tmp/none"));
  EXPECT_STREQ("/tmp/none", shm->config.eventLogFileName);
  EXPECT_THAT(syslogLines(),
              Contains("info: Error opening event log (/var/log/kestrove/event.log): No such file or directory"));
}

TEST_F(Birth, ShortEventLogKeepsItsName) {
  writeFile("/tmp/short", "abc");
  ASSERT_EQ(0, init_shared_memory(kConfigFile, "/tmp/short"));
  EXPECT_STREQ("/tmp/short", shm->config.eventLogFileName);
  EXPECT_THAT(syslogLines(), Contains(StartsWith("info: Error opening event log (/var/log/kestrove/event.log): ")));
}

TEST_F(Birth, StatisticsAreResetOnBehalfOfTheSystem) {
  ASSERT_EQ(0, birth());
  EXPECT_EQ(100u, shm->statistics.compressionRatio);
  ASSERT_EQ(2, getEventCount());
  EXPECT_EQ(16u, shm->eventLog.record[0].eventId);
  EXPECT_EQ(14u, shm->eventLog.record[1].eventId);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(0u, shm->eventLog.record[i].source);
    EXPECT_STREQ("--", shm->eventLog.record[i].userName);
  }
}

TEST_F(Birth, EventsComeBehindThoseOfTheImage) {
  auto log = std::make_unique<EventLog>();
  memset(log.get(), 0, sizeof *log);
  log->writeIndex = 5;
  ASSERT_EQ(0, write_event_log(kEventFile, log.get()));
  ASSERT_EQ(0, birth());
  EXPECT_EQ(7u, shm->eventLog.writeIndex);
}

TEST_F(Birth, SwitchedOffLoggingLogsNothing) {
  writeFile(kConfigFile, "EVENT_LOGGING 0\n");
  ASSERT_EQ(0, birth());
  EXPECT_EQ(0, getEventCount());
}

TEST_F(Birth, ShortEngineVersionIsDerived) {
  writeFile(kFactory, "KESTROVE_VERSION 4.1.0.23\n");
  ASSERT_EQ(0, birth());
  EXPECT_STREQ("4.1.0.23", shm->config.kestroveFullVersion);
  EXPECT_STREQ("4.1", shm->config.kestroveVersion);
}

TEST_F(Birth, ShortVersionStaysEmptyWhereTheFullOneIsTooShort) {
  writeFile(kConfigFile, "KESTROVE_VERSION 5.2\n");
  ASSERT_EQ(0, birth());
  EXPECT_STREQ("", shm->config.kestroveVersion);
}

TEST_F(Birth, ShortVersionWritesNoTerminator) {
  writeFile(kConfigFile, "KESTROVE_VERSION 5.2.0.7\n");
  ASSERT_EQ(0, birth());
  strcpy(shm->config.kestroveVersion, "########");
  ASSERT_EQ(0, birth());  // attached: fills the store again
  EXPECT_STREQ("5.2#####", shm->config.kestroveVersion);
}

TEST_F(Birth, ShortProtocolVersionIsDerivedForItsProductAlone) {
  writeFile(kFactory, "DRELM_VERSION 4.1.10.5\n");
  writeFile(kConfigFile, "PRODUCT_ID 5\n");
  ASSERT_EQ(0, birth());
  EXPECT_STREQ("4.1.10", shm->config.drelmVersion);
  dropStore();
  writeFile(kConfigFile, "PRODUCT_ID 4\n");
  ASSERT_EQ(0, birth());
  EXPECT_STREQ("", shm->config.drelmVersion);
}

TEST_F(Birth, ExistingSegmentIsLeftAlone) {
  int id = shmget(SHM_KEY, SHM_SIZE, IPC_CREAT | 0666);
  ASSERT_NE(-1, id);
  EXPECT_FAILS_WITH(SHM_EATTACH, birth());
  EXPECT_EQ(nullptr, shm);
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_TRUE(fileLockHeld());
  auto* untouched = static_cast<const ShmData*>(shmat(id, nullptr, SHM_RDONLY));
  EXPECT_EQ(0u, untouched->routes.slot[0].inUse);
  EXPECT_EQ(0, untouched->filterTable.ruleCount);
}

TEST_F(Birth, OperationsAfterAFailureFindNoStore) {
  ASSERT_NE(-1, shmget(SHM_KEY, SHM_SIZE, IPC_CREAT | 0666));
  ASSERT_EQ(-1, birth());
  EXPECT_FAILS_WITH(SHM_EATTACH, getLoginFrom());
  EXPECT_EQ(1, shm_lock_count);
}

TEST_F(Birth, AttachedProcessFillsItsStoreAgain) {
  writeFile(kConfigFile, "LAN_MTU 1400\n");
  ASSERT_EQ(0, birth());
  clearSyslog();
  shm->config.lanMaximumTransferUnit = 1;
  shm->routes.head = 7;
  EXPECT_EQ(0, birth());
  EXPECT_EQ(1400u, shm->config.lanMaximumTransferUnit);
  EXPECT_EQ(7u, shm->routes.head) << "tables are laid out in a new segment only";
  EXPECT_THAT(syslogLines(), Not(Contains(kFirstStart)));
}

TEST_F(Birth, SmallerSegmentUnderTheKeyIsAFailure) {
  ASSERT_NE(-1, shmget(SHM_KEY, 4096, IPC_CREAT | 0666));
  shm_errno = 77;
  EXPECT_EQ("Error getting shared memory ID: Invalid argument\n", complaint());
  EXPECT_EQ(77u, shm_errno);
  EXPECT_EQ(nullptr, shm);
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_TRUE(fileLockHeld());
}

TEST_F(Birth, SegmentThatCannotBeMadeIsAFailure) {
  while (shmget(IPC_PRIVATE, 1, IPC_CREAT | 0600) != -1) continue;  // until the system has no more
  EXPECT_EQ("Error getting shared memory ID: No space left on device\n", complaint());
  EXPECT_EQ(nullptr, shm);
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_TRUE(fileLockHeld());
}

#ifndef __SANITIZE_ADDRESS__  // which needs more address space itself
TEST_F(Birth, SegmentThatCannotBeAttachedIsAFailure) {
  shm_errno = 77;
  rlimit before;
  getrlimit(RLIMIT_AS, &before);
  rlimit none = {1, before.rlim_max};
  setrlimit(RLIMIT_AS, &none);
  std::string text = complaint();
  setrlimit(RLIMIT_AS, &before);
  EXPECT_EQ("Error attaching to shared memory: Cannot allocate memory\n", text);
  EXPECT_EQ(nullptr, shm);
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_EQ(77u, shm_errno);
  EXPECT_NE(-1, shmget(SHM_KEY, 1, 0));
}
#endif

TEST_F(Birth, LockThatCannotBeTakenIsAFailure) {
  ASSERT_EQ(0, create_lock_file());
  dup2(open(kLockFile, O_RDONLY), lockDescriptor());  // which takes no write lock
  EXPECT_EQ("Error taking shm lock: Bad file descriptor\n", complaint());
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno);
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Birth, LockFileThatCannotBeMadeIsAFailure) {
  unlink(kLockFile);
  ASSERT_EQ(0, mkdir(kLockFile, 0755));
  EXPECT_EQ("Error creating lock file: Is a directory\n", complaint());
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno);
  EXPECT_EQ(0, shm_lock_count);
  EXPECT_EQ(-1, shmget(SHM_KEY, 1, 0));
}

TEST_F(Birth, NullPathsAreRefused) {
  EXPECT_FAILS_WITH(SHM_EINVAL, init_shared_memory(nullptr, kEventFile));
  EXPECT_FAILS_WITH(SHM_EINVAL, init_shared_memory(kConfigFile, nullptr));
  EXPECT_EQ(0, shm_lock_count);
  EXPECT_EQ(-1, shmget(SHM_KEY, 1, 0));
}

TEST_F(Birth, WaitsForTheHolderOfTheLock) {
  Peer holder([](const Peer::Line& line) {
    if (create_lock_file() != 0 || shmget(SHM_KEY, SHM_SIZE, IPC_CREAT | 0666) == -1 || shm_lock() != 0) return 1;
    line.say('l');
    line.hear();
    delete_shared_memory();
    return 0;  // and with the process goes the lock
  });
  ASSERT_EQ('l', holder.line().hear());
  Peer starter([](const Peer::Line& line) {
    int result = init_shared_memory(kConfigFile, kEventFile);
    line.say('d');
    return result;
  });
  EXPECT_TRUE(starter.line().silentFor(150));
  holder.line().say('g');
  EXPECT_EQ(0, holder.join());
  EXPECT_EQ('d', starter.line().hear());
  EXPECT_EQ(0, starter.join());
  EXPECT_EQ(3, getSharedMemoryStatus());
}

// The ports of the appliance are there.
TEST_F(Birth, HardwareAddressesAreThoseOfThePorts) {
  writeFile(kConfigFile, "REAL_LAN_NAME eth1\nPHYSICAL_WAN_NAME eth0\nMANAGEMENT_NAME eth2\n");
  ASSERT_EQ(0, birth());
  char text[18];
  readMacAddr(0, text);
  EXPECT_STREQ("02:00:00:00:00:02", text);
  readMacAddr(1, text);
  EXPECT_STREQ("02:00:00:00:00:01", text);
  readMacAddr(3, text);
  EXPECT_STREQ("02:00:00:00:00:03", text);
}

TEST_F(Birth, GatewayIdIsDerivedAndItsFailureIgnored) {
  writeFile(kConfigFile, "PHYSICAL_WAN_NAME eth0\n");
  ASSERT_EQ(0, birth());
  EXPECT_EQ(0, memcmp(shm->config.gatewayId, "\x00\x00\x00\x01", 4));
}

TEST_F(Birth, KnownVendorGivesAWholeGatewayId) {
  ASSERT_EQ(0, system("ip link set eth0 address 00:0c:bd:11:22:33"));
  writeFile(kConfigFile, "PHYSICAL_WAN_NAME eth0\n");
  ASSERT_EQ(0, birth());
  EXPECT_EQ(0, memcmp(shm->config.gatewayId, "\x01\x11\x22\x33", 4));
}

}  // namespace
