// SPDX-License-Identifier: Apache-2.0
// kestrovectl shell, as a person drives it and from standard input.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/support/peer.h"
#include "tests/tools/programs.h"
#include "tests/tools/terminal.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kHistory[] = "/tmp/shell/shell-history-root";
constexpr char kPrompt[] = "branch-7> ";

class ShellTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    setenv("KESTROVE_HOME", "/tmp/shell", 1);
    setenv("TERM", "dumb", 1);
    setenv("PAGER", "cat", 1);
    setShmString(SHM_TEXT_SYS_NAME, "branch-7");
  }
  // Types a line and waits for what it says, then for the next prompt.
  static bool answers(Terminal& terminal, const std::string& keys, const std::string& text) {
    terminal.type(keys);
    return terminal.says(text) && terminal.says(kPrompt);
  }
};

TEST_F(ShellTest, WithoutACommandATerminalIsTalkedTo) {
  Terminal terminal({});
  ASSERT_TRUE(terminal.says(kPrompt));
  EXPECT_TRUE(answers(terminal, "set wanLinkRate 2048000\r", "2048000"));
  EXPECT_EQ(2048000u, shm->config.wanLinkRate);
  EXPECT_EQ(0, terminal.leave("\x04"));
}

TEST_F(ShellTest, ACommandThatFailsKeepsTheShell) {
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  EXPECT_TRUE(answers(terminal, "set wanLinkRate 1\r", "wanLinkRate takes"));
  EXPECT_TRUE(answers(terminal, "frobnicate\r", "frobnicate: no such command"));
  EXPECT_TRUE(answers(terminal, "show \"x\r", "a quote does not end"));
  EXPECT_TRUE(answers(terminal, "shell\r", "this is the shell already"));
  terminal.type("quit\r");
  EXPECT_EQ(0, terminal.end());
}

TEST_F(ShellTest, TabCompletesWordsAndValues) {
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  EXPECT_TRUE(answers(terminal, "ru\tlis\t\r", "IPv4"));
  EXPECT_TRUE(answers(terminal, "sho\twanLinkR\t\r", "wanLinkRate"));
  EXPECT_TRUE(answers(terminal, "show mini\x15set compression of\t\r", "off"));
  EXPECT_EQ(SHM_OFF, shm->config.compression);
  terminal.type("mode \t");
  EXPECT_TRUE(terminal.says("double")) << "what it may become";
  EXPECT_TRUE(answers(terminal, "\x15show minRate | ma\tzzz | co\t\r", "\n0\r\n"));
  terminal.type("load /usr/share/kestr\t");
  EXPECT_TRUE(terminal.says("ove/"));
}

TEST_F(ShellTest, TabKnowsWhatTheStoreHas) {
  ASSERT_EQ(0, ctl("user add alice --admin", "Passw0rd!\n").status);
  ASSERT_EQ(0, ctl("route add 172.20.0.0/16 192.168.10.3").status);
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  EXPECT_TRUE(answers(terminal, "user remove a\t\r", "user alice removed"));
  EXPECT_TRUE(answers(terminal, "route remove 1\t\r", "172.20.0.0/16"));
  EXPECT_TRUE(answers(terminal, "rule delete \t\r", "the default rule"));
}

TEST_F(ShellTest, AQuestionMarkListsWhatMayFollow) {
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  terminal.type("rule ?");
  EXPECT_TRUE(terminal.says("Insert a rule in front of a position"));
  EXPECT_TRUE(answers(terminal, "l\r", "IPv4")) << "the line is still there";
  terminal.type("rule add 0 --target ?");
  EXPECT_TRUE(terminal.says("What matching traffic gets (accelerate|bridge|drop)"));
  terminal.type("\x15show | ?");
  EXPECT_TRUE(terminal.says("extended regular expression"));
  EXPECT_TRUE(answers(terminal, "\x15set sysContact 'who?'\r", "who?")) << "in a quote it is a character";
}

