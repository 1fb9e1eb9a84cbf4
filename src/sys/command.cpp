// SPDX-License-Identifier: Apache-2.0
#include "sys/command.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include "sys/plain.h"
#include "sys/probe.h"
#include "sys/search_path.h"

namespace kestrove::sys {
namespace {

constexpr mode_t kStreamMode = 0774;
constexpr size_t kLongestLine = 2048;

void duplicate(int from, int to, const char* name) {
  if (dup2(from, to) == -1) syslog(LOG_ERR, "runCommand: Error duplicating %s: %m", name);
}

// A caller without standard streams gets one of their numbers from open: that one is the stream and stays.
void closeExtra(int fd) {
  if (fd > STDERR_FILENO) close(fd);
}

// A failure is logged and the child goes on with the stream it has; the duplication is tried all the same.
int openStream(const char* path, int flags, const char* name) {
  int fd = open(path, flags | O_CREAT, kStreamMode);
  if (fd == -1) syslog(LOG_ERR, "runCommand: Error opening file for %s: %m", name);
  return fd;
}

void redirectInput(const char* path) {
  int fd = openStream(path, O_RDONLY, "stdin");
  duplicate(fd, STDIN_FILENO, "stdin");
  closeExtra(fd);
}

void redirectOutput(const char* path) {
  int fd = openStream(path, O_WRONLY, "stdout");
  duplicate(fd, STDOUT_FILENO, "stdout");
  duplicate(fd, STDERR_FILENO, "stderr");
  closeExtra(fd);
}

[[noreturn]] void becomeProgram(char* const argv[], const char* inputPath, const char* outputPath) {
  if (inputPath) redirectInput(inputPath);
  if (outputPath) redirectOutput(outputPath);
  TrustedSearchPath path;
  execvp(argv[0], argv);
  syslog(LOG_ERR, "runCommand: Error starting task \"%s\": %m", argv[0]);
  _exit(0);  // a program that cannot be started looks like one that succeeded: kept on purpose
}

int exitStatus(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) == -1) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool raiseUser(const char* caller) {
  if (setuid(0) == 0) return true;
  syslog(LOG_ERR, "%s: Error in set UID: %m", caller);
  return false;
}

bool append(char*& position, const char* end, std::string_view text) {
  if (static_cast<size_t>(end - position) <= text.size()) return false;
  memcpy(position, text.data(), text.size());
  position += text.size();
  return true;
}

bool refuse(const char* format, const char* reason) {
  syslog(LOG_ERR, "command refused, %s: %s", reason, format);
  return false;
}

int awaitProgram(char* const argv[], const char* inputPath, const char* outputPath) {
  pid_t child = fork();
  if (child == -1) {
    syslog(LOG_ERR, "runCommand: Error forking process: %m");
    return -1;
  }
  if (child == 0) becomeProgram(argv, inputPath, outputPath);
  return exitStatus(child);
}

}  // namespace

int runVector(char* const argv[], const char* inputPath, const char* outputPath) {
  if (!raiseUser("runCommand")) return -1;
  KESTROVE_PROBE1(command_begin, argv[0]);
  int status = awaitProgram(argv, inputPath, outputPath);
  KESTROVE_PROBE1(command_end, status);
  return status;
}

int runShell(const char* line, const char* caller) { return raiseUser(caller) ? runShellAsCaller(line) : -1; }

int runShellAsCaller(const char* line) {
  TrustedSearchPath path;
  KESTROVE_PROBE1(command_begin, line);
  int status = system(line);
  KESTROVE_PROBE1(command_end, status);
  return status;
}

bool Word::plain() const {
  switch (kind_) {
    case Kind::kInterface: return plainInterface(text_);
    case Kind::kName: return plainName(text_);
    case Kind::kAddress: return plainAddress(text_);
    case Kind::kPath: return plainPath(text_);
    case Kind::kPid: return plainPid(text_);
    case Kind::kFixed:
    case Kind::kNumber: return true;
  }
  return false;
}

bool Word::appendTo(char*& position, const char* end) const {
  if (kind_ != Kind::kNumber) return append(position, end, text_);
  char digits[24];
  int length = snprintf(digits, sizeof digits, "%lld", value_);
  return append(position, end, {digits, static_cast<size_t>(length)});
}

bool formatLine(char* line, size_t size, const char* format, std::initializer_list<Word> words) {
  char* position = line;
  const char* end = line + size;
  const Word* word = words.begin();
  for (const char* c = format; *c; ++c) {
    if (*c != '%') {
      if (!append(position, end, {c, 1})) return refuse(format, "too long");
      continue;
    }
    ++c;  // the letter of the conversion: the word knows its kind
    if (word == words.end() || !word->plain()) return refuse(format, "not plain");
    if (!word++->appendTo(position, end)) return refuse(format, "too long");
  }
  *position = '\0';
  return true;
}

int runLine(const char* format, std::initializer_list<Word> words) {
  char line[kLongestLine];
  return formatLine(line, sizeof line, format, words) ? runShell(line) : kRefusedLine;
}

int runLineAsCaller(const char* format, std::initializer_list<Word> words) {
  char line[kLongestLine];
  return formatLine(line, sizeof line, format, words) ? runShellAsCaller(line) : kRefusedLine;
}

}  // namespace kestrove::sys
