// SPDX-License-Identifier: Apache-2.0
// How long operations hold the lock.
#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tests/support/files.h"
#include "tests/support/lock_watch.h"
#include "tests/support/peer.h"
#include "tests/support/store.h"

using namespace kestrove::testing;
using ::testing::ElementsAre;

namespace {

constexpr char kUser[] = "admin";
constexpr int kBriefly = 150;      // milliseconds
constexpr int kRelaySetting = 41;  // runs two programs, the first at once
constexpr int kCompression = 9;
constexpr int kDeadEngine = 999999;

class Hold : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->config.loggingOperState = SHM_ON;
  }
  int setRelay(uint32_t value) { return setKestroveConfigItem(kRelaySetting, value, 0, kUser); }
  int switchCompression(uint32_t value) { return setKestroveConfigItem(kCompression, value, 0, kUser); }
};

TEST_F(Hold, ProgramOfASetterRunsInsideIt) {
  LockWatch watch;
  watch.instead("/sbin/FtwWdgCtl");
  EXPECT_EQ(0, setRelay(1));
  EXPECT_THAT(watch.seen(), ElementsAre("FtwWdgCtl held", "FtwWdgCtl held"));
  EXPECT_FALSE(fileLockHeld());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Hold, LevelLeftCountedIsNoHold) {
  LockWatch watch;
  watch.instead("/sbin/FtwWdgCtl");
  shm_lock_count = 2;
  EXPECT_EQ(0, setRelay(2));
  EXPECT_THAT(watch.seen(), ElementsAre("FtwWdgCtl held", "FtwWdgCtl held"));
  EXPECT_FALSE(fileLockHeld());
  EXPECT_EQ(2, shm_lock_count);
}

// A save and an event lie before the end of this operation.
TEST_F(Hold, SavesAndEventsInsideKeepIt) {
  LockWatch watch;
  watch.instead("/usr/bin/zip");
  EXPECT_EQ(0, save_shared_memory());
  EXPECT_EQ(0, setShmOperationalState(SHM_STATE_OPERATIONAL));
  mkdir("/usr/local/apache2", 0755);
  mkdir("/usr/local/apache2/htdocs", 0755);
  EXPECT_EQ(0, saveSystemState(0, kUser));
  EXPECT_THAT(watch.seen(), ElementsAre("zip held"));
}

TEST_F(Hold, CopyOfAnUpdatedLogIsMadeInsideIt) {
  LockWatch watch;
  watch.instead("/bin/cp");
  EXPECT_EQ(0, logSystemUpdateEvent(4, 0, kUser));
  EXPECT_THAT(watch.seen(), ElementsAre("cp held"));
  EXPECT_FALSE(fileLockHeld());
}

TEST_F(Hold, ScriptsThatMayUseTheStoreRunWithoutIt) {
  LockWatch watch;
  for (const char* name : {"apacheConfig.sh", "snmpdConfig.sh", "sshdConfig.sh"}) {
    watch.instead(std::string("/usr/bin/") + name);
  }
  uint32_t address = 0x0a00000a;
  EXPECT_EQ(0, setNetworkConfigItem(1, &address, 0, kUser));
  EXPECT_THAT(watch.seen(), ElementsAre("apacheConfig.sh free", "snmpdConfig.sh free", "sshdConfig.sh free"));
  EXPECT_FALSE(fileLockHeld());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Hold, ScriptsRunWithoutACallersHoldToo) {
  LockWatch watch;
  watch.instead("/usr/bin/apacheConfig.sh");
  shm_lock();
  EXPECT_EQ(0, refresh_userinterface_apps());
  EXPECT_THAT(watch.seen(), ElementsAre("apacheConfig.sh free"));
  EXPECT_EQ(1, shm_lock_count);
  shm_unlock();
}

TEST_F(Hold, StartUpAndRestartProgramsRunWithoutIt) {
  LockWatch watch;
  watch.instead("/bin/shm-init");
  watch.instead("/bin/restartKestrove");
  shm_lock();
  EXPECT_EQ(0, ZELrestore());
  EXPECT_THAT(watch.seen(), ElementsAre("shm-init free", "restartKestrove free"));
  shm_lock_count = 0;
}

TEST_F(Hold, CallersOwnHoldIsGoneWhenAnOperationReturns) {
  shm_lock();
  EXPECT_TRUE(fileLockHeld());
  EXPECT_EQ(SHM_STATE_OPERATIONAL, getShmOperationalState());
  EXPECT_FALSE(fileLockHeld());
  EXPECT_EQ(1, shm_lock_count);
  shm_unlock();
}

