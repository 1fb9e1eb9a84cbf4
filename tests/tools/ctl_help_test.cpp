// SPDX-License-Identifier: Apache-2.0
// help and the manual.
#include <gmock/gmock.h>

#include "tests/tools/programs.h"
#include "tools/ctl/manual.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

// kestrovectl as it is installed below /tmp/installed, with a reader of manuals that says what it is asked for.
Ran installedHelp(const std::string& reader) {
  writeFile("/tmp/prepare",
            "mkdir -p /tmp/installed/bin /tmp/installed/share/man/man8\n"
            "cp " KESTROVECTL
            " /tmp/installed/bin\n"
            "echo page >/tmp/installed/share/man/man8/kestrovectl.8\n"
            "printf '#!/bin/sh\\n" +
                reader +
                "\\n' >/tmp/installed/bin/man\n"
                "chmod +x /tmp/installed/bin/man\n");
  EXPECT_EQ(0, run("sh /tmp/prepare").status);
  return run("/tmp/installed/bin/kestrovectl help --man");
}

TEST(CtlHelp, IsThatOfTheCommand) {
  EXPECT_EQ(ctl("rule add --help").out, ctl("help rule add").out);
  EXPECT_EQ(ctl("--help").out, ctl("help").out);
  EXPECT_EQ(ctl("rule add --help").out, ctl("--json help rule add").json()["help"]);
}

TEST(CtlHelp, OfNoCommandSaysWhatWasMeant) {
  const Ran ran = ctl("help rulle");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("rulle: no such command; did you mean rule?"));
}

TEST(CtlHelp, TheManualIsShownByTheMachinesReader) {
  EXPECT_EQ("read page\n", installedHelp("echo read $(cat $1)").out);
}

TEST(CtlHelp, TheManualIsTextWhereTheReaderFails) {
  const Ran ran = installedHelp("exit 3");
  EXPECT_EQ(0, ran.status);
  EXPECT_THAT(ran.out, HasSubstr("NAME\n\n      kestrovectl - read and change the appliance's store\n"));
}

TEST(CtlHelp, TheTextHasEveryCommandAndExitCodeAndNoMarks) {
  const std::string text = ctl::manualText(ctl::grammar());
  EXPECT_THAT(text, AllOf(HasSubstr("rule add POSITION [OPTION...]\n"), HasSubstr("--kbps 0..2147483 kbit/s\n"),
                          HasSubstr("\n      10\n            the change was not confirmed in time"),
                          HasSubstr("/etc/config/kestrove.conf\n"), HasSubstr("printed as \\x0a")));
  EXPECT_THAT(text, Not(HasSubstr("*rule")));
  EXPECT_EQ(std::string::npos, text.find("@COMMANDS@"));
  EXPECT_EQ(text, ctl("--json help --man").json()["help"]);
}

TEST(CtlHelp, EveryKeywordIsInThePageOfTheFile) {
  const std::string row = "\n| LAN_RATE | number | `lanLinkRate` | 2 |\n";
  EXPECT_THROW(ctl::keywordPage("@KEYWORDS@\n", row), std::runtime_error) << "the document lacks most";
}

}  // namespace
}  // namespace kestrove::testing
