// SPDX-License-Identifier: Apache-2.0
// Work on a copy of the appliance, and stores that are made of files.
#include "tools/ctl/settings/copy.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "tests/support/addresses.h"
#include "tests/support/store.h"
#include "tools/ctl/settings/difference.h"

namespace kestrove::testing {
namespace {

using ctl::Image;
using ctl::Json;
using ctl::onCopy;
using ctl::Refusal;

class OnCopy : public StoreTest {
 protected:
  static Refusal refusalOf(const std::function<Json()>& work) {
    try {
      onCopy(Image(*shm), work);
    } catch (const Refusal& refusal) {
      return refusal;
    }
    return {ctl::kDone, "nothing refused"};
  }
};

TEST_F(OnCopy, ChangesAreMadeThereAndNotHere) {
  shm->config.lanLinkRate = 1000000;
  writeFile("/etc/config/kestrove.conf", "untouched\n");
  const ctl::CopyResult result = onCopy(Image(*shm), [] {
    const int set = setKestroveConfigItem(SHM_ITEM_LAN_LINK_RATE, 2000000, 0, "--");
    return Json{{"result", set}, {"file", readFile("/etc/config/kestrove.conf").find("2000000") != std::string::npos}};
  });
  EXPECT_EQ(0, result.json["result"]);
  EXPECT_EQ(true, result.json["file"]);
  EXPECT_EQ(2000000u, result.after->config.lanLinkRate);
  EXPECT_EQ(1000000u, shm->config.lanLinkRate);
  EXPECT_EQ("untouched\n", readFile("/etc/config/kestrove.conf"));
}

TEST_F(OnCopy, TheLockOfTheApplianceStaysWithItsHolder) {
  ASSERT_EQ(0, kestrove_hold());
  const ctl::CopyResult result = onCopy(Image(*shm), [] { return Json(setShmString(SHM_TEXT_SYS_NAME, "copy")); });
  EXPECT_EQ(0, result.json);
  EXPECT_STREQ("copy", result.after->config.sysName);
  const pid_t other = fork();
  if (other == 0) {
    const int fd = open("/var/lock/shm", O_RDWR);
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    _exit(fcntl(fd, F_SETLK, &lock) == -1 ? 7 : 0);
  }
  int status = 0;
  waitpid(other, &status, 0);
  EXPECT_EQ(7, WEXITSTATUS(status));
  EXPECT_EQ(0, kestrove_release());
}

TEST_F(OnCopy, NoFileOutsideCanBeWritten) {
  writeFile("/tmp/outside", "before");
  const ctl::CopyResult result = onCopy(Image(*shm), [] {
    Json written = Json::object();
    for (const char* path : {"/tmp/outside", "/usr/probe", "/var/lib/probe", "/etc/passwd", "/root/probe"}) {
      written[path] = std::ofstream(path).put('x').good();
    }
    return written;
  });
  EXPECT_EQ(false, result.json["/usr/probe"]);
  EXPECT_EQ(false, result.json["/root/probe"]);
  EXPECT_EQ(true, result.json["/etc/passwd"]);
  EXPECT_EQ("before", readFile("/tmp/outside"));
  EXPECT_NE("x", readFile("/etc/passwd"));
  EXPECT_FALSE(fileExists("/var/lib/probe"));
}

TEST_F(OnCopy, NoProcessOutsideCanBeSignalled) {
  const pid_t engine = fork();
  if (engine == 0) {
    pause();
    _exit(0);
  }
  shm->taskPids[SHM_TASK_ENGINE] = engine;
  const ctl::CopyResult result = onCopy(Image(*shm), [engine] {
    return Json{{"signal", kill(engine, SIGKILL)}, {"engine", shm->taskPids[SHM_TASK_ENGINE]}};
  });
  EXPECT_EQ(-1, result.json["signal"]);
  EXPECT_EQ(0, result.json["engine"]);
  EXPECT_EQ(0, waitpid(engine, nullptr, WNOHANG));
  kill(engine, SIGKILL);
  waitpid(engine, nullptr, 0);
}

TEST_F(OnCopy, ARefusalComesBackWhole) {
  const Refusal refusal = refusalOf([]() -> Json { throw Refusal(ctl::kRefused, "no", 12); });
  EXPECT_EQ(ctl::kRefused, refusal.exit());
  EXPECT_STREQ("no", refusal.what());
  EXPECT_EQ(12, refusal.code());
}

TEST_F(OnCopy, AProcessThatDiesIsAnError) {
  const Refusal refusal = refusalOf([]() -> Json { _exit(3); });
  EXPECT_EQ(ctl::kSystem, refusal.exit());
  EXPECT_STREQ("the work on a copy of the appliance ended with status 3", refusal.what());
}

class FileImage : public StoreTest {
 protected:
  ctl::Session session_;
};

TEST_F(FileImage, HoldsTheDefaultsAndWhatTheFileSays) {
  writeFile("/etc/config/factory.defaults", "LAN_RATE 1000000\nINTERNET_RATE 3000000\nPRODUCT_ID 5\n");
  writeFile("/tmp/other.conf", "LAN_RATE 2000000\nROUTE 10.0.0.0 255.0.0.0 1.2.3.4 3\n");
  const Image image = ctl::fileImage(session_, "/tmp/other.conf");
  EXPECT_EQ(2000000u, image->config.lanLinkRate);
  EXPECT_EQ(3000000u, image->config.wanLinkRate);
  EXPECT_EQ(256000u, image->config.minRate);
  EXPECT_EQ(quad("10.0.0.0"), image->routes.slot[image->routes.head].destination);
}

TEST_F(FileImage, OfTheFileThatWasJustSavedEqualsTheStore) {
  unlink("/etc/config/factory.defaults");
  shm->config.ipv6Support = SHM_ON;
  FilterRule rule = {};
  rule.ipVersion = SHM_FAMILY_IPV6;
  rule.ruleAction = SHM_RULE_ACTIVE;
  rule.target = SHM_TARGET_ACCELERATE;
  ASSERT_EQ(0, addRule(0, &rule, 0, 0));
  ASSERT_EQ(0, write_shared_memory());
  const ctl::Difference difference = ctl::compare(*shm, *ctl::savedImage(session_));
  for (const ctl::SettingChange& change : difference.changes) EXPECT_NE("rules", change.section);
}

TEST_F(FileImage, OfAFileThatIsNotThereIsRefused) {
  try {
    ctl::fileImage(session_, "/tmp/missing.conf");
    FAIL();
  } catch (const Refusal& refusal) {
    EXPECT_EQ(ctl::kSystem, refusal.exit());
    EXPECT_STREQ("/tmp/missing.conf: No such file or directory", refusal.what());
  }
}

}  // namespace
}  // namespace kestrove::testing
