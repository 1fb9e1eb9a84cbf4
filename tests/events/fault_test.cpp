// SPDX-License-Identifier: Apache-2.0
// Logging when system calls fail, and when the process is killed at one: what the image is then.
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/fault.h"
#include "tests/support/files.h"
#include "tests/support/peer.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr size_t kImage = 360460;

std::string ring() { return std::string(reinterpret_cast<char*>(&shm->eventLog), sizeof(EventLog)); }

class EventFault : public StoreTest {
 protected:
  void prepare() {
    shm->eventLog = {};
    ASSERT_EQ(0, logEvent(2, 0, "--"));
    before = ring();
  }
  // The file is whole: the image of before the call or of after it.
  void expectWholeImage() {
    const std::string file = readFile(kEventFile);
    EXPECT_EQ(kImage, file.size());
    EXPECT_TRUE(file == before || file == ring()) << "neither the old image nor the new one";
  }
  std::string before;
};

int logOne() { return logEvent(24, 3, "x"); }

TEST_F(EventFault, AKillAtAnyCallLeavesAWholeImageAndAFreeLock) {
  sweepFaults(
      {kKilled}, [this] { prepare(); }, logOne,
      [this](const Strike&, const Aftermath&) {
        expectWholeImage();
        EXPECT_FALSE(fileLockHeld());
        EXPECT_EQ(0, logOne()) << "the next process cannot log";
        EXPECT_TRUE(readFile(kEventFile) == ring());
      });
}

TEST_F(EventFault, AnErrorAtAnyCallGivesACleanResult) {
  sweepFaults(
      {EIO, ENOSPC, EMFILE, EINTR}, [this] { prepare(); }, logOne,
      [this](const Strike&, const Aftermath& after) {
        ASSERT_TRUE(after.finished);
        EXPECT_LE(after.leaked, 0);
        expectWholeImage();
        EXPECT_FALSE(fileLockHeld());
        if (after.result == 0) {
          EXPECT_TRUE(readFile(kEventFile) == ring()) << "a success that is not on disk";
        } else {
          EXPECT_EQ(-1, after.result);
          EXPECT_TRUE(after.code == SHM_ESYSTEM || after.code == SHM_EOPEN || after.code == SHM_EIO) << after.code;
        }
      });
}

TEST_F(EventFault, AnInterruptedFileCallIsMadeAgain) {
  sweepFaults(
      {EINTR}, [this] { prepare(); },
      [] { return write_event_log(kEventFile, &shm->eventLog) == 0 || shm_errno == SHM_EIO ? 0 : 1; },
      [](const Strike&, const Aftermath& after) { EXPECT_EQ(0, after.result); });
}

// Writes two images in turn until it is killed.
[[noreturn]] void writeForEver(const std::string& one, const std::string& other) {
  for (;;) {
    if (write_event_log(kEventFile, one.data()) != 0 || write_event_log(kEventFile, other.data()) != 0) _exit(1);
  }
}

// The kernel copies from front to back, so a writer killed inside the one write leaves a front of one image and a back
// of the other: whole in size, and every byte of one of the two.
TEST_F(EventFault, AWriterKilledAtAnyMomentLeavesAtMostOneSeam) {
  const std::string one(kImage, '1'), other(kImage, '2');
  for (int round = 0; round < 200; ++round) {
    ASSERT_EQ(0, write_event_log(kEventFile, one.data()));  // no seam of the round before
    pid_t writer = fork();
    if (writer == 0) writeForEver(one, other);
    usleep(static_cast<useconds_t>(200 + round * 7));
    kill(writer, SIGKILL);
    int status;
    waitpid(writer, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    const std::string file = readFile(kEventFile);
    ASSERT_EQ(kImage, file.size());
    size_t seam = file.find_first_not_of(file[0]);
    char second = file[0] == '1' ? '2' : '1';
    EXPECT_TRUE(seam == file.npos || file.find_first_not_of(second, seam) == file.npos) << "more than one seam";
  }
}

}  // namespace
}  // namespace kestrove::testing
