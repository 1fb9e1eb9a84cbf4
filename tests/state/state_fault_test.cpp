// SPDX-License-Identifier: Apache-2.0
// Saving and restoring with system calls struck: honest results, nothing left open, the lock free afterwards.

#include <errno.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/state/state_fixture.h"
#include "tests/support/fault.h"
#include "tests/support/thinning.h"

namespace kestrove::testing {
namespace {

constexpr char kMembers[] =
    "test \"$(unzip -Z1 /usr/local/apache2/htdocs/config*.zip 2> /dev/null | grep -c configSaved)\" = 4";

bool wholeArchive() { return system(kMembers) == 0; }

class StateFaultTest : public StateTest {
 protected:
  static int save() { return saveSystemState(0, "--"); }
  static int load() { return loadSystemState(0, "--"); }

  static void changeFiles() {
    for (const char* path : {kConfigFile, kAgentFile, kAgentStateFile}) writeFile(path, "changed\n");
  }
  static bool restored() {
    return readFile(kConfigFile) == "the configuration\n" && readFile(kAgentFile) == "the agent\n" &&
           readFile(kAgentStateFile) == "the agent's state\n";
  }
};

TEST_F(StateFaultTest, SavingKilledAtAnyCall) {
  sweepFaults(
      {kKilled}, [] {}, save,
      [](const Strike&, const Aftermath&) {
        expectLockFree();
        EXPECT_EQ("the configuration\n", readFile(kConfigFile));
      },
      kThinning);
  EXPECT_EQ(0, save());
  EXPECT_TRUE(wholeArchive());
}

// A wait that was struck leaves its command at work, which may still put files into the folder: until that has ended,
// the folder is emptied again.
void emptyStaging() {
  std::error_code failure;
  for (int tries = 0; tries < 500; ++tries) {
    std::filesystem::remove_all(kStaging, failure);
    if (!failure) return;
    usleep(10000);
  }
  FAIL() << failure.message();
}

void sweepSaves(int error) {
  sweepFaults(
      {error}, emptyStaging, [] { return saveSystemState(0, "--"); },
      [](const Strike&, const Aftermath& after) {
        ASSERT_TRUE(after.finished);
        EXPECT_LE(after.leaked, 0);
        expectLockFree();
      },
      kThinning);
}

TEST_F(StateFaultTest, SavingWithAFailingCall) { sweepSaves(EIO); }

TEST_F(StateFaultTest, SavingWithoutDescriptors) { sweepSaves(EMFILE); }

TEST_F(StateFaultTest, RestoringWithAFailingCall) {
  ASSERT_EQ(0, save());
  sweepFaults(
      {EIO}, [] { changeFiles(); }, load,
      [](const Strike&, const Aftermath& after) {
        ASSERT_TRUE(after.finished);
        EXPECT_LE(after.leaked, 0);
        EXPECT_TRUE(after.result != 0 || restored());
        expectLockFree();
      },
      kThinning);
  changeFiles();
  EXPECT_EQ(0, load());
  EXPECT_TRUE(restored());
}

}  // namespace
}  // namespace kestrove::testing
