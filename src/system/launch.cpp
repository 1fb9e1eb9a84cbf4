// SPDX-License-Identifier: Apache-2.0
// The exported ways to run a program.
#include <stdio.h>
#include <string.h>

#include "kestrove/system.h"
#include "store/fail.h"
#include "sys/command.h"

namespace kestrove {
namespace {

constexpr int kLogLineSize = 1024;
constexpr int kLogLineRoom = 1014;  // without "echo ", " >> " and the terminator

// The log line is composed and never run: kept on purpose, nothing is written to the log file.
void composeLogLine(const char* command, int length, const char* logPath) {
  if (length >= kLogLineRoom - static_cast<int>(strnlen(logPath, kLogLineRoom))) return;
  char line[kLogLineSize];
  [[maybe_unused]] int written = snprintf(line, sizeof line, "echo %s >> %s", command, logPath);
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int runCommand(char* const argv[], const char* inputPath, const char* outputPath) {
  if (!argv || !argv[0]) return fail(SHM_EINVAL);
  return sys::runVector(argv, inputPath, outputPath);
}

int callSystem(const char* command) { return command ? sys::runShell(command) : fail(SHM_EINVAL); }

int callSystem2(const char* command, int length, const char* logPath) {
  if (!command) return fail(SHM_EINVAL);
  if (logPath) composeLogLine(command, length, logPath);
  return callSystem(command);
}
