// SPDX-License-Identifier: Apache-2.0
// load and state: what is read into the store, and what is said of it.
#include <gmock/gmock.h>
#include <signal.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char kDocuments[] = "/usr/local/apache2/htdocs/";

class CtlLoadTest : public StoreTest {
 protected:
  static std::string image() { return {reinterpret_cast<const char*>(shm), SHM_SIZE}; }
};

TEST_F(CtlLoadTest, WhatIsNoConfigurationFileChangesNothing) {
  ASSERT_EQ(0, mkfifo("/tmp/pipe", 0600));
  writeFile("/tmp/poem", "roses are red\nviolets are blue\n");
  writeFile("/tmp/empty", "");
  struct Row {
    const char* path;
    const char* said;
  };
  const std::string before = image();
  for (const Row& row : {Row{"/tmp", "/tmp: a folder, no configuration file"},
                         {"/dev/zero", "/dev/zero: a device, no configuration file"},
                         {"/tmp/pipe", "/tmp/pipe: a pipe, no configuration file"},
                         {"/tmp/poem", "/tmp/poem: no line with a known keyword, no configuration file"},
                         {"/tmp/empty", "/tmp/empty: no line with a known keyword, no configuration file"},
                         {"/tmp/none", "/tmp/none: No such file or directory"}}) {
    Ran ran = ctl(std::string("load ") + row.path);
    EXPECT_EQ(5, ran.status) << row.path;
    EXPECT_THAT(ran.err, HasSubstr(row.said)) << row.path;
  }
  EXPECT_EQ(before, image());
}

constexpr char kConfiguration[] =
    "LAN_MTU 1400\n"
    "ROUTE 172.20.0.0 255.255.0.0 192.168.10.3 2\n"
    "ROUTE 172.21.0.0 255.255.0.0 192.168.10.3 2\n"
    "SELEC_ACCEL 10.1.0.0 255.255.0.0 0.0.0.0 0.0.0.0 6 0 0 0 0 5 NONE 20000 1 3\n"
    "MANAGEMENT_ADDR 4 192.168.77.3 255.255.255.0 4\n";

TEST_F(CtlLoadTest, ItSaysWhatItAddedAndWhatItLeaves) {
  writeFile("/tmp/some.conf", kConfiguration);
  Ran ran = ctl("load /tmp/some.conf");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_EQ(
      "loaded /tmp/some.conf: 1 management addresses, 2 routes, 1 rules added; nothing is saved, and nothing is "
      "applied "
      "to the kernel or told to the engine; kestrovectl save writes it to the configuration file\n",
      ran.out);
  EXPECT_THAT(ran.err, IsEmpty());
  EXPECT_FALSE(fileExists("/etc/config/kestrove.conf"));
  EXPECT_EQ(0u, shm->pendingChanges);
  Json again = ctl("--json load /tmp/some.conf").json();
  EXPECT_EQ(0, again["added"]["routes"]);
  EXPECT_EQ(1, again["added"]["rules"]) << "rules are not held against each other";
  EXPECT_EQ(false, again["saved"]);
  EXPECT_EQ(false, again["applied"]);
  EXPECT_EQ(Json::array(), again["faults"]);
}

TEST_F(CtlLoadTest, LinesThatItDoesNotTakeAreNamed) {
  writeFile("/tmp/some.conf", "LAN_MTU 1400\nLAN_ADDR 10.1.2\ncolour red\nLAN_NAME " + std::string(20, 'x') + "\n");
  Ran ran = ctl("load /tmp/some.conf");
  EXPECT_EQ(0, ran.status);
  EXPECT_THAT(ran.out, HasSubstr("no rows added"));
  EXPECT_THAT(ran.err,
              HasSubstr("/tmp/some.conf: not taken as it stands: line 2: LAN_ADDR: no address: 10.1.2; line 3: "
                        "unknown keyword colour; line 4: LAN_NAME: cut to 14 characters"));
  EXPECT_EQ(3u, ctl("--json load /tmp/some.conf").json()["faults"].size());
}

// Unknown keywords go to the system log line by line: this takes long enough to be interrupted.
void writeSlowConfiguration() {
  std::string text = kConfiguration;
  for (int i = 0; i < 400000; ++i) text += "colour red\n";
  writeFile("/tmp/slow.conf", text);
}

pid_t startLoading() {
  pid_t child = fork();
  if (child != 0) return child;
  if (!freopen("/tmp/stderr", "w", stderr)) _exit(127);
  execl(KESTROVECTL, KESTROVECTL, "load", "/tmp/slow.conf", nullptr);
  _exit(127);
}

void awaitRows(int count) {
  for (int i = 0; i < 3000 && shm->filterTable.ruleCount < count; ++i) usleep(10000);
  EXPECT_EQ(count, shm->filterTable.ruleCount) << "the load has come that far";
}

