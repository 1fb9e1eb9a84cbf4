// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/deny.h"
#include "tests/support/peer.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

int run(std::initializer_list<const char*> words, const char* input = "/dev/null", const char* output = "/dev/null") {
  std::vector<char*> argv;
  for (const char* word : words) argv.push_back(const_cast<char*>(word));
  argv.push_back(nullptr);
  return runCommand(argv.data(), input, output);
}

bool logged(const std::string& line) {
  for (const std::string& found : syslogLines()) {
    if (found == line) return true;
  }
  ADD_FAILURE() << "not logged: " << line;
  return false;
}

TEST(Launch, TheExitStatusIsTheResult) {
  for (int status : {0, 1, 7, 255}) {
    EXPECT_EQ(status, run({"/bin/sh", "-c", ("exit " + std::to_string(status)).c_str()}));
  }
}

TEST(Launch, AProgramThatCannotBeStartedLooksLikeOneThatSucceeded) {
  clearSyslog();
  EXPECT_EQ(0, run({"/no/such/program", "x"}));
  logged("err: runCommand: Error starting task \"/no/such/program\": No such file or directory");
  EXPECT_EQ(0, run({"/etc"}));
  logged("err: runCommand: Error starting task \"/etc\": Permission denied");
}

TEST(Launch, AKilledProgramFails) {
  EXPECT_EQ(-1, run({"/bin/sh", "-c", "kill -9 $$"}));
  EXPECT_EQ(-1, run({"/bin/sh", "-c", "kill -s SEGV $$"}));
}

TEST(Launch, ArgumentsArriveAsTheyAre) {
  EXPECT_EQ(0, run({"printf", "%s|", "a b", "", "`id`", "$HOME", "*"}, "/dev/null", "/tmp/out"));
  EXPECT_EQ("a b||`id`|$HOME|*|", readFile("/tmp/out"));
}

TEST(Launch, StreamsGoThroughTheFiles) {
  writeFile("/tmp/in", "from the file\n");
  EXPECT_EQ(3, run({"/bin/sh", "-c", "cat; echo to stderr >&2; exit 3"}, "/tmp/in", "/tmp/out"));
  EXPECT_EQ("from the file\nto stderr\n", readFile("/tmp/out"));
}

TEST(Launch, AnOutputFileIsNeitherCutNorAppended) {
  writeFile("/tmp/out", "0123456789");
  EXPECT_EQ(0, run({"printf", "abc"}, "/dev/null", "/tmp/out"));
  EXPECT_EQ("abc3456789", readFile("/tmp/out"));
}

TEST(Launch, MissingFilesAreCreated) {
  umask(0);
  EXPECT_EQ(0, run({"true"}, "/tmp/new-in", "/tmp/new-out"));
  for (const char* path : {"/tmp/new-in", "/tmp/new-out"}) {
    struct stat status = {};
    ASSERT_EQ(0, stat(path, &status)) << path;
    EXPECT_EQ(0774u, status.st_mode & 07777u) << path;
  }
}

TEST(Launch, StreamsThatCannotBeOpenedAreLoggedAndTheProgramRuns) {
  clearSyslog();
  EXPECT_EQ(5, run({"/bin/sh", "-c", "exit 5"}, "/no/in", "/no/out"));
  EXPECT_EQ((std::vector<std::string>{"err: runCommand: Error opening file for stdin: No such file or directory",
                                      "err: runCommand: Error duplicating stdin: Bad file descriptor",
                                      "err: runCommand: Error opening file for stdout: No such file or directory",
                                      "err: runCommand: Error duplicating stdout: Bad file descriptor",
                                      "err: runCommand: Error duplicating stderr: Bad file descriptor"}),
            syslogLines());
}

TEST(Launch, NoPathsLeaveTheStreams) {
  EXPECT_EQ(0, inOtherProcess([] {
              int fd = open("/tmp/inherited", O_RDWR | O_CREAT, 0600);
              dup2(fd, STDOUT_FILENO);
              return run({"printf", "here"}, nullptr, nullptr);
            }));
  EXPECT_EQ("here", readFile("/tmp/inherited"));
}

TEST(Launch, ACallerWithoutStandardStreamsGivesThemToTheProgram) {
  writeFile("/tmp/in", "text");
  EXPECT_EQ(0, inOtherProcess([] {
              for (int fd : {0, 1, 2}) close(fd);
              return run({"cat"}, "/tmp/in", "/tmp/out");
            }));
  EXPECT_EQ("text", readFile("/tmp/out"));
}

TEST(Launch, TheProgramInheritsNoneOfTheLibrarysDescriptors) {
  EXPECT_EQ(0, inOtherProcess([] {
              close_range(3, ~0u, 0);  // what this test was started with
              makeStore();
              return shm_lock() + run({"ls", "/proc/self/fd"}, "/dev/null", "/tmp/out");
            }));
  EXPECT_EQ("0\n1\n2\n3\n", readFile("/tmp/out"));  // 3 is the folder being listed
}

TEST(Launch, AShellLineGivesTheRawStatus) {
  EXPECT_EQ(0, callSystem("exit 0"));
  EXPECT_EQ(7 << 8, callSystem("exit 7"));
  EXPECT_EQ(127 << 8, callSystem("/no/such/program 2> /dev/null"));
  EXPECT_EQ(9, callSystem("kill -9 $$") & 0x7F);
}

TEST(Launch, TheLogPathOfTheSecondFormHasNoEffect) {
  std::string path = "/tmp/" + std::string(1100, 'p');
  for (const char* log : {static_cast<const char*>(nullptr), "/tmp/log", path.c_str()}) {
    for (int length : {INT32_MIN, -1, 0, 6, 1013, 1014, INT32_MAX}) {
      EXPECT_EQ(3 << 8, callSystem2("exit 3", length, log));
    }
  }
  EXPECT_FALSE(fileExists("/tmp/log"));
  std::string longLine = "exit 4 #" + std::string(5000, 'x');
  EXPECT_EQ(4 << 8, callSystem2(longLine.c_str(), 10, "/tmp/log"));
  for (const std::string& line : shellLines()) EXPECT_EQ(0u, line.find("exit ")) << line;
}

TEST(Launch, NothingToRunIsRefused) {
  char* empty[] = {nullptr};
  EXPECT_FAILS_WITH(SHM_EINVAL, runCommand(nullptr, nullptr, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, runCommand(empty, nullptr, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, callSystem(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, callSystem2(nullptr, 0, nullptr));
}

TEST(Launch, ARefusedUserIdRunsNothing) {
  clearSyslog();
  EXPECT_EQ(0, inOtherProcess([] {
              denySystemCall(kSetUid);
              int bad = run({"touch", "/tmp/ran"}) != -1;
              bad |= callSystem("touch /tmp/ran") != -1;
              bad |= callSystem2("touch /tmp/ran", 14, "/tmp/log") != -1;
              return bad;
            }));
  EXPECT_FALSE(fileExists("/tmp/ran"));
  EXPECT_EQ((std::vector<std::string>{"err: runCommand: Error in set UID: Operation not permitted",
                                      "err: callSystem: Error in set UID: Operation not permitted",
                                      "err: callSystem: Error in set UID: Operation not permitted"}),
            syslogLines());
}

TEST(Launch, AProcessThatCannotBeMadeFails) {
  clearSyslog();
  EXPECT_EQ(0, inOtherProcess([] {
              denySystemCall(kFork);
              return run({"true"}) != -1;
            }));
  logged("err: runCommand: Error forking process: Operation not permitted");
}

}  // namespace
}  // namespace kestrove::testing
