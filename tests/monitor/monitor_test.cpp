// SPDX-License-Identifier: Apache-2.0
// The monitor itself: servers, its manager, its own helper, its end.
#include <sys/shm.h>

#include <cmath>
#include <fstream>

#include "tests/monitor/monitor_fixture.h"
#include "tests/support/peer.h"
#include "tests/support/recorder.h"
#include "tests/support/records.h"
#include "tests/tools/programs.h"
#include "tools/monitor/clock.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class MonitorProgramTest : public MonitorTest {};

void sendRecord(const std::string& record) {
  struct sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  strcpy(address.sun_path, "/tmp/monitor/records");
  const int line = socket(AF_UNIX, SOCK_DGRAM, 0);
  EXPECT_TRUE(eventually([&] {
    return sendto(line, record.data(), record.size(), 0, reinterpret_cast<sockaddr*>(&address), sizeof address) ==
           static_cast<ssize_t>(record.size());
  }));
  close(line);
}

// Stops with the lock.
int holdForEver(const Peer::Line& line) {
  shm_lock();
  line.say('l');
  raise(SIGSTOP);
  line.hear();
  return 0;
}

TEST_F(MonitorProgramTest, AServerRunsWhileItsItemIsOn) {
  start({"--task", "sshd=/bin/sleep 1000"});
  ASSERT_TRUE(said("the store is there"));
  EXPECT_EQ(0, slot(SHM_TASK_SSHD));
  EXPECT_EQ(0, setKestroveConfigItem(SHM_ITEM_SSH, SHM_ON, 0, "--"));
  ASSERT_TRUE(eventually([] { return lives(slot(SHM_TASK_SSHD)); }));
  const pid_t first = slot(SHM_TASK_SSHD);
  strike(first);
  EXPECT_TRUE(eventually([&] { return slot(SHM_TASK_SSHD) != first && lives(slot(SHM_TASK_SSHD)); }));
  const pid_t second = slot(SHM_TASK_SSHD);
  EXPECT_EQ(0, setKestroveConfigItem(SHM_ITEM_SSH, SHM_OFF, 0, "--"));
  EXPECT_TRUE(eventually([&] { return !lives(second) && slot(SHM_TASK_SSHD) == 0; }));
}

TEST_F(MonitorProgramTest, AServerThatDoesNotEndIsEnded) {
  writeFile("/tmp/stubborn", "#!/bin/sh\ntrap '' TERM\n: >/tmp/deaf\nwhile :; do read line </tmp/never; done\n");
  ASSERT_EQ(0, chmod("/tmp/stubborn", 0755));
  ASSERT_EQ(0, mkfifo("/tmp/never", 0600));
  shm->config.sshdOperState = SHM_ON;
  start({"--task", "sshd=/tmp/stubborn"});
  ASSERT_TRUE(eventually([] { return fileExists("/tmp/deaf") && slot(SHM_TASK_SSHD) != 0; }));
  EXPECT_EQ(0, setKestroveConfigItem(SHM_ITEM_SSH, SHM_OFF, 0, "--"));
  EXPECT_TRUE(said("has ended: signal 9"));
  EXPECT_TRUE(eventually([] { return slot(SHM_TASK_SSHD) == 0; }));
}

TEST_F(MonitorProgramTest, AServerThatSomebodyElseStartedIsNotStartedTwice) {
  std::filesystem::copy("/bin/sleep", "/tmp/sshd");
  Program server({"/tmp/sshd", "1000"});
  writeFile("/run/sshd.pid", std::to_string(server.pid()) + "\n");
  ASSERT_TRUE(eventually([] { return processesNamed("sshd").size() == 1; }));
  shm->config.sshdOperState = SHM_ON;
  start({"--task", "sshd=/tmp/sshd 1000"});
  EXPECT_TRUE(eventually([&] { return slot(SHM_TASK_SSHD) == server.pid(); }));
}

TEST_F(MonitorProgramTest, AServerWithoutACommandIsWatchedAlone) {
  std::filesystem::copy("/bin/sleep", "/tmp/sshd");
  Program server({"/tmp/sshd", "1000"});
  writeFile("/run/sshd.pid", std::to_string(server.pid()) + "\n");
  ASSERT_TRUE(eventually([] { return processesNamed("sshd").size() == 1; }));
  start({"--task", "sshd="});
  EXPECT_TRUE(eventually([&] { return slot(SHM_TASK_SSHD) == server.pid(); }));
  server.end(SIGKILL);
  EXPECT_TRUE(eventually([] { return slot(SHM_TASK_SSHD) == 0; }));
}

