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

// It holds a lock of its own for as long as it lives, and one beside another ends at once.
std::string silentLoneEngine() {
  writeFile("/tmp/engine",
            "#!/bin/sh\nexec flock --no-fork --nonblock /tmp/lone " KESTROVE_SIM " --interval 0 >/dev/null\n");
  chmod("/tmp/engine", 0755);
  return "kestrove=/tmp/engine";
}

// Seconds for which it was missed.
class Missed {
 public:
  void add(double seconds) {
    ++kills_;
    longest_ = std::max(longest_, seconds);
    if (seconds >= kLimit) ++late_;
  }
  int late() const { return late_; }
  void print() const {
    double load = 0;
    getloadavg(&load, 1);
    printf("%d kills: up again after %.2f s at the latest, %d times after %g s and more; load at the end %.1f\n",
           kills_, longest_, late_, kLimit, load);
  }

 private:
  static constexpr double kLimit = 2;
  int kills_ = 0;
  int late_ = 0;
  double longest_ = 0;
};

TEST_F(EngineWatchTest, IsStartedAndTakesItsSlot) {
  start();
  EXPECT_TRUE(lives(engineAfter(0)));
  EXPECT_TRUE(said("kestrove is ready"));
}

// As many times as somebody asks: KESTROVE_MONITOR_KILLS. Times are held then alone, on a machine that does nothing
// else.
TEST_F(EngineWatchTest, IsUpAgainAfterEachKillAndNeverTwice) {
  const char* asked = getenv("KESTROVE_MONITOR_KILLS");
  const int kills = asked ? atoi(asked) : 5;
  start({"--task", silentLoneEngine()});
  pid_t now = engineAfter(0);
  Missed missed;
  for (int i = 0; i < kills; ++i) {
    const pid_t killed = now;
    const auto before = std::chrono::steady_clock::now();
    strike(killed);
    now = engineAfter(killed);
    missed.add(std::chrono::duration<double>(std::chrono::steady_clock::now() - before).count());
    ASSERT_NE(killed, now);
    ASSERT_TRUE(lives(now));
    ASSERT_THAT(processesNamed("kestrove"), SizeIs(1));
  }
  EXPECT_EQ(kills, times("has ended: signal 9"));
  EXPECT_EQ(kills, times("has ended"));
  EXPECT_TRUE(eventually([] { return +shm->config.kestroveRestartCount == 0; }));
  if (!asked) return;
  missed.print();
  EXPECT_EQ(0, missed.late());
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

TEST_F(EngineWatchTest, BehindTheLastRebootItIsNotEvenTried) {
  shm->config.kestroveRebootCount = 5;
  start({"--task", "kestrove=/bin/false", "--first-delay", "10"});
  EXPECT_TRUE(said("crit: kestrove is given up: too many reboots in a row"));
  EXPECT_EQ(0, times("kestrove started"));
  EXPECT_THAT(programs(), IsEmpty());
}

// Each boot would begin the count anew.
TEST_F(EngineWatchTest, ARebootThatCannotBeCountedIsNone) {
  ASSERT_EQ(0, mkdir("/etc/config/kestrove.conf", 0755));
  start({"--task", "kestrove=/bin/false", "--first-delay", "10"});
  EXPECT_TRUE(said("crit: kestrove is given up: it would not start, and a reboot cannot be counted"));
  EXPECT_THAT(programs(), IsEmpty());
  EXPECT_EQ(0, events(SHM_EVENT_SYSTEM_REBOOTED));
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
