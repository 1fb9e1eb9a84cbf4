// SPDX-License-Identifier: Apache-2.0
// Saves that are cut short: the file is afterwards the old one or the new one, whole.
#include <dirent.h>
#include <errno.h>
#include <string.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include "tests/support/fault.h"
#include "tests/support/files.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr char kFolder[] = "/etc/config";
constexpr uint32_t kOldRate = 111111;
constexpr uint32_t kNewRate = 222222;

int filesIn(const char* folder) {
  DIR* directory = opendir(folder);
  int count = 0;
  while (const dirent* entry = readdir(directory)) count += strcmp(entry->d_name, ".") && strcmp(entry->d_name, "..");
  closedir(directory);
  return count;
}

std::string savedWith(uint32_t rate) {
  shm->config.lanLinkRate = rate;
  EXPECT_EQ(0, save_shared_memory());
  return readFile(kConfigFile);
}

class SaveFaultTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    for (int i = 0; i < 1000; ++i) shm->filterTable.rule[i].ipVersion = 4;
    shm->filterTable.ruleCount = 1000;  // more than one buffer of text
    new_ = savedWith(kNewRate);
    old_ = savedWith(kOldRate);
    ASSERT_NE(old_, new_);
  }

  void prepare() {
    savedWith(kOldRate);
    shm->config.lanLinkRate = kNewRate;
    shm_errno = 0;
  }

  void checkFileAndLock() {
    std::string file = readFile(kConfigFile);
    EXPECT_TRUE(file == old_ || file == new_) << file.size() << " bytes";
    EXPECT_EQ(0, shm_lock());
    EXPECT_EQ(0, shm_unlock());
  }

  std::string old_;
  std::string new_;
};

TEST_F(SaveFaultTest, KilledAtAnyCallLeavesAWholeFileAndTheNextSaveCleansUp) {
  bool sawOld = false, sawNew = false;
  sweepFaults(
      {kKilled}, [this] { prepare(); }, save_shared_memory,
      [&](const Strike&, const Aftermath& after) {
        EXPECT_TRUE(WIFSIGNALED(after.status));
        checkFileAndLock();
        (readFile(kConfigFile) == old_ ? sawOld : sawNew) = true;
        EXPECT_EQ(new_, savedWith(kNewRate));
        EXPECT_EQ(1, filesIn(kFolder));
      });
  EXPECT_TRUE(sawOld);
  EXPECT_TRUE(sawNew);
}

TEST_F(SaveFaultTest, FailingCallLeavesAWholeFileNoDescriptorAndNoRubbish) {
  sweepFaults(
      {EIO, ENOSPC, EMFILE}, [this] { prepare(); }, save_shared_memory,
      [this](const Strike&, const Aftermath& after) {
        ASSERT_TRUE(after.finished);
        checkFileAndLock();
        EXPECT_LE(after.leaked, 0);
        EXPECT_TRUE(after.result == 0 || after.code == SHM_ESYSTEM || after.code == SHM_EIO) << after.code;
        EXPECT_EQ(after.systemCall == SYS_unlinkat ? 2 : 1, filesIn(kFolder));
        savedWith(kOldRate);  // clears up what could not be removed
        EXPECT_EQ(1, filesIn(kFolder));
      });
}

// The contents before the name, the name before the folder: only what is on the disk is put in place.
TEST_F(SaveFaultTest, ContentsAreOnTheDiskBeforeTheyAreInPlaceAndThenTheFolder) {
  std::vector<std::string> files;
  sweepFaults(
      {EIO}, [this] { prepare(); }, save_shared_memory,
      [&](const Strike&, const Aftermath& after) {
        if (after.systemCall != SYS_fsync) return;
        EXPECT_EQ(0, after.result);
        files.push_back(readFile(kConfigFile));
      });
  EXPECT_EQ((std::vector<std::string>{old_, new_}), files);
}

TEST_F(SaveFaultTest, InterruptedCallIsRepeatedOrTheOldFileStands) {
  sweepFaults(
      {EINTR}, [this] { prepare(); }, save_shared_memory,
      [this](const Strike&, const Aftermath& after) {
        ASSERT_TRUE(after.finished);
        checkFileAndLock();
        EXPECT_LE(after.leaked, 0);
      });
}

// A loading that is struck gives a clean result, puts the state back and leaves the lock to the next process.
TEST_F(SaveFaultTest, LoadingSurvivesFailingCalls) {
  auto fewRules = [this] {
    shm->filterTable.ruleCount = 5;
    savedWith(kOldRate);
  };
  sweepFaults(
      {EIO, ENOSPC, EMFILE, EINTR}, fewRules, [] { return load_shared_memory(kConfigFile); },
      [](const Strike&, const Aftermath& after) {
        ASSERT_TRUE(after.finished);
        EXPECT_TRUE(after.result == 0 || after.result == -1) << after.result;
        EXPECT_LE(after.leaked, 0);
        EXPECT_EQ(uint32_t(SHM_STATE_OPERATIONAL), shm->operationalState);
        EXPECT_EQ(0, shm_lock());
        EXPECT_EQ(0, shm_unlock());
      });
}

}  // namespace
}  // namespace kestrove::testing