TEST_F(ShellTest, WordsOfCommandsMayBeCut) {
  ASSERT_EQ(0, ctl("route add 172.20.0.0/16 192.168.10.3").status);
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  EXPECT_TRUE(answers(terminal, "ru l\r", "IPv4"));
  EXPECT_TRUE(answers(terminal, "rout l\r", "rout: may be route, route6"));
  EXPECT_TRUE(answers(terminal, "route l\r", "172.20.0.0"));
  EXPECT_EQ(2, ctl("ru l").status) << "nowhere else";
}

TEST_F(ShellTest, TheHistoryComesBackWithoutSecrets) {
  {
    Terminal terminal({"shell"});
    ASSERT_TRUE(terminal.says(kPrompt));
    EXPECT_TRUE(answers(terminal, "show minRate\r", "minRate"));
    EXPECT_TRUE(answers(terminal, "user check Passw0rd!\r", "Passw0rd!"));
    EXPECT_TRUE(answers(terminal, "us ch Passw0rd!\r", "Passw0rd!"));
    EXPECT_TRUE(answers(terminal, "Passw0rd!\r", "no such command"));
    EXPECT_TRUE(answers(terminal, "set httpEncryptedId Passw0rd!\r", "Passw0rd!"));
    terminal.type("exit\r");
    EXPECT_EQ(0, terminal.end());
  }
  EXPECT_EQ("show minRate\n", readFile(kHistory));
  struct stat facts;
  ASSERT_EQ(0, stat(kHistory, &facts));
  EXPECT_EQ(0600u, facts.st_mode & 07777);
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  EXPECT_TRUE(answers(terminal, "\x1b[A\r", "minRate"));
}

TEST_F(ShellTest, CtrlCDropsTheLineAndEndsTheCommand) {
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  terminal.type("set wanLinkRate 4096000");
  ASSERT_TRUE(terminal.says("4096000")) << "the line is read";
  EXPECT_TRUE(answers(terminal, "\x03", "^C"));
  EXPECT_NE(4096000u, shm->config.wanLinkRate);
  terminal.type("events follow\r");
  bool followed = false;
  for (int i = 0; i < 100 && !followed; ++i) {  // the command is in its own time at the log
    logEvent(SHM_EVENT_SYSTEM_STARTED, 0, "--");
    followed = terminal.says("System Started", 5);
  }
  ASSERT_TRUE(followed);
  EXPECT_TRUE(answers(terminal, "\x03", "^C"));
  EXPECT_TRUE(answers(terminal, "show minRate\r", "minRate"));
}

TEST_F(ShellTest, OutputGoesThroughFilters) {
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  EXPECT_TRUE(answers(terminal, "show | match ^wanLinkRate | count\r", "\n1\r\n"));
  EXPECT_TRUE(answers(terminal, "show minRate | json\r", "\"item\": \"minRate\""));
  EXPECT_TRUE(answers(terminal, "show minRate | l 1\r", "\nminRate"));
  EXPECT_TRUE(answers(terminal, "show | match (\r", "Unmatched ( or \\("));
  EXPECT_TRUE(answers(terminal, "show | sort\r", "sort: no such filter"));
  EXPECT_TRUE(answers(terminal, "show | last\r", "last: N is missing"));
}

TEST_F(ShellTest, WhatIsLongerThanTheScreenGoesThroughThePager) {
  setenv("PAGER", "sed 's/^/paged:/'", 1);
  Terminal terminal({"shell"}, true, 80);
  ASSERT_TRUE(terminal.says(kPrompt));
  EXPECT_TRUE(answers(terminal, "show\r", "paged:item"));
  const size_t before = terminal.heard().size();
  EXPECT_TRUE(answers(terminal, "show minRate\r", "minRate"));
  EXPECT_THAT(terminal.heard().substr(before), Not(HasSubstr("paged:")));
}

TEST_F(ShellTest, ThePromptNamesUnitAndMode) {
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  shm->operationalState = SHM_STATE_CONFIGURATION;
  terminal.type("\r");
  EXPECT_TRUE(terminal.says("branch-7[config]"));
  shm->operationalState = SHM_STATE_DEBUG;
  terminal.type("\r");
  EXPECT_TRUE(terminal.says("branch-7[debug]"));
  shm->operationalState = SHM_STATE_OPERATIONAL;
  shm->config.sysName[0] = '\0';
  terminal.type("\r");
  EXPECT_TRUE(terminal.says("00000000"));
}

