// SPDX-License-Identifier: Apache-2.0
// Standard output that cannot be written, and texts that a terminal must not get.
#include <gmock/gmock.h>
#include <string.h>
#include <unistd.h>

#include "tests/support/peer.h"
#include "tests/tools/programs.h"
#include "tools/common/plain_text.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class CtlOutputTest : public StoreTest {};

constexpr const char* kPrinting[] = {"status",      "show",
                                     "--json show", "set wanLinkRate 2048000",
                                     "rule list",   "events",
                                     "user list",   "dump",
                                     "--json dump", "check",
                                     "save",        "--help",
                                     "--version",   "rule add --help",
                                     "mode show"};

TEST_F(CtlOutputTest, AFullDeviceIsNamed) {
  logEvent(21, 2, "admin");
  for (const char* command : kPrinting) {
    Ran ran = run(std::string(KESTROVECTL) + " " + command + " >/dev/full");
    EXPECT_EQ(5, ran.status) << command;
    EXPECT_THAT(ran.err, HasSubstr("standard output: No space left on device")) << command;
  }
}

TEST_F(CtlOutputTest, AClosedDescriptorIsNamed) {
  logEvent(21, 2, "admin");
  for (const char* command : kPrinting) {
    Ran ran = run(std::string(KESTROVECTL) + " " + command + " >&-");
    EXPECT_EQ(5, ran.status) << command;
    EXPECT_THAT(ran.err, HasSubstr("standard output: Bad file descriptor")) << command;
  }
}

// A pipe that nobody reads any more, under a number that a shell's redirection takes.
constexpr int kUnread = 9;

void makeUnread() {
  int ends[2];
  ASSERT_EQ(0, pipe(ends));
  close(ends[0]);
  if (ends[1] == kUnread) return;
  ASSERT_EQ(kUnread, dup2(ends[1], kUnread));
  close(ends[1]);
}

TEST_F(CtlOutputTest, AClosedPipeIsNamed) {
  logEvent(21, 2, "admin");
  makeUnread();
  for (const char* command : kPrinting) {
    const Ran ran = run(std::string(KESTROVECTL) + " " + command + " >&" + std::to_string(kUnread));
    EXPECT_EQ(5, ran.status) << command;
    EXPECT_THAT(ran.err, HasSubstr("standard output: Broken pipe")) << command;
  }
  close(kUnread);
}

TEST_F(CtlOutputTest, AFollowerEndsWithItsReader) {
  Peer logger([](const Peer::Line&) {
    for (int i = 0; i < 100; ++i) {
      usleep(200000);
      logEvent(24, 3, "later");
    }
    return 0;
  });
  run("bash -c '{ " KESTROVECTL
      " events follow --seconds 30; echo $? >/tmp/status; } | { read -r line; echo \"$line\" >/tmp/first; }'");
  EXPECT_EQ("5\n", readFile("/tmp/status"));
  EXPECT_THAT(readFile("/tmp/first"), HasSubstr("later"));
}

TEST_F(CtlOutputTest, ErrorsThatCannotBePrintedAsJsonGoToStandardError) {
  Ran ran = run(KESTROVECTL " --json set noSuchItem 5 >/dev/full");
  EXPECT_EQ(5, ran.status);
  EXPECT_THAT(ran.err, AllOf(HasSubstr("noSuchItem: no such item"), HasSubstr("standard output: No space left")));
}

TEST_F(CtlOutputTest, WithEverythingClosedNoFileOfTheStoreIsWrittenInto) {
  EXPECT_EQ(5, run("sh -c '" KESTROVECTL " set wanLinkRate 2048000 <&- >&- 2>&-'").status);
  EXPECT_EQ(2048000u, shm->config.wanLinkRate);
  EXPECT_EQ("", readFile("/var/lock/shm"));
  EXPECT_THAT(readFile("/etc/config/kestrove.conf"), Not(HasSubstr("wanLinkRate")));
}

TEST_F(CtlOutputTest, ControlCharactersAreRefused) {
  for (const char* command : {"set sysContact $'x\\nADMIN_USERNAME mallory'", "set sysName $'a\\x1b[2Jb'",
                              "set sysName $'a\\x7f'", "set sysName $'a\\xc2\\x9bb'", "--user $'a\\tb' events clear",
                              "load $'/tmp/a\\nb'", "user add $'ali\\nce'", "explain set sysName $'a\\nb'"}) {
    writeFile("/tmp/line", std::string(KESTROVECTL) + " " + command);
    Ran ran = run("bash /tmp/line");
    EXPECT_EQ(2, ran.status) << command;
    EXPECT_THAT(ran.err, HasSubstr("of the command line holds a control character: ")) << command;
    EXPECT_THAT(ran.err, Not(HasSubstr("\x1b"))) << command;
  }
  EXPECT_STREQ("", shm->config.sysContact);
  Ran ran = run("USER=$(printf 'a\\tb') " KESTROVECTL " events clear");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("USER holds a control character"));
}