TEST_F(MonitorProgramTest, SlotZeroIsWrittenToo) {
  shm->config.snmpOperState = SHM_ON;
  start({"--task", "snmpd=/bin/sleep 1000"});
  EXPECT_TRUE(eventually([] { return lives(slot(SHM_TASK_SNMPD)); }));
}

TEST_F(MonitorProgramTest, TheManagerHearsOfItsLife) {
  setenv("WATCHDOG_USEC", "200000", 1);
  ManagersEar ear;
  start();
  EXPECT_EQ("READY=1", ear.hear());
  for (int i = 0; i < 5; ++i) EXPECT_EQ("WATCHDOG=1", ear.hear());
  strike(monitor_->pid(), SIGTERM);
  std::string last;
  do last = ear.hear();
  while (last == "WATCHDOG=1");
  EXPECT_EQ("STOPPING=1", last);
  EXPECT_EQ(0, monitor_->status());
}

TEST_F(MonitorProgramTest, AWatchdogOfAnotherIsNotFedAndNoTaskSpeaksForTheMonitor) {
  setenv("WATCHDOG_USEC", "4000", 1);
  setenv("WATCHDOG_PID", "1", 1);
  ManagersEar ear;
  start();
  EXPECT_EQ("READY=1", ear.hear());
  const std::string surroundings = readFile("/proc/" + std::to_string(engineAfter(0)) + "/environ");
  EXPECT_THAT(surroundings, HasSubstr("PATH="));
  for (const char* name : {"NOTIFY_SOCKET", "WATCHDOG"}) EXPECT_THAT(surroundings, Not(HasSubstr(name)));
  strike(monitor_->pid(), SIGTERM);
  EXPECT_EQ("STOPPING=1", ear.hear());
}

TEST_F(MonitorProgramTest, AStoppedHolderOfTheLockStopsItNot) {
  setenv("WATCHDOG_USEC", "200000", 1);
  ManagersEar ear;
  start();
  engineAfter(0);
  Peer holder(holdForEver);
  ASSERT_EQ('l', holder.line().hear());
  strike(engine());
  EXPECT_TRUE(said("the store is locked by process " + std::to_string(holder.pid())));
  while (ear.hear() == "READY=1") {
  }
  for (int i = 0; i < 20; ++i) EXPECT_EQ("WATCHDOG=1", ear.hear());
  const pid_t dead = engine();
  holder.kill();
  EXPECT_TRUE(lives(engineAfter(dead)));
}

TEST_F(MonitorProgramTest, ItEndsWhileTheStoreIsLocked) {
  start();
  engineAfter(0);
  Peer holder(holdForEver);
  ASSERT_EQ('l', holder.line().hear());
  EXPECT_EQ(0, monitor_->end());
}

TEST_F(MonitorProgramTest, WithoutAStoreItWaitsForOne) {
  dropStore();
  ManagersEar ear;
  start();
  EXPECT_EQ("READY=1", ear.hear());
  EXPECT_TRUE(said("there is no store"));
  makeStore();
  shm->config.kestroveOperState = SHM_ON;
  EXPECT_TRUE(lives(engineAfter(0)));
  EXPECT_EQ(1, times("there is no store"));
}

TEST_F(MonitorProgramTest, AnotherSystemsSegmentIsNamed) {
  dropStore();
  const int foreign = shmget(SHM_KEY, 4096, IPC_CREAT | 0600);
  ASSERT_NE(-1, foreign);
  start();
  EXPECT_TRUE(said("the segment under the store's key is no store: the engine and the servers wait for one"));
  EXPECT_EQ(0, shmctl(foreign, IPC_RMID, nullptr));
  makeStore();
  EXPECT_TRUE(said("the store is there"));
}

TEST_F(MonitorProgramTest, AStoreThatMayNotBeUsedIsNamedUntilItMay) {
  setStoreMode(0);
  startWithout("-ipc_owner");
  EXPECT_TRUE(said("the store: Permission denied: the engine and the servers wait for one"));
  setStoreMode(0600);
  EXPECT_TRUE(said("the store is there"));
  EXPECT_EQ(1, times("Permission denied"));
}

TEST_F(MonitorProgramTest, ALockThatMayNotBeTakenIsNamedUntilItMay) {
  chmod("/var/lock/shm", 0);
  startWithout("-dac_override,-dac_read_search");
  EXPECT_TRUE(said("the store cannot be locked: Permission denied; what needs it waits"));
  chmod("/var/lock/shm", 0774);
  EXPECT_TRUE(said("the store is there"));
  EXPECT_GE(2, times("Permission denied")) << "the monitor and its helper, once each";
}

