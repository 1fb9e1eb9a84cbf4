// SPDX-License-Identifier: Apache-2.0
// kestrovectl on terminals of several widths, and for scripts.
#include <gmock/gmock.h>
#include <pty.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>

#include "tests/tools/programs.h"
#include "tools/ctl/output/width.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

// What a line of the shell prints on a terminal of that many columns.
std::vector<std::string> onTerminal(const std::string& line, unsigned short columns) {
  struct winsize size = {.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
  int side = -1;
  const pid_t pid = forkpty(&side, nullptr, nullptr, &size);
  if (pid == 0) {
    unsetenv("COLUMNS");
    setenv("LC_ALL", "C.UTF-8", 1);
    execl("/bin/sh", "sh", "-c", line.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  std::string text;
  char buffer[4096];
  for (ssize_t length; (length = read(side, buffer, sizeof buffer)) > 0;)
    text.append(buffer, static_cast<size_t>(length));
  int status = 0;
  waitpid(pid, &status, 0);
  close(side);
  EXPECT_EQ(0, WEXITSTATUS(status)) << line;
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string one; std::getline(stream, one);) lines.push_back(one.substr(0, one.find('\r')));
  return lines;
}

std::vector<std::string> ctlOn(unsigned short columns, const std::string& words, const std::string& before = "") {
  return onTerminal(before + KESTROVECTL + " " + words, columns);
}

size_t widest(const std::vector<std::string>& lines) {
  size_t most = 0;
  for (const std::string& line : lines) most = std::max(most, ctl::displayWidth(line));
  return most;
}

// Addresses, names with wide, combining and control characters, and rules that need more than 80 columns.
class CtlScreenTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    strcpy(
        shm->config.sysName,
        "\u6771\u4eac Zu\u0308rich \x1b[2J \u6771\u4eac\u6771\u4eac\u6771\u4eac\u6771\u4eac\u6771\u4eac\u6771\u4eac");
    for (const char* rule : {"--from 198.51.100.0/24 --to 203.0.113.128/25 --proto tcp --dport 8000 --dport-end 8100",
                             "--to fd00:1234:5678:9abc::/64 --target bridge", "--proto udp --kbps 2000000"}) {
      ASSERT_EQ(0, ctl(std::string("rule add 0 ") + rule).status) << rule;
    }
  }
};

TEST_F(CtlScreenTest, TablesFitAndTellARowALine) {
  EXPECT_THAT(ctlOn(200, "rule list"), SizeIs(5));
  const std::vector<std::string> usual = ctlOn(80, "rule list");
  EXPECT_THAT(usual, SizeIs(5)) << "a heading and four rules";
  EXPECT_LE(widest(usual), 80u);
  EXPECT_THAT(usual[2], HasSubstr("\u2026"));
  EXPECT_LE(widest(ctlOn(80, "show")), 80u);
}

TEST_F(CtlScreenTest, OfWideCombiningAndControlCharacters) {
  EXPECT_THAT(ctlOn(200, "show sysName")[1], HasSubstr("\u6771\u4eac Zu\u0308rich \\x1b[2J \u6771\u4eac"));
  const std::vector<std::string> cut = ctlOn(60, "show sysName");
  EXPECT_THAT(cut, SizeIs(2));
  EXPECT_LE(widest(cut), 60u);
  EXPECT_THAT(cut[1], AllOf(HasSubstr("\u6771\u4eac Zu\u0308rich"), HasSubstr("\u2026")));
  EXPECT_THAT(ctlOn(60, "show sysName", "LC_ALL=C ")[1], HasSubstr("~"));
  EXPECT_THAT(ctlOn(20, "show sysName"), Each(Not(HasSubstr("\x1b"))));
}

TEST_F(CtlScreenTest, NarrowOnesGetRecords) {
  const std::vector<std::string> lines = ctlOn(20, "rule list");
  EXPECT_EQ("position", lines[0]);
  EXPECT_EQ("  0", lines[1]);
  EXPECT_THAT(lines, ::testing::Contains("  198.51.100.0/24"));
  EXPECT_THAT(lines, ::testing::Contains("  fd00:1234:5678:9abc::/64")) << "nothing is cut";
}

TEST_F(CtlScreenTest, WideAndPipesAreLeftAlone) {
  std::istringstream whole(ctl("rule list").out);
  std::vector<std::string> lines;
  for (std::string line; std::getline(whole, line);) lines.push_back(line);
  EXPECT_GT(widest(lines), 120u);
  EXPECT_EQ(lines, ctlOn(80, "rule list --wide"));
  EXPECT_EQ(lines, ctlOn(80, "rule list | cat"));
  EXPECT_EQ(lines, ctlOn(80, "rule list | cat", "COLUMNS=70 ")) << "no terminal";
  EXPECT_EQ(ctlOn(70, "rule list"), ctlOn(200, "rule list", "COLUMNS=70 "));
  EXPECT_EQ(ctlOn(200, "rule list"), ctlOn(200, "rule list", "COLUMNS=many "));
  EXPECT_EQ(ctlOn(80, "rule list"), ctlOn(0, "rule list")) << "a terminal that does not know its width";
}

TEST_F(CtlScreenTest, ScriptsGetRecordsALine) {
  EXPECT_EQ("0:udp:2000000\n1:any:10\n2:tcp:10\n3:any:10\n",
            ctl("--terse --fields position,protocol,kbit/s rule list").out);
  EXPECT_EQ("fd00\\:1234\\:5678\\:9abc\\:\\:/64\n",
            run("{ " KESTROVECTL " rule list --terse --fields destination | sed -n 2p; }").out);
  EXPECT_EQ("\u6771\u4eac Zu\u0308rich \\x1b[2J", ctl("show sysName --terse --fields value").out.substr(0, 23));
  EXPECT_EQ("rule 0 deleted\n", ctl("rule delete 0 --terse").out);
  logEvent(21, 2, "a:b");
  EXPECT_EQ("a\\:b:HTTP\n", ctl("events --terse --fields user,source").out);
  EXPECT_EQ("", ctl("check --terse").out);
}

TEST_F(CtlScreenTest, FieldsOfTablesAndObjects) {
  EXPECT_EQ("protocol  position\nudp       0\n",
            run("{ " KESTROVECTL " rule list --fields protocol,position | sed -n 1,2p; }").out);
  EXPECT_EQ("mode  OPMODE_DUAL_IF\n", ctl("mode show --fields mode").out);
}

TEST_F(CtlScreenTest, AnUnknownFieldStopsACommandBeforeItsChange) {
  Ran ran = ctl("rule delete 0 --fields position");
  EXPECT_EQ(2, ran.status);
  EXPECT_EQ("kestrovectl: position: no such field; there are done\n", ran.err);
  EXPECT_EQ(4, shm->filterTable.ruleCount);
  ran = ctl("rule list --fields position,colour");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("colour: no such field; there are position, family, source, destination, protocol, "));
  EXPECT_EQ(2, ctl("--json --terse rule list").status);
}

TEST_F(CtlScreenTest, TheSystemsReasonStandsBesideTheCode) {
  const Json error = ctl("--json load /tmp/not-there").json()["error"];
  EXPECT_EQ(5, error["exit"]);
  EXPECT_EQ((Json{{"number", 2}, {"name", "ENOENT"}, {"text", "No such file or directory"}}), error["errno"]);
  EXPECT_FALSE(ctl("--json rule delete 99").json()["error"].contains("errno"));
  EXPECT_EQ("ENODEV", ctl("--json address add fd00::1/64 --br0").json()["error"]["errno"]["name"]);
}

}  // namespace
}  // namespace kestrove::testing