TEST_F(ShellTest, ThePromptSaysWhatIsNotSaved) {
  writeFile("/etc/config/factory.defaults", "LAN_RATE 100000000\n");
  ASSERT_EQ(0, ctl("save").status);
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  shm->operationalState = SHM_STATE_CONFIGURATION;
  terminal.type("set wanLinkRate 2048000\r");
  EXPECT_TRUE(terminal.says("branch-7[config]*> "));
  terminal.type("save\r");
  EXPECT_TRUE(terminal.says("branch-7[config]> "));
  terminal.type("set wanLinkRate 3048000\r");
  EXPECT_TRUE(terminal.says("branch-7[config]*> "));
  terminal.type("exit\r");
  EXPECT_EQ(0, terminal.end());
  EXPECT_THAT(terminal.heard(), HasSubstr("there are changes that are not saved"));
}

TEST_F(ShellTest, ThePromptSaysWhatIsNotConfirmed) {
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  terminal.type("set wanLinkRate 2048000 --confirm 5\r");
  EXPECT_TRUE(terminal.says("branch-7!> "));
  EXPECT_TRUE(answers(terminal, "confirm\r", "")) << "and no longer";
  terminal.type("exit\r");
  EXPECT_EQ(0, terminal.end());
}

TEST_F(ShellTest, ColoursAreForTerminalsThatKnowThem) {
  setenv("TERM", "xterm", 1);
  Terminal coloured({"shell"});
  EXPECT_TRUE(coloured.says("\x1b[1mbranch-7\x1b[0m"));
  setenv("NO_COLOR", "1", 1);
  Terminal plain({"shell"});
  EXPECT_TRUE(plain.says(kPrompt));
  EXPECT_THAT(plain.heard(), Not(HasSubstr("\x1b[1m")));
}

TEST_F(ShellTest, AResizedWindowIsKnownAtOnce) {
  Terminal terminal({"shell"}, true, 80);
  ASSERT_TRUE(terminal.says(kPrompt));
  terminal.type("rule ?");
  EXPECT_TRUE(terminal.says("Insert a rule in front of a position"));
  terminal.resize(24, 20);
  terminal.type("?");
  EXPECT_TRUE(terminal.says("  add        Inse..")) << terminal.heard();
}

TEST_F(ShellTest, ASignalThatEndsItLeavesTheTerminalAsItWas) {
  for (int number : {SIGHUP, SIGTERM}) {
    Terminal terminal({"shell"});
    ASSERT_TRUE(terminal.says(kPrompt));
    terminal.type("show minR");
    ASSERT_TRUE(terminal.says("minR"));
    EXPECT_TRUE(terminal.becomes(false)) << "echo is the editor's";
    terminal.signal(number);
    EXPECT_EQ(128 + number, terminal.end());
    EXPECT_TRUE(terminal.becomes(true));
  }
}

TEST_F(ShellTest, SignalsOfKeysThatAreSentToItChangeNothing) {
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  terminal.type("show minR");
  ASSERT_TRUE(terminal.says("minR"));
  for (int number : {SIGINT, SIGQUIT, SIGTSTP, SIGWINCH, SIGCONT}) terminal.signal(number);
  EXPECT_TRUE(answers(terminal, "ate\r", "accepts"));
  EXPECT_FALSE(terminal.echoes());
  EXPECT_EQ(0, terminal.leave("\x04"));
}

// The terminal turns a Ctrl-D that comes while no line is read into NUL.
TEST_F(ShellTest, AKeyTypedDuringACommandDoesNotQuoteTheNextOne) {
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  terminal.type(std::string(1, '\0') + "\x04");
  EXPECT_EQ(0, terminal.end());
}