TEST_F(CtlLoadTest, AnInterruptPutsTheTablesBack) {
  writeSlowConfiguration();
  for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    const std::string before = image();
    const pid_t loading = startLoading();
    awaitRows(2);
    EXPECT_NE(before, image());
    kill(loading, signal);
    int status = 0;
    ASSERT_EQ(loading, waitpid(loading, &status, 0));
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
    EXPECT_THAT(readFile("/tmp/stderr"), HasSubstr("kestrovectl: interrupted; the tables are as before")) << signal;
    EXPECT_EQ(before, image()) << signal;
    EXPECT_FALSE(fileExists("/var/lock/shm.loading")) << signal;
  }
  EXPECT_EQ(0, ctl("set lanLinkRate 20000").status) << "and the lock is free";
}

TEST_F(CtlLoadTest, AStateIsSavedOnlyWithItsArchive) {
  ASSERT_EQ(0, ctl("save").status);
  Ran ran = ctl("state save");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(ran.out, HasSubstr(std::string("saved ") + kDocuments + "config"));
  ASSERT_EQ(0, mount("tmpfs", kDocuments, "tmpfs", MS_RDONLY, nullptr));
  Ran refused = ctl("state save");
  EXPECT_NE(0, refused.status);
  EXPECT_THAT(refused.err, AllOf(HasSubstr("the state is not saved"), Not(HasSubstr("Normal successful"))));
  EXPECT_THAT(refused.out, IsEmpty());
}

TEST_F(CtlLoadTest, AnArchiverThatDoesNothingSavesNothing) {
  ASSERT_EQ(0, ctl("save").status);
  ASSERT_EQ(0, run("mount --bind /bin/true \"$(realpath \"$(command -v zip)\")\"").status);
  Ran none = ctl("state save");
  EXPECT_EQ(5, none.status);
  EXPECT_THAT(none.err, HasSubstr("the state is not saved: no archive came to be in /usr/local/apache2/htdocs/"));
  EXPECT_THAT(none.out, IsEmpty());
}

TEST_F(CtlLoadTest, ARestoredStateTakesEffectLaterOrAtOnce) {
  ASSERT_EQ(0, ctl("set wanLinkRate 2048000").status);
  ASSERT_EQ(0, ctl("state save").status);
  ASSERT_EQ(0, ctl("set wanLinkRate 3072000").status);
  Ran later = ctl("state load");
  EXPECT_EQ(0, later.status) << later.err;
  EXPECT_THAT(later.out, HasSubstr("it takes effect when the store is next built, and the next change overwrites the "
                                   "restored configuration file"));
  EXPECT_EQ(3072000u, shm->config.wanLinkRate);
  Ran now = ctl("state load --now");
  EXPECT_EQ(0, now.status) << now.err;
  EXPECT_THAT(now.out, HasSubstr("; the store is built anew from it"));
  EXPECT_EQ(2048000, ctl("--json show wanLinkRate").json()[0]["value"]);
}

TEST_F(CtlLoadTest, AStateThatTakesEffectAtOnceIsARevision) {
  ASSERT_EQ(0, ctl("set wanLinkRate 2048000").status);
  ASSERT_EQ(0, ctl("state save").status);
  ASSERT_EQ(0, ctl("set wanLinkRate 3072000").status);
  ASSERT_EQ(0, ctl("state load --now --comment back").status);
  ASSERT_EQ(0, ctl("set wanLinkRate 4096000").status);
  const Json rows = ctl("--json history").json();
  EXPECT_EQ("state load --now", rows[1]["command"]);
  EXPECT_EQ("back", rows[1]["comment"]);
  EXPECT_EQ("set wanLinkRate 3072000", rows[2]["command"]) << "nothing came from outside";
  EXPECT_THAT(ctl("history show " + rows[1]["revision"].dump()).out, HasSubstr("+set wanLinkRate 2048000"));
  EXPECT_THAT(ctl("state load --comment later").err, HasSubstr("nothing was changed: there is nothing for --comment"));
}

TEST_F(CtlLoadTest, ThePlatformOutlivesTheRebuilding) {
  shm->config.hardwarePlatform = 3;
  shm->config.ipv6Support = SHM_ON;
  shm->statistics.accumulationInterval = 60;
  ASSERT_EQ(0, ctl("save").status);
  ASSERT_EQ(0, ctl("state save").status);
  Ran ran = ctl("state load --now");
  ASSERT_EQ(0, ran.status) << ran.err;
  Json config = ctl("--json dump").json();
  EXPECT_EQ(3, config["config"]["hardwarePlatform"]);
  EXPECT_EQ("on", config["config"]["ipv6Support"]);
  EXPECT_EQ(60, config["stats"]["accumulationInterval"]);
}

}  // namespace
}  // namespace kestrove::testing