TEST_F(MonitorProgramTest, ASecondOneIsRefused) {
  start();
  ASSERT_TRUE(eventually([this] { return slot(SHM_TASK_MONITOR) == monitor_->pid(); }));
  Program second({KESTROVE_MONITOR, "--folder", "/tmp/monitor"});
  EXPECT_EQ(1, second.status());
  EXPECT_TRUE(monitor_->lives());
}

TEST_F(MonitorProgramTest, WhatMakesNoSenseIsRefused) {
  for (const Words& options : {Words{"--task", "engine=/bin/true"},
                               {"--task", "kestrove"},
                               {"--task", "sshd=sleep 1"},
                               {"--every", "0"},
                               {"--ready-in", "soon"},
                               {"--verbose"},
                               {"now"},
                               {"--folder", "a\nb"}}) {
    start(options);
    EXPECT_EQ(2, monitor_->status()) << options.back();
  }
  start({"--folder", "/proc/none"});
  EXPECT_EQ(5, monitor_->status());
}

TEST_F(MonitorProgramTest, ToldToEndItLeavesItsSlotsAndTheEngineGoesOn) {
  start();
  const pid_t first = engineAfter(0);
  ASSERT_TRUE(eventually([] { return lives(slot(SHM_TASK_MISC_MONITOR)); }));
  const pid_t helper = slot(SHM_TASK_MISC_MONITOR);
  EXPECT_EQ(0, monitor_->end());
  EXPECT_EQ(0, slot(SHM_TASK_MONITOR));
  EXPECT_EQ(0, slot(SHM_TASK_MISC_MONITOR));
  EXPECT_TRUE(eventually([&] { return !lives(helper); }));
  EXPECT_EQ(first, engine());
  EXPECT_TRUE(lives(first));
}

TEST_F(MonitorProgramTest, OneThatTakesOverFromADeadOneLogsItAndKeepsTheEngine) {
  shm->config.loggingOperState = SHM_ON;
  start();
  const pid_t first = engineAfter(0);
  ASSERT_TRUE(eventually([] { return events(SHM_EVENT_MISC_MONITOR_STARTED) == 1; }));
  EXPECT_EQ(0, events(SHM_EVENT_MONITOR_RESTARTED));
  monitor_->end(SIGKILL);
  start();
  EXPECT_TRUE(eventually([] { return events(SHM_EVENT_MONITOR_RESTARTED) == 1; }));
  EXPECT_TRUE(said("kestrove runs already"));
  EXPECT_EQ(first, engine());
  EXPECT_TRUE(eventually([this] { return slot(SHM_TASK_MONITOR) == monitor_->pid(); }));
}

TEST_F(MonitorProgramTest, ItsHelperIsStartedAgainAndLogged) {
  start();
  ASSERT_TRUE(eventually([] { return events(SHM_EVENT_MISC_MONITOR_STARTED) == 1; }));
  ASSERT_TRUE(eventually([] { return lives(slot(SHM_TASK_MISC_MONITOR)); }));
  strike(slot(SHM_TASK_MISC_MONITOR));
  EXPECT_TRUE(eventually([] { return events(SHM_EVENT_MISC_MONITOR_STARTED) == 2; }));
}

TEST_F(MonitorProgramTest, MetricsAreWrittenAgainAndAgain) {
  start();
  ASSERT_TRUE(eventually([] { return readFile("/tmp/metrics.prom").find("kestrove_up 1\n") != std::string::npos; }));
  EXPECT_THAT(readFile("/tmp/metrics.prom"), HasSubstr("kestrove_task_up{task=\"monitor\"} "));
  unlink("/tmp/metrics.prom");
  EXPECT_TRUE(eventually([] { return fileExists("/tmp/metrics.prom"); }));
}

TEST_F(MonitorProgramTest, MetricsAreReadWholeWhileTheyAreWritten) {
  const auto inode = [] {
    struct stat status = {};
    return stat("/tmp/metrics.prom", &status) == 0 ? status.st_ino : 0;
  };
  start();
  ASSERT_TRUE(eventually([&] { return inode() != 0; }));
  std::ifstream reader("/tmp/metrics.prom");
  const ino_t first = inode();
  ASSERT_TRUE(eventually([&] { return inode() != first && inode() != 0; }));
  const std::string text(std::istreambuf_iterator<char>(reader), {});
  EXPECT_TRUE(text.starts_with("# HELP kestrove_up ")) << text;
  EXPECT_THAT(text, HasSubstr("\nkestrove_session_engine_sessions "));
  EXPECT_TRUE(text.ends_with("\n"));
}

