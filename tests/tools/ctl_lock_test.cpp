// SPDX-License-Identifier: Apache-2.0
// kestrovectl and shm-init before a store that others have.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "tests/support/peer.h"
#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;

double now() {
  struct timeval time;
  gettimeofday(&time, nullptr);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// Another process with the lock, until it is told to go on.
class Holder {
 public:
  Holder()
      : peer_([](const Peer::Line& line) {
          prctl(PR_SET_NAME, "slow (one)");
          shm_lock();
          line.say('l');
          line.hear();
          shm_unlock();
          line.say('u');
          line.hear();
          return 0;
        }) {
    EXPECT_EQ('l', peer_.line().hear());
  }
  void stop() {
    kill(peer_.pid(), SIGSTOP);
    usleep(50000);
  }
  void goOn() { kill(peer_.pid(), SIGCONT); }
  void letGo() { peer_.line().say('g'); }
  std::string name() const { return "process " + std::to_string(peer_.pid()) + " (slow (one))"; }

 private:
  Peer peer_;
};

class CtlLockTest : public StoreTest {};

TEST_F(CtlLockTest, EveryCommandWaitsNoLongerThanItIsTold) {
  Holder holder;
  for (const char* command : {"show",
                              "set wanLinkRate 2048000",
                              "rule list",
                              "rule add 0 --proto tcp",
                              "user list",
                              "events",
                              "events follow --seconds 1",
                              "stats",
                              "stats reset",
                              "engine status",
                              "task list",
                              "interface list",
                              "mode show",
                              "address list",
                              "route list",
                              "route6 list",
                              "kernel show",
                              "state save",
                              "dump",
                              "--json dump",
                              "check",
                              "save",
                              "load /etc/hostname",
                              "explain save"}) {
    const double start = now();
    Ran ran = ctl("--wait 0.2 " + std::string(command));
    EXPECT_EQ(6, ran.status) << command;
    EXPECT_THAT(ran.out + ran.err,
                HasSubstr("the store is locked by " + holder.name() + "; not free within 0.2 seconds (--wait)"))
        << command;
    EXPECT_LT(now() - start, 20) << command;
  }
  EXPECT_EQ(6, ctl("--json --wait 0 show").json()["error"]["exit"]);
}

TEST_F(CtlLockTest, AHolderThatIsStoppedIsNamedSo) {
  Holder holder;
  holder.stop();
  Ran ran = ctl("--wait 0.1 show");
  EXPECT_EQ(6, ran.status);
  EXPECT_THAT(ran.err, HasSubstr(holder.name() + ", which is stopped; not free within 0.1 seconds"));
  holder.goOn();
}

TEST_F(CtlLockTest, ALockThatIsGivenUpInTimeIsTaken) {
  Holder holder;
  Peer timer([&holder](const Peer::Line&) {
    usleep(500000);
    holder.letGo();
    return 0;
  });
  const double start = now();
  EXPECT_EQ(0, ctl("set wanLinkRate 2048000").status);
  EXPECT_GT(now() - start, 0.2);
  EXPECT_EQ(2048000u, shm->config.wanLinkRate);
}

TEST_F(CtlLockTest, StatusNeverWaits) {
  Holder holder;
  const double start = now();
  Ran ran = ctl("--json status");
  EXPECT_LT(now() - start, 20);
  EXPECT_EQ(0, ran.status) << ran.err;
  Json status = ran.json();
  EXPECT_EQ(holder.name(), status["lockHeldBy"]);
  EXPECT_EQ(1, status["state"]);
  EXPECT_EQ("not read: that needs the lock", status["configurationFile"]);
  holder.stop();
  EXPECT_EQ(holder.name() + ", which is stopped", ctl("--json status").json()["lockHeldBy"]);
  holder.goOn();
}

TEST_F(CtlLockTest, StatusOfAFreeStoreIsWhole) {
  Json status = ctl("--json status").json();
  EXPECT_EQ("nobody", status["lockHeldBy"]);
  EXPECT_EQ("/etc/config/kestrove.conf", status["configurationFile"]);
}

TEST_F(CtlLockTest, AWaitIsANumberOfSeconds) {
  for (const char* wrong : {"-1", "soon", "86401"}) EXPECT_EQ(2, ctl("--wait " + std::string(wrong) + " show").status);
}

TEST_F(CtlLockTest, WithoutALockFileAFileFailed) {
  unlink("/var/lock/shm");
  Ran ran = ctl("show");
  EXPECT_EQ(5, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("/var/lock/shm: No such file or directory"));
  EXPECT_EQ("nobody: there is no lock file", ctl("--json status").json()["lockHeldBy"]);
}

// Without the privilege to open what the modes of files forbid.
Ran ctlOfAStranger(const std::string& arguments) {
  return run("setpriv --bounding-set -dac_override,-dac_read_search " KESTROVECTL " " + arguments);
}

TEST_F(CtlLockTest, WhoMayNotOpenTheLockFileIsToldSo) {
  chmod("/var/lock/shm", 0);
  for (const char* command : {"show", "set wanLinkRate 2048000", "save", "check", "user list", "explain save"}) {
    Ran ran = ctlOfAStranger(command);
    EXPECT_EQ(7, ran.status) << command << ran.err;
    EXPECT_THAT(ran.err, HasSubstr("not permitted: /var/lock/shm: Permission denied")) << command;
  }
  EXPECT_EQ(7, ctlOfAStranger("--json show").json()["error"]["exit"]);
  Ran status = ctlOfAStranger("--json status");
  EXPECT_EQ(0, status.status);
  EXPECT_EQ("unknown: /var/lock/shm: Permission denied", status.json()["lockHeldBy"]);
}

TEST_F(CtlLockTest, WhoMayNotReadAFileIsToldSo) {
  writeFile("/tmp/secret.conf", "LAN_MTU 1400\n");
  chmod("/tmp/secret.conf", 0);
  Ran ran = ctlOfAStranger("load /tmp/secret.conf");
  EXPECT_EQ(7, ran.status) << ran.err;
  EXPECT_THAT(ran.err, HasSubstr("not permitted: /tmp/secret.conf: Permission denied"));
}

TEST_F(CtlLockTest, WhoMayNotSaveIsToldSo) {
  ASSERT_EQ(0, ctl("save").status);
  chmod("/etc/config/kestrove.conf", 0);
  Ran saved = ctlOfAStranger("save");
  EXPECT_EQ(7, saved.status) << saved.err;
  EXPECT_THAT(saved.err, HasSubstr("not permitted: /etc/config/kestrove.conf: Permission denied"));
  Ran set = ctlOfAStranger("set sysName x");
  EXPECT_EQ(8, set.status) << set.err;
  EXPECT_THAT(set.err, HasSubstr("applied, not saved: /etc/config/kestrove.conf: Permission denied"));
}

}  // namespace
}  // namespace kestrove::testing
