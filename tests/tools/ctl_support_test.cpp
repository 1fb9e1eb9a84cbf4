// SPDX-License-Identifier: Apache-2.0
// The support archive, and what must not be in it.
#include <gmock/gmock.h>
#include <string.h>
#include <sys/stat.h>

#include "tests/support/peer.h"
#include "tests/tools/programs.h"
#include "tools/ctl/watch/scrubber.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kArchive[] = "/tmp/out/unit.tar.gz";
constexpr char kHome[] = "/tmp/home";

// Wherever a secret may stand on an appliance, one that stands nowhere else.
constexpr const char* kSecrets[] = {"$1$saltsalt$qZ0ZBbKYeqPT9fWKjmqO1.",
                                    "$6$rounds=5000$abcdefgh$Zm9vYmFyYmF6cXV4",
                                    "x0OldDesHash",
                                    "wordOfTheWeb",
                                    "s\"e\\ssion",
                                    "oldSecretWord",
                                    "readCommunity",
                                    "writeCommunity",
                                    "tripCommunity",
                                    "c2sCommunity",
                                    "authPhrase1",
                                    "privPhrase2",
                                    "0x80001f88804c89",
                                    "backupSecret"};

class CtlSupportTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    run("mkdir -p /tmp/out /var/config /var/net-snmp /tmp/home/revisions");
    setenv("KESTROVE_HOME", kHome, 1);
  }
  void TearDown() override {
    unsetenv("KESTROVE_HOME");
    StoreTest::TearDown();
  }

  static void plant() {
    strcpy(shm->config.httpEncryptedId, "s\"e\\ssion");
    strcpy(shm->oldAdminPassword, "oldSecretWord");
    writeFile("/etc/passwd", readFile("/etc/passwd") + "alice:$1$saltsalt$qZ0ZBbKYeqPT9fWKjmqO1.:0:0::/:/bin/sh\n" +
                                 "carol:x0OldDesHash:0:0::/:/bin/sh\n");
    writeFile("/etc/shadow", "alice:!$6$rounds=5000$abcdefgh$Zm9vYmFyYmF6cXV4:1:0:99999:7:::\n");
    writeFile(
        "/var/config/snmpd.conf",
        "rocommunity readCommunity 10.0.0.0/8\nrwcommunity writeCommunity\ntrapsink 10.0.0.1 tripCommunity\n"
        "com2sec local default c2sCommunity\ncreateUser eve MD5 \"authPhrase1\" DES privPhrase2\nsyslocation here\n");
    writeFile("/var/net-snmp/snmpd.conf", "usmUser 1 3 0x80001f88804c89 0x6576650000 NULL\n");
    writeFile("/etc/config/kestrove.conf", "SYS_NAME branch\nADMIN_USERNAME root\nADMIN_PASSWORD wordOfTheWeb\n");
    writeFile("/etc/config/kestrove.conf.bak", "ADMIN_PASSWORD backupSecret\n");
    std::string journal = "a revision\n";
    for (const char* secret : kSecrets) journal += std::string("said ") + secret + " aloud\n";
    writeFile("/tmp/home/revisions/1", journal);
    writeFile("/tmp/home/image", std::string("\0wordOfTheWeb", 13));
    strcpy(shm->config.sysContact, "call readCommunity");
    logEvent(21, 2, "authPhrase1");
  }
  static Ran support(const std::string& options = "") { return ctl(options + " support " + kArchive); }
  static std::string member(const std::string& name) {
    return run(std::string("tar -xzOf ") + kArchive + " kestrove-support/" + name).out;
  }
  static std::string everything() { return run(std::string("tar -xzOf ") + kArchive).out; }
};

TEST_F(CtlSupportTest, HoldsWhatAnEngineerAsksFor) {
  logEvent(21, 2, "admin");
  writeFile("/tmp/home/notes", "what was begun\n");
  ASSERT_EQ(0, ctl("save").status);
  Ran ran = support("--json");
  ASSERT_EQ(0, ran.status) << ran.err;
  EXPECT_EQ(Json::array(), ran.json()["missing"]) << ran.out;
  EXPECT_THAT(member("dump.txt"), HasSubstr("Kestrove shared memory:"));
  EXPECT_TRUE(Json::parse(member("dump.json"), nullptr, false).is_object());
  EXPECT_THAT(member("events.txt"), HasSubstr("Web interface login"));
  EXPECT_THAT(member("metrics.txt"), HasSubstr("kestrove_up 1\n"));
  EXPECT_THAT(member("versions.txt"), HasSubstr("kestrovectl "));
  EXPECT_THAT(member("check.txt"), HasSubstr("every table is sound"));
  EXPECT_THAT(member("kernel/addresses.txt"), HasSubstr("LOOPBACK"));
  EXPECT_THAT(member("kernel/routes.txt"), HasSubstr("local"));
  EXPECT_THAT(member("home/notes"), HasSubstr("what was begun"));
  EXPECT_THAT(member("files/etc/config/kestrove.conf"), HasSubstr("INTERNET_RATE"));
  EXPECT_THAT(member("CONTENTS.txt"), AllOf(HasSubstr("dump.json\n"), Not(HasSubstr("missing"))));
}