TEST_F(Hold, EventOfALockedCallerLeavesItToHim) {
  shm_lock();
  OpModeContext context = {};
  context.locked = 1;
  EXPECT_EQ(0, OpModeState(19, &context));
  EXPECT_TRUE(fileLockHeld());
  EXPECT_EQ(1, shm_lock_count);
  shm_unlock();
  EXPECT_FALSE(fileLockHeld());
}

TEST_F(Hold, SignalThatCannotBeSentKeepsItByItselfOnly) {
  shm->taskPids[4] = kDeadEngine;
  EXPECT_FAILS_WITH(SHM_ESYSTEM, notifyKestrove());
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_TRUE(fileLockHeld());
  EXPECT_EQ(0, switchCompression(SHM_ON));
  EXPECT_EQ(2, shm_lock_count);
  EXPECT_FALSE(fileLockHeld()) << "the setter's own guard drops it";
  shm_unlock();
  shm_unlock();
}

TEST_F(Hold, FactoryResetKeepsIt) {
  writeFile(kConfigFile, "");
  EXPECT_EQ(0, restoreFactoryDefaults(0, kUser));
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_TRUE(fileLockHeld());
  shm_unlock();
}

TEST_F(Hold, LockThatCannotBeHadUnderACountIsNoFailure) {
  Peer peer([](const Peer::Line&) {
    close(lockDescriptor());
    unlink(kLockFile);
    mkdir(kLockFile, 0755);
    shm_lock_count = 1;
    shm_errno = 77;
    int result = setKestroveConfigItem(44, 3, 0, kUser);
    return result == 0 && shm_errno == 77 && shm_lock_count == 1 && shm->config.hardwarePlatform == 3 ? 0 : 1;
  });
  EXPECT_EQ(0, peer.join());
}

TEST_F(Hold, SignalDoesNotEndTheWaitUnderACount) {
  Peer waiter([](const Peer::Line& line) {
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    shm_lock_count = 1;
    line.say('r');
    line.hear();
    int state = getShmOperationalState();
    line.say('d');
    return state == SHM_STATE_DEBUG ? 0 : 1;
  });
  ASSERT_EQ('r', waiter.line().hear());
  shm_lock();
  waiter.line().say('g');
  usleep(kBriefly * 1000);
  kill(waiter.pid(), SIGUSR1);
  EXPECT_TRUE(waiter.line().silentFor(kBriefly));
  shm->operationalState = SHM_STATE_DEBUG;
  shm_unlock();
  EXPECT_EQ('d', waiter.line().hear());
  EXPECT_EQ(0, waiter.join());
}

TEST_F(Hold, SeveralOperationsAreOneChange) {
  EXPECT_EQ(0, kestrove_hold());
  EXPECT_EQ(0, switchCompression(SHM_ON));
  EXPECT_EQ(0, kestrove_hold());
  EXPECT_EQ(0, switchCompression(SHM_OFF));
  EXPECT_EQ(0, kestrove_release());
  EXPECT_TRUE(fileLockHeld());
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_EQ(0, kestrove_release());
  EXPECT_FALSE(fileLockHeld());
  EXPECT_EQ(0, shm_lock_count);
  EXPECT_FAILS_WITH(SHM_EINVAL, kestrove_release());
}

TEST_F(Hold, HoldWithoutAStoreFails) {
  dropStore();
  EXPECT_FAILS_WITH(SHM_EATTACH, kestrove_hold());
  EXPECT_FAILS_WITH(SHM_EINVAL, kestrove_release());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Hold, BuilderOfTheStoreMayKeepIt) {
  dropStore();
  EXPECT_EQ(0, kestrove_build(kConfigFile, kEventFile));
  EXPECT_TRUE(fileLockHeld());
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_EQ(0, setShmOperationalState(SHM_STATE_OPERATIONAL));
  EXPECT_TRUE(fileLockHeld());
  EXPECT_EQ(0, kestrove_release());
  EXPECT_FALSE(fileLockHeld());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Hold, FailedBuildKeepsLockAndCount) {
  ShmData* attached = shm;
  shm = nullptr;
  EXPECT_FAILS_WITH(SHM_EATTACH, init_shared_memory(kConfigFile, kEventFile));
  EXPECT_TRUE(fileLockHeld());
  EXPECT_EQ(1, shm_lock_count);
  shm = attached;
  shm_unlock();
}