TEST_F(ShellTest, CharactersOfSeveralBytesAreTyped) {
  setenv("LC_ALL", "C.UTF-8", 1);
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  EXPECT_TRUE(answers(terminal, "sh\xc3\xb6w\r", "sh\xc3\xb6w: no such command")) << terminal.heard();
  setenv("LC_ALL", "C", 1);
  Terminal plain({"shell"});
  ASSERT_TRUE(plain.says(kPrompt));
  EXPECT_TRUE(answers(plain, "sh\xc3\xb6ow minRate\r", "accepts")) << "what is no character is dropped";
}

TEST_F(ShellTest, NarrowAndWideTerminalsTakeTheSameKeys) {
  for (unsigned short columns : {uint16_t{20}, uint16_t{80}, uint16_t{200}}) {
    Terminal terminal({"shell"}, true, columns);
    ASSERT_TRUE(terminal.says(kPrompt)) << columns;
    EXPECT_TRUE(answers(terminal, "set wanLinkR\t3000000 \x7f\r", "bit/s")) << columns;
    EXPECT_EQ(3000000u, shm->config.wanLinkRate) << columns;
    ASSERT_EQ(0, ctl("set wanLinkRate 1000000").status);
  }
}

TEST_F(ShellTest, ALockedStoreIsWaitedForAndThatIsSaid) {
  Terminal terminal({"shell"});
  ASSERT_TRUE(terminal.says(kPrompt));
  Peer holder([](const Peer::Line& line) {
    shm_lock();
    line.say('l');
    line.hear();
    return 0;
  });
  ASSERT_EQ('l', holder.line().hear());
  terminal.type("show minRate\r");
  EXPECT_TRUE(terminal.says("waiting for the store: locked by process " + std::to_string(holder.pid())));
  holder.line().say('g');
  EXPECT_TRUE(terminal.says("minRate"));
  EXPECT_TRUE(terminal.says(kPrompt));
}

TEST_F(ShellTest, StandardInputRunsLineByLine) {
  const Ran ran = ctl("shell",
                      "# a remark\n\nset wanLinkRate 2048000\nsh minRate | json\nfrobnicate\nset wanLinkRate 1\n"
                      "show minMtu\nquit\nshow maxMtu\n");
  EXPECT_EQ(2, ran.status) << "the first failure's";
  EXPECT_THAT(ran.out, HasSubstr("minMtu"));
  EXPECT_THAT(ran.out, Not(HasSubstr("> ")));
  EXPECT_THAT(ran.err, HasSubstr("-:5: frobnicate: no such command"));
  EXPECT_THAT(ran.err, HasSubstr("-:6: wanLinkRate takes"));
  EXPECT_THAT(ran.err, Not(HasSubstr("maxMtu")));
  EXPECT_EQ(2048000u, shm->config.wanLinkRate);
}

TEST_F(ShellTest, ACommandReadsWhatStandsBehindItsLine) {
  for (const char* line : {"shell", ""}) {
    ASSERT_EQ(0, ctl(line, "user add alice\nPassw0rd!\nuser check alice\nPassw0rd!\n").status) << line;
    EXPECT_EQ(0, ctl(line, "user remove alice\n").status) << line;
    EXPECT_EQ(0, shm->config.userCount) << line;
  }
}

TEST_F(ShellTest, NothingAtAllIsNoCommand) {
  const Ran ran = ctl("", "");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("a command is needed"));
  EXPECT_EQ(0, ctl("shell", "").status) << "asked for by name it has nothing to do";
}

TEST_F(ShellTest, AnOptionHoldsForEveryLine) {
  const Ran ran = ctl("--json shell", "show minRate\n");
  EXPECT_EQ("minRate", ran.json()[0]["item"]);
  EXPECT_EQ(2, ctl("--json shell", "rout l\n").json()["error"]["exit"]);
}

TEST_F(ShellTest, ALineTooLongIsOneFailure) {
  const Ran ran = ctl("shell", "show " + std::string(70000, 'x') + "\nshow minRate\n");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.out, HasSubstr("minRate"));
}

}  // namespace
}  // namespace kestrove::testing
