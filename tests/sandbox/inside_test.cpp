// What a program finds inside the appliance.

#include <gmock/gmock.h>
#include <stdlib.h>
#include <syslog.h>
#include <unistd.h>

#include "tests/support/recorder.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Inside, IsRootOfAnOwnHost) {
  char name[64] = "";
  gethostname(name, sizeof name);
  EXPECT_STREQ("kestrove", name);
  EXPECT_EQ(0u, geteuid());
}

TEST(Inside, SystemFoldersAreWritable) {
  for (const char* folder : {"/etc/config", "/var/log/kestrove", "/tmp", "/run", "/var/lock", "/usr/bin", "/var/run"}) {
    writeFile(std::string(folder) + "/mark", "x");
  }
}

TEST(Syslog, MessagesKeepTheirOrderLevelsAndLines) {
  syslog(LOG_ERR, "first: %s", "with a colon");
  syslog(LOG_DEBUG, "second\nof two lines");
  EXPECT_THAT(syslogLines(), ElementsAre("err: first: with a colon", "debug: second\nof two lines"));
}

TEST(Syslog, ClearForgets) {
  syslog(LOG_INFO, "before");
  clearSyslog();
  EXPECT_THAT(syslogLines(), IsEmpty());
  syslog(LOG_INFO, "after");
  EXPECT_THAT(syslogLines(), ElementsAre("info: after"));
}

TEST(RealMode, TheShellIsRecordedAndRuns) {
  EXPECT_EQ(3 << 8, system("echo  x > /tmp/out ; exit 3"));
  EXPECT_THAT(shellLines(), ElementsAre("echo  x > /tmp/out ; exit 3"));
  EXPECT_EQ("x\n", readFile("/tmp/out"));
}

}  // namespace
}  // namespace kestrove::testing
