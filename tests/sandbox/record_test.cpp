// What the recorders write down, and what they answer.

#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/wait.h>

#include "kestrove/kestrove.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Record, ProgramsOfAShellLineAreRecordedNotRun) {
  EXPECT_EQ(0, system("/sbin/ip  rule flush > /dev/null 2>&1 "));
  EXPECT_THAT(shellLines(), ElementsAre("/sbin/ip  rule flush > /dev/null 2>&1 "));
  EXPECT_THAT(programs(), ElementsAre("/sbin/ip rule flush"));
}

TEST(Record, ArgumentsAreExact) {
  EXPECT_EQ(0, system("brctl 'a b' '' '\n'"));
  EXPECT_THAT(programs(), ElementsAre("brctl \"a b\" \"\" \n"));
}

TEST(Record, FileInputIsKept) {
  writeFile("/tmp/restore_file", "*filter\nCOMMIT\n");
  EXPECT_EQ(0, system("/sbin/iptables-restore < /tmp/restore_file"));
  EXPECT_THAT(inputsOf("iptables-restore"), ElementsAre("*filter\nCOMMIT\n"));
}

TEST(Record, FileToolsRunAndAreRecorded) {
  writeFile("/tmp/a", "text");
  EXPECT_EQ(0, system("cp /tmp/a /tmp/b"));
  EXPECT_EQ("text", readFile("/tmp/b"));
  EXPECT_THAT(programs(), ElementsAre("cp /tmp/a /tmp/b"));
}

TEST(Record, AnswersAreGiven) {
  answer("mii-diag", "hello\n", 3);
  EXPECT_EQ(3, WEXITSTATUS(system("/usr/bin/mii-diag -t eth0 > /tmp/mii.out")));
  EXPECT_EQ("hello\n", readFile("/tmp/mii.out"));
}

TEST(Record, ClearForgets) {
  EXPECT_EQ(0, system("true"));
  clearRecords();
  EXPECT_THAT(shellLines(), IsEmpty());
}

}  // namespace
}  // namespace kestrove::testing
