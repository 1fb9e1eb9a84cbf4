// SPDX-License-Identifier: Apache-2.0
// The engine under the monitor: up again whatever becomes of it, never two, and not for ever when it will not start.
#include "tests/monitor/monitor_fixture.h"
#include "tests/support/recorder.h"
#include "tests/support/records.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class EngineWatchTest : public MonitorTest {};

int killsAskedFor() {
  const char* asked = getenv("KESTROVE_MONITOR_KILLS");
  return asked ? atoi(asked) : 5;
}

TEST_F(EngineWatchTest, IsStartedAndTakesItsSlot) {
  start();
  EXPECT_TRUE(lives(engineAfter(0)));
  EXPECT_TRUE(said("kestrove is ready"));
}

TEST_F(EngineWatchTest, IsUpAgainAfterEachKillAndNeverTwice) {
  start();
  pid_t now = engineAfter(0);
  for (int i = killsAskedFor(); i > 0; --i) {
    const auto before = std::chrono::steady_clock::now();
    strike(now);
    const pid_t next = engineAfter(now);
    ASSERT_TRUE(lives(next));
    ASSERT_NE(now, next);
    ASSERT_THAT(processesNamed("kestrove"), SizeIs(1));
    if (getenv("KESTROVE_MONITOR_KILLS")) {
      printf("up again after %lld ms\n", static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                                                    std::chrono::steady_clock::now() - before)
                                                                    .count()));
    }
    now = next;
  }
  EXPECT_TRUE(eventually([] { return +shm->config.kestroveRestartCount == 0; }));
}

TEST_F(EngineWatchTest, SwitchedOffItEndsAndSwitchedOnItIsThereAgain) {
  start();
  const pid_t first = engineAfter(0);
  EXPECT_EQ(0, setKestroveConfigItem(SHM_ITEM_ENGINE, SHM_OFF, 0, "--"));
  EXPECT_TRUE(eventually([&] { return !lives(first) && engine() == 0; }));
  EXPECT_EQ(0, setKestroveConfigItem(SHM_ITEM_ENGINE, SHM_ON, 0, "--"));
  EXPECT_TRUE(lives(engineAfter(0)));
}

TEST_F(EngineWatchTest, AStartThatHangsIsEndedAndTriedAgain) {
  start({"--task", "kestrove=/bin/sleep 1000", "--ready-in", "100", "--first-delay", "10"});
  EXPECT_TRUE(said("is not ready in time"));
  EXPECT_TRUE(eventually([] { return +shm->config.kestroveRestartCount >= 2; }));
  EXPECT_THAT(processesNamed("sleep"), ::testing::SizeIs(::testing::Le(1u)));
}

TEST_F(EngineWatchTest, AProgramThatDiesAtOnceRebootsTheMachineAfterFourStarts) {
  start({"--task", "kestrove=/bin/false", "--first-delay", "10"});
  EXPECT_TRUE(said("the machine is rebooted"));
  EXPECT_TRUE(eventually([] { return !programs().empty(); }));
  EXPECT_THAT(programs(), Contains("/sbin/reboot"));
  EXPECT_EQ(4, times("kestrove started"));
  EXPECT_EQ(1u, +shm->config.kestroveRebootCount);
  EXPECT_EQ(0u, +shm->config.kestroveRestartCount);
  EXPECT_EQ(1, events(SHM_EVENT_SYSTEM_REBOOTED));
  EXPECT_THAT(readFile("/etc/config/kestrove.conf"), ::testing::HasSubstr("REBOOT_COUNT"));
}

TEST_F(EngineWatchTest, AfterTooManyRebootsItIsGivenUpUntilSomebodyRestartsIt) {
  shm->config.kestroveRebootCount = 4;
  start({"--task", "kestrove=/bin/false", "--first-delay", "10"});
  EXPECT_TRUE(said("crit: kestrove is given up: too many reboots in a row"));
  EXPECT_THAT(programs(), IsEmpty());
  EXPECT_EQ(4, times("kestrove started"));
  EXPECT_EQ(0, resetKestroveRebootCounter());
  EXPECT_TRUE(eventually([] { return times("kestrove started") > 4; }));
}

TEST_F(EngineWatchTest, OneThatWasStartedByHandIsTakenOver) {
  Program byHand({KESTROVE_SIM, "--interval", "0"});
  ASSERT_TRUE(eventually([&] { return engine() == byHand.pid(); }));
  start();
  EXPECT_TRUE(said("kestrove runs already"));
  EXPECT_THAT(processesNamed("kestrove"), SizeIs(1));
  byHand.end(SIGKILL);
  EXPECT_TRUE(lives(engineAfter(byHand.pid())));
}

TEST_F(EngineWatchTest, OneThatTakesTheSlotIsTheEngineFromThenOn) {
  start();
  const pid_t first = engineAfter(0);
  Program byHand({KESTROVE_SIM, "--interval", "0", "--replace"});
  EXPECT_TRUE(eventually([&] { return !lives(first); }));
  EXPECT_TRUE(said("kestrove runs already"));
  EXPECT_EQ(byHand.pid(), engine());
}

TEST_F(EngineWatchTest, ANumberThatAnotherProgramHasNowIsNotTheEngine) {
  Program stranger({"/bin/sleep", "1000"});
  shm->taskPids[SHM_TASK_ENGINE] = stranger.pid();
  start();
  EXPECT_TRUE(lives(engineAfter(stranger.pid())));
  EXPECT_TRUE(stranger.lives());
}

TEST_F(EngineWatchTest, ANumberUsedAgainIsToldByWhenItsProcessBegan) {
  std::filesystem::copy("/bin/sleep", "/tmp/kestrove");
  Program stranger({"/tmp/kestrove", "1000"});
  ASSERT_TRUE(eventually([&] { return processesNamed("kestrove").size() == 1; }));
  mkdir("/tmp/monitor", 0755);
  writeFile("/tmp/monitor/monitor.tasks", "4 " + std::to_string(stranger.pid()) + " 1\n");
  shm->taskPids[SHM_TASK_ENGINE] = stranger.pid();
  start();
  EXPECT_TRUE(lives(engineAfter(stranger.pid())));
  EXPECT_TRUE(stranger.lives());
}

TEST_F(EngineWatchTest, AStoreBuiltAnewGetsAnEngineOfItsOwn) {
  start();
  const pid_t first = engineAfter(0);
  dropStore();
  EXPECT_TRUE(said("there is no store"));
  makeStore();
  shm->config.kestroveOperState = SHM_ON;
  EXPECT_TRUE(lives(engineAfter(0)));
  EXPECT_NE(first, engine());
  EXPECT_FALSE(lives(first));
  EXPECT_EQ(monitor_->pid(), slot(SHM_TASK_MONITOR));
}

TEST_F(EngineWatchTest, AMissingProgramIsSaidOnce) {
  start({"--task", "kestrove=/nowhere/engine"});
  EXPECT_TRUE(said("kestrove is not started: /nowhere/engine: No such file or directory"));
  EXPECT_TRUE(said("miscMonitor started"));
  EXPECT_EQ(1, times("/nowhere/engine"));
  EXPECT_EQ(0u, +shm->config.kestroveRestartCount);
}

}  // namespace
}  // namespace kestrove::testing