// A caller whose nesting dropped the lock still takes turns with others who save.
TEST_F(Hold, SaveWaitsForAnotherSave) {
  Peer saver([](const Peer::Line& line) {
    line.hear();
    int result = save_shared_memory();
    line.say('d');
    return result;
  });
  int folder = open("/etc/config", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(0, flock(folder, LOCK_EX));
  saver.line().say('g');
  EXPECT_TRUE(saver.line().silentFor(kBriefly));
  shm->config.wanLinkRate = 4711000;  // set before the store is gathered, so it is in the file
  close(folder);
  EXPECT_EQ('d', saver.line().hear());
  EXPECT_EQ(0, saver.join());
  EXPECT_THAT(readFile(kConfigFile), ::testing::HasSubstr("INTERNET_RATE             4711000\n"));
}

// The file is a pipe, so that the state can be changed while it is read.
TEST_F(Hold, LoadLeavesAStateThatSomebodySetMeanwhile) {
  ASSERT_EQ(0, mkfifo("/tmp/slow.conf", 0600));
  shm->operationalState = SHM_STATE_DEBUG;
  Peer writer([](const Peer::Line&) {
    int pipe = open("/tmp/slow.conf", O_WRONLY | O_CLOEXEC);
    while (shm->operationalState != SHM_STATE_CONFIGURATION) usleep(1000);
    shm->operationalState = SHM_STATE_DISABLED;
    return write(pipe, "LAN_MTU 1400\n", 13) == 13 ? 0 : 1;
  });
  EXPECT_EQ(0, load_shared_memory("/tmp/slow.conf"));
  EXPECT_EQ(0, writer.join());
  EXPECT_EQ(uint32_t{SHM_STATE_DISABLED}, shm->operationalState);
  EXPECT_EQ(1400u, shm->config.lanMaximumTransferUnit);
}

TEST_F(Hold, OthersWaitWhileAFileIsRead) {
  ASSERT_EQ(0, mkfifo("/tmp/slow.conf", 0600));
  Peer reader([](const Peer::Line&) { return load_shared_memory("/tmp/slow.conf"); });
  int pipe = open("/tmp/slow.conf", O_WRONLY | O_CLOEXEC);
  while (shm->operationalState != SHM_STATE_CONFIGURATION) usleep(1000);
  const char rows[] = "USER_ACCOUNT alice 1 0 0\nROUTE 10.0.0.0 255.0.0.0 10.1.1.1 3\n";
  ASSERT_EQ(static_cast<ssize_t>(strlen(rows)), write(pipe, rows, strlen(rows)));
  while (shm->routes.slot[0].inUse != 1) usleep(1000);
  EXPECT_TRUE(fileLockHeld()) << "rows are operations of their own inside the load";
  close(pipe);
  EXPECT_EQ(0, reader.join());
  EXPECT_FALSE(fileLockHeld());
}

// What the last step of a change leaves.
class LostSave : public Hold {
 protected:
  void SetUp() override {
    Hold::SetUp();
    strcpy(shm->config.configFileName, "/dev/full");
    shm->taskPids[4] = kDeadEngine;
    shm_errno = SHM_OK;
  }
  void TearDown() override {
    EXPECT_EQ(uint32_t{SHM_EIO}, shm_errno);
    EXPECT_EQ(ENOSPC, errno);
    Hold::TearDown();
  }
};

TEST_F(LostSave, IsTheSavesOwn) { EXPECT_EQ(0, save_shared_memory()); }

TEST_F(LostSave, OutlivesTheSignalOfAnItem) { EXPECT_EQ(0, setKestroveConfigItem(2, 2048000, 0, kUser)); }

TEST_F(LostSave, OutlivesTheSignalOfARule) {
  FilterRule rule = {};
  rule.ipVersion = 4;
  EXPECT_EQ(0, insertRule(0, &rule));
}

TEST_F(LostSave, OutlivesTheWalkOfTheRoutes) {
  uint32_t address = 0x0a00000a;
  EXPECT_EQ(0, setNetworkConfigItem(4, &address, 0, kUser));
}

TEST_F(LostSave, OutlivesTheWalkBehindAnAddress) {
  ManagementAddress entry = {};
  entry.ipVersion = 4;
  entry.address = 0x0100000a;
  entry.mask = 0x00ffffff;
  entry.interfaceKind = 5;  // not applied in this mode
  EXPECT_EQ(0, addManagementAddr(&entry));
}

TEST_F(LostSave, IsThereAfterFreshening) {
  RouteEntry route = {0x0000000a, 0x000000ff, 0x0100000a, 1, 0, 0};
  EXPECT_EQ(0, addUserRoute(&route));
  shm_errno = SHM_OK;
  EXPECT_EQ(0, freshenRouteTable(0, kUser));
}

}  // namespace