TEST_F(CtlSupportTest, NoPlantedSecretIsInIt) {
  plant();
  Ran ran = support();
  ASSERT_EQ(0, ran.status) << ran.err;
  const std::string all = everything();
  for (const char* secret : kSecrets) {
    EXPECT_THAT(all, Not(HasSubstr(secret)));
    EXPECT_THAT(ran.out + ran.err, Not(HasSubstr(secret)));
  }
  EXPECT_THAT(all, Not(HasSubstr("s\\\"e")));
  EXPECT_THAT(member("files/etc/passwd"), HasSubstr("alice:(removed):0:0::/:/bin/sh\n"));
  EXPECT_THAT(member("files/var/config/snmpd.conf"), HasSubstr("syslocation here\n"));
  EXPECT_THAT(member("files/etc/config/kestrove.conf"), HasSubstr("SYS_NAME branch\n"));
  EXPECT_THAT(member("home/revisions/1"), HasSubstr("a revision\nsaid (removed) aloud\n"));
  EXPECT_THAT(ran.err, HasSubstr("not in it: home/image"));
}

TEST_F(CtlSupportTest, ShortSecretsGoWhereTheyStand) {
  strcpy(shm->config.httpEncryptedId, "ab");
  writeFile("/var/config/snmpd.conf", "rocommunity xy\n");
  ASSERT_EQ(0, support().status);
  EXPECT_EQ("rocommunity (removed)\n", member("files/var/config/snmpd.conf"));
  EXPECT_THAT(member("dump.txt"), HasSubstr("httpEncryptedId: (removed)\n"));
  EXPECT_EQ("(removed)", Json::parse(member("dump.json"))["config"]["httpEncryptedId"]);
}

TEST_F(CtlSupportTest, ItIsForItsOwnerAloneAndWhole) {
  writeFile(kArchive, "old");
  chmod(kArchive, 0644);
  ASSERT_EQ(0, support().status);
  struct stat facts;
  ASSERT_EQ(0, stat(kArchive, &facts));
  EXPECT_EQ(0600u, facts.st_mode & 07777);
  EXPECT_EQ("unit.tar.gz\n", run("ls -A /tmp/out").out);
  EXPECT_EQ("", run("ls -d /tmp/kestrovectl-support-*").out) << "nothing is left behind";
}

TEST_F(CtlSupportTest, WithoutAStoreTheRestIsThere) {
  dropStore();
  Ran ran = support("--json");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(ran.json()["missing"].dump(), HasSubstr("there is no store"));
  EXPECT_THAT(member("kernel/links.txt"), HasSubstr("lo:"));
  EXPECT_THAT(member("CONTENTS.txt"), HasSubstr("missing: dump.txt: there is no store"));
  makeStore();
}

TEST_F(CtlSupportTest, ALockedStoreIsNotWaitedForAgainAndAgain) {
  Peer holder([](const Peer::Line& line) {
    shm_lock();
    line.say('l');
    line.hear();
    return 0;
  });
  ASSERT_EQ('l', holder.line().hear());
  Ran ran = support("--wait 0");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(member("lock.txt"), HasSubstr("held by process"));
  EXPECT_THAT(ran.err, HasSubstr("not in it: dump.txt: the store is locked by"));
}

TEST_F(CtlSupportTest, WhereItCannotBeWrittenNothingIsLeft) {
  writeFile(kArchive, "old");
  run("mount -t tmpfs -o size=8k tmpfs /tmp/out");
  Ran full = support("--json");
  EXPECT_EQ(5, full.status);
  EXPECT_EQ("", run("ls -A /tmp/out").out);
  EXPECT_EQ(5, ctl("support /no/such/folder/x.tar.gz").status);
  EXPECT_EQ(5, ctl("support /tmp").status);
  EXPECT_EQ(2, ctl("support").status);
}

TEST(Scrubber, LongerSecretsGoFirst) {
  ctl::Scrubber scrubber;
  scrubber.learn("word");
  scrubber.learn("wordOfMine");
  scrubber.learn("abc");
  EXPECT_EQ("(removed) (removed)s abc", scrubber.clean("wordOfMine words abc"));
}

TEST(Scrubber, FormerSessionsGoBehindTheirName) {
  const ctl::Scrubber scrubber;
  EXPECT_EQ("set httpEncryptedId (removed)\nset sysName x", scrubber.clean("set httpEncryptedId a1b2\nset sysName x"));
  EXPECT_EQ("-set httpEncryptedId \"(removed)\"\n", scrubber.clean("-set httpEncryptedId \"a b\"\n"));
  EXPECT_EQ("{\"httpEncryptedId\":\"(removed)\",\"b\":1}", scrubber.clean("{\"httpEncryptedId\":\"a b\",\"b\":1}"));
  EXPECT_EQ("[\"set httpEncryptedId (removed)\\nset b 1\"]", scrubber.clean("[\"set httpEncryptedId a1\\nset b 1\"]"));
  EXPECT_EQ("  httpEncryptedId: \t\t(removed)\n", scrubber.clean("  httpEncryptedId: \t\ta1\n"));
  EXPECT_EQ("httpEncryptedId", scrubber.clean("httpEncryptedId"));
}

TEST(Scrubber, HashesGoWhereverTheyStand) {
  const ctl::Scrubber scrubber;
  EXPECT_EQ("a:(removed):b", scrubber.clean("a:$1$abcdefgh$qZ0ZBbKYeqPT9fWKjmqO1.:b"));
  EXPECT_EQ("(removed) (removed)", scrubber.clean("$6$s$0123456789 $y$j9T$salt$0123456789"));
  EXPECT_EQ("$5 and $HOME/x cost $1$ more", scrubber.clean("$5 and $HOME/x cost $1$ more"));
}

}  // namespace
}  // namespace kestrove::testing
