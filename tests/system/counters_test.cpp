// SPDX-License-Identifier: Apache-2.0
// Engine starts and reboots that are counted.
#include <sys/stat.h>
#include <unistd.h>

#include "tests/system/system_fixture.h"

namespace kestrove::testing {
namespace {

TEST_F(ProcessTest, TheFifthEngineStartFails) {
  shm->config.kestroveRestartCount = 9;
  EXPECT_EQ(0, resetKestroveRestartCounter());
  for (int i = 0; i < 4; ++i) EXPECT_EQ(0, incrKestroveRestartCounter());
  for (uint32_t count : {5u, 6u, 7u}) {
    EXPECT_FAILS_WITH(SHM_ESTARTS, incrKestroveRestartCounter());
    EXPECT_EQ(count, shm->config.kestroveRestartCount);
  }
  EXPECT_EQ(0, resetKestroveRestartCounter());
  EXPECT_EQ(0, incrKestroveRestartCounter());
  EXPECT_FALSE(fileExists(kConfigFile));
}

TEST_F(ProcessTest, TheFifthRebootFailsAndIsNotSaved) {
  EXPECT_EQ(0, resetKestroveRebootCounter());
  EXPECT_TRUE(fileExists(kConfigFile));
  for (uint32_t count = 1; count <= 4; ++count) {
    unlink(kConfigFile);
    EXPECT_EQ(0, incrKestroveRebootCounter());
    EXPECT_EQ(count, shm->config.kestroveRebootCount);
    EXPECT_TRUE(fileExists(kConfigFile));
    EXPECT_EQ(0, checkKestroveRebootCounter());
  }
  unlink(kConfigFile);
  EXPECT_FAILS_WITH(SHM_EREBOOTS, incrKestroveRebootCounter());
  EXPECT_EQ(5u, shm->config.kestroveRebootCount);
  EXPECT_FAILS_WITH(SHM_EREBOOTS, checkKestroveRebootCounter());
  EXPECT_FALSE(fileExists(kConfigFile));
}

TEST_F(ProcessTest, AFailedSaveFailsTheRebootCounter) {
  ASSERT_EQ(0, mkdir(kConfigFile, 0755));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, incrKestroveRebootCounter());
  EXPECT_EQ(1u, shm->config.kestroveRebootCount);
  EXPECT_FAILS_WITH(SHM_ESYSTEM, resetKestroveRebootCounter());
  EXPECT_EQ(0u, shm->config.kestroveRebootCount);
  EXPECT_EQ(0, shm_lock_count);
}

}  // namespace
}  // namespace kestrove::testing