TEST_F(MonitorProgramTest, MetricsThatCannotBeWrittenAreSaidOnce) {
  start({"--metrics", "/nowhere/kestrove.prom"});
  EXPECT_TRUE(said("metrics are not written: /nowhere/kestrove.prom"));
}

TEST_F(MonitorProgramTest, RecordsAreFoldedIntoTheStore) {
  start();
  std::string interval(SHM_INTERVAL_WORDS * 4, '\0');
  interval[25 * 4] = 100;
  interval[26 * 4] = 50;
  sendRecord(interval);
  sendRecord("neither the one nor the other");
  sendRecord(interval);
  std::string sessions(68, '\0');
  sessions[0] = 7;
  sendRecord(sessions);
  EXPECT_TRUE(eventually([] { return checkStatsCounter() == 2 && +shm->sessionEngine.counter[0] == 7; }));
  EXPECT_EQ(50u, +shm->statistics.compressionRatio);
  EXPECT_TRUE(said("a record of 29 bytes is none that is known"));
}

TEST_F(MonitorProgramTest, UnsavedSettingsAreSaidOnceAndSoIsTheirEnd) {
  ASSERT_EQ(0, save_shared_memory());
  start();
  ASSERT_TRUE(eventually([] { return fileExists("/tmp/metrics.prom"); }));
  shm->config.wanMaximumTransferUnit = 1400;
  EXPECT_TRUE(said("the store holds settings that its file does not"));
  ASSERT_EQ(0, save_shared_memory());
  EXPECT_TRUE(said("the file holds all settings of the store again"));
  EXPECT_EQ(1, times("the store holds settings that its file does not"));
}

TEST_F(MonitorProgramTest, AChangeThatWaitsForItsConfirmationIsSaidOnceAndSoIsItsEnd) {
  ASSERT_EQ(0, ctl("set wanLinkRate 2048000").status);
  start({"--task", "kestrove="});
  ASSERT_EQ(0, ctl("set wanLinkRate 3072000 --confirm 60").status);
  EXPECT_TRUE(said("a change waits for its confirmation and goes back without it"));
  ASSERT_EQ(0, ctl("confirm").status);
  EXPECT_TRUE(said("no change waits for a confirmation any more"));
  EXPECT_EQ(1, times("a change waits for its confirmation"));
}

// Hundredths of a second since the machine started, one for each start.
std::vector<long> startsOf(const std::string& file) {
  std::vector<long> times;
  std::ifstream lines(file);
  for (double time; lines >> time;) times.push_back(std::lround(time * 100));
  return times;
}

TEST_F(MonitorProgramTest, AServerThatWillNotStartIsTriedMoreAndMoreSeldomAndRebootsNothing) {
  writeFile("/tmp/fails", "#!/bin/sh\nread -r up idle </proc/uptime\necho \"$up\" >>/tmp/starts\nexit 1\n");
  chmod("/tmp/fails", 0755);
  start({"--task", "kestrove=", "--task", "statsd=/tmp/fails", "--first-delay", "100"});
  ASSERT_TRUE(eventually([] { return startsOf("/tmp/starts").size() >= 6; }));
  const std::vector<long> starts = startsOf("/tmp/starts");
  long delay = 10;
  for (size_t i = 1; i < 6; ++i, delay *= 2) EXPECT_GE(starts[i] - starts[i - 1], delay - 1) << "before start " << i;
  EXPECT_THAT(programs(), ::testing::Not(::testing::Contains("/sbin/reboot")));
}

TEST_F(MonitorProgramTest, TheMetricsAreWrittenEvery15SecondsUnlessSomebodySaysOtherwise) {
  monitor_ = std::make_unique<Program>(
      Words{KESTROVE_MONITOR, "--folder", "/tmp/monitor", "--metrics", "/tmp/metrics.prom", "--task", "kestrove="});
  const std::string words(
      "--every\0"
      "15\0",
      11);
  EXPECT_TRUE(eventually([&] {
    const std::string file = "/proc/" + std::to_string(slot(SHM_TASK_MISC_MONITOR)) + "/cmdline";
    return fileExists(file) && readFile(file).find(words) != std::string::npos;
  }));
}

TEST(MonitorDelayTest, DoublesUpToItsLimitAndBeginsAnew) {
  monitor::Delay delay(1000, 5000);
  for (int expected : {1000, 2000, 4000, 5000, 5000}) EXPECT_EQ(expected, delay.next());
  delay.reset();
  EXPECT_EQ(1000, delay.next());
}

}  // namespace
}  // namespace kestrove::testing