TEST_F(CtlOutputTest, OtherLettersAreText) {
  EXPECT_EQ(0, ctl("set sysName 'Zürich, 東京'").status);
  EXPECT_STREQ("Zürich, 東京", shm->config.sysName);
  EXPECT_THAT(ctl("show sysName").out, HasSubstr("Zürich, 東京"));
}

TEST_F(CtlOutputTest, WhatTheStoreHoldsIsPrintedEscaped) {
  strcpy(shm->config.sysName, "a\nb\x1b[2Jc\x7f\xc2\x9bz\xff");
  const std::string escaped = "a\\x0ab\\x1b[2Jc\\x7f\\xc2\\x9bz\\xff";
  EXPECT_THAT(ctl("show sysName").out, HasSubstr(escaped));
  EXPECT_THAT(ctl("dump config").out, AllOf(HasSubstr("a\\x0ab\\x1b[2Jc\\x7f\\xc2\\x9b"), Not(HasSubstr("\x1b"))));
  Ran json = ctl("--json show sysName");
  EXPECT_THAT(json.out, AllOf(HasSubstr("a\\nb\\u001b[2Jc\\u007f\\u009bz"), Not(HasSubstr("\x7f"))));
  EXPECT_EQ("a\nb\x1b[2Jc\x7f\xc2\x9bz\xef\xbf\xbd", json.json()[0]["value"]);
}

TEST_F(CtlOutputTest, NamesOfEventsToo) {
  logEvent(21, 2, "eve\n20-Nov-2026\x1b[1m");
  Ran list = ctl("events");
  EXPECT_THAT(list.out, AllOf(HasSubstr("eve\\x0a20-Nov-2026\\x1b[1m"), Not(HasSubstr("\x1b"))));
  EXPECT_EQ("eve\n20-Nov-2026\x1b[1m", ctl("--json events").json()["events"][0]["user"]);
  EXPECT_THAT(ctl("dump events").out, AllOf(HasSubstr("eve\\x0a20-Nov"), Not(HasSubstr("\x1b"))));
}

TEST_F(CtlOutputTest, TimesAreIsoWithTheirZone) {
  EventRecord record = {1763763466, 21, 2, "a,b"};
  shm->eventLog.record[0] = record;
  shm->eventLog.writeIndex = 1;
  Json event = ctl("--json events").json()["events"][0];
  EXPECT_EQ("2025-11-21T22:17:46Z", event["time"]);
  EXPECT_EQ("a,b", event["user"]);
  EXPECT_EQ("HTTP", event["source"]);
  EXPECT_EQ("Web interface login", event["description"]);
  EXPECT_EQ(event, ctl("--json dump events").json()["events"]["events"][0]);
  ASSERT_EQ(0, ctl("user add alice", "Passw0rd!\n").status);
  shm->config.users[0].lastPasswdChange = 1763763466;
  Json user = ctl("--json user list").json()[0];
  EXPECT_EQ("2025-11-21T22:17:46Z", user["lastPasswordChange"]);
  EXPECT_TRUE(user["lastLogin"].is_null());
}

TEST(PlainText, WhatIsEscaped) {
  EXPECT_EQ("plain \\ text", tools::escaped("plain \\ text"));
  EXPECT_EQ("\\x00\\x1f~\\x7f", tools::escaped(std::string_view("\0\x1f~\x7f", 4)));
  EXPECT_EQ("\\xc2\\x80\xc2\xa0", tools::escaped("\xc2\x80\xc2\xa0"));
  EXPECT_EQ("\\xc0\\xaf\\xff", tools::escaped("\xc0\xaf\xff"));
  EXPECT_EQ("\xe6\x9d\xb1\\xe6\\x9d", tools::escaped("\xe6\x9d\xb1\xe6\x9d"));
  EXPECT_FALSE(tools::hasControlCharacter("Z\xc3\xbcrich"));
  EXPECT_TRUE(tools::hasControlCharacter("a\rb"));
}

TEST(PlainText, TheNearestName) {
  const std::vector<std::string> names = {"status", "state", "stats", "show"};
  EXPECT_EQ("show", tools::nearest("sohw", names));
  EXPECT_EQ("status", tools::nearest("statsu", names));
  EXPECT_EQ("", tools::nearest("frobnicate", names));
  EXPECT_EQ(1u, tools::distance("kbsp", "kbps"));
  EXPECT_EQ(0u, tools::distance("LanMtu", "lanmtu"));
}

}  // namespace
}  // namespace kestrove::testing
