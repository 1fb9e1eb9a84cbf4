// SPDX-License-Identifier: Apache-2.0
// The slots of the monitored tasks.
#include "tests/system/system_fixture.h"

namespace kestrove::testing {
namespace {

TEST_F(ProcessTest, TaskSlotsOneToSixAreReachable) {
  for (int task = 1; task <= 6; ++task) {
    EXPECT_EQ(0, shm_setTaskPid(task, 100 + task));
    EXPECT_EQ(100 + task, shm->taskPids[task]);
    EXPECT_EQ(100 + task, shm_getTaskPid(task));
  }
  shm->taskPids[0] = 55;
  uint32_t next = shm->sessionEngine.resetWord[0];
  for (int task : {INT32_MIN, -1, 0, 7, 60, INT32_MAX}) {
    EXPECT_FAILS_WITH(99, shm_setTaskPid(task, 1));  // no code is set
    EXPECT_FAILS_WITH(99, shm_getTaskPid(task));
  }
  EXPECT_EQ(55, shm->taskPids[0]);
  EXPECT_EQ(next, shm->sessionEngine.resetWord[0]);
  EXPECT_EQ(shm->taskPids, shm_getMonitoredTaskPointer());
  EXPECT_EQ(0, shm_lock_count);
}

}  // namespace
}  // namespace kestrove::testing
