// SPDX-License-Identifier: Apache-2.0
// Rates as they are watched, at a terminal and in a pipe.
#include <gmock/gmock.h>

#include <sstream>

#include "tests/tools/programs.h"
#include "tests/tools/terminal.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class CtlWatchTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->statistics.accumulationInterval = 10;
  }
  // The engine's report of an interval in which so many bytes went over the WAN.
  static void report(uint32_t bytes) {
    uint32_t record[SHM_INTERVAL_WORDS] = {};
    record[31] = bytes;
    record[40] = 7;
    ASSERT_EQ(0, shm_updateKestroveStats(record));
  }
};

TEST_F(CtlWatchTest, EachSampleIsAnObject) {
  Terminal terminal({"--json", "stats", "--watch", "0.1"});
  ASSERT_TRUE(terminal.says("\"wanBytes\":null"));
  report(1000);
  ASSERT_TRUE(terminal.says("\"wanBytes\":100.0"));
  resetStats(0, "");
  ASSERT_TRUE(terminal.says("\"wanBytes\":null"));
  report(3000);
  ASSERT_TRUE(terminal.says("\"wanBytes\":300.0"));
  terminal.type("\x03");
  EXPECT_EQ(0, terminal.end());
  EXPECT_THAT(terminal.heard(),
              AllOf(HasSubstr("\"wanSessions\":7"), HasSubstr("\"engine\":\"reporting\""), Not(HasSubstr("\":-"))));
}

TEST_F(CtlWatchTest, InAPipeEachSampleIsALine) {
  Ran ran = ctl("stats --watch 0.1 --samples 3");
  EXPECT_EQ(0, ran.status) << ran.err;
  std::istringstream lines(ran.out);
  int samples = 0;
  for (std::string line; std::getline(lines, line); ++samples) {
    EXPECT_THAT(line, AllOf(HasSubstr("Z wanBytes=- wanPackets=-"), HasSubstr(" lanPortBytesSent=0.0 "),
                            HasSubstr(" engineSessions=0"), Not(HasSubstr("\x1b"))));
  }
  EXPECT_EQ(3, samples);
}

TEST_F(CtlWatchTest, AtATerminalItIsATableThatIsDrawnAnew) {
  Terminal terminal({"stats", "--watch", "0.1"});
  ASSERT_TRUE(terminal.says("WAN                 -"));
  report(1000);
  EXPECT_TRUE(terminal.says("WAN                 800 bit/s     800 bit/s"));
  EXPECT_TRUE(terminal.says("WAN sessions        7"));
  terminal.type("\x03");
  EXPECT_EQ(0, terminal.end());
  EXPECT_THAT(terminal.heard(), HasSubstr("A\r"));
}

TEST_F(CtlWatchTest, TheTableFitsItsWindow) {
  Terminal terminal({"stats", "--watch", "0.1"});
  terminal.resize(10, 30);
  ASSERT_TRUE(terminal.says("\x1b[9A\r"));
  const size_t drawing = terminal.heard().size();
  ASSERT_TRUE(terminal.says("\x1b[9A\r"));
  ASSERT_TRUE(terminal.says("\x1b[9A\r"));
  terminal.type("\x03");
  EXPECT_EQ(0, terminal.end());
  std::istringstream lines(terminal.heard().substr(drawing));
  for (std::string line; std::getline(lines, line);) {
    const size_t start = line.find('\r');
    const size_t end = line.find("\x1b[K");
    if (start == std::string::npos || end == std::string::npos) continue;
    EXPECT_LE(end - start - 1, 30u) << line;
  }
}

TEST_F(CtlWatchTest, AStoreThatIsBuiltAnewEndsIt) {
  Terminal terminal({"stats", "--watch", "0.1"});
  ASSERT_TRUE(terminal.says("WAN sessions"));
  ASSERT_EQ(0, delete_shared_memory());
  EXPECT_EQ(3, terminal.end());
  dropStore();
  makeStore();
}

TEST_F(CtlWatchTest, TimesGoWithWatchingAlone) {
  for (const char* wrong :
       {"stats 1", "stats --samples 1", "stats --watch 0", "stats --watch soon", "stats --watch -1"}) {
    EXPECT_EQ(2, ctl(wrong).status) << wrong;
  }
  EXPECT_EQ(0, ctl("stats").status);
}

}  // namespace
}  // namespace kestrove::testing
