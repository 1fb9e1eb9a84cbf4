// SPDX-License-Identifier: Apache-2.0
// Stands in for the appliance's programs: writes down how it was called, then gives the answer prepared for it, runs
// the real program behind it, or simply succeeds.

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <string>

#include "sandbox/records.h"
#include "sys/descriptor.h"

using namespace kestrove;
using namespace kestrove::sandbox;

namespace {

constexpr int kCannotRun = 126;

// The file that runs: the first argument may say anything, and for a script it is the script's.
std::string programName() {
  char path[PATH_MAX];
  ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  std::string file(path, length > 0 ? static_cast<size_t>(length) : 0);
  return file.substr(file.rfind('/') + 1);
}

bool readWhole(const std::string& path, std::string& text) {
  sys::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file) return false;
  char block[65536];
  for (ssize_t count = 0; (count = read(file.get(), block, sizeof block)) > 0;) {
    text.append(block, static_cast<size_t>(count));
  }
  return true;
}

void appendCounted(std::string& record, const std::string& bytes) {
  record += std::to_string(bytes.size()) + ':' + bytes + '\n';
}

// Only what lies in a file: a pipe or a terminal might never end, and the real program wants its own input whole.
bool readInput(std::string& text) {
  struct stat status;
  if (fstat(STDIN_FILENO, &status) == -1 || !S_ISREG(status.st_mode)) return false;
  char block[65536];
  off_t at = lseek(STDIN_FILENO, 0, SEEK_CUR);
  for (ssize_t count = 0; (count = pread(STDIN_FILENO, block, sizeof block, at)) > 0; at += count) {
    text.append(block, static_cast<size_t>(count));
  }
  return true;
}

// One write: records of programs that run at the same time never mix.
void note(const std::string& record) {
  sys::Descriptor log(open(kCommandLog, O_WRONLY | O_APPEND | O_CLOEXEC));
  if (log) (void)!write(log.get(), record.data(), record.size());
}

void noteProgram(int argc, char** argv) {
  std::string input;
  bool given = readInput(input);
  std::string record = std::string(kProgramKind) + ' ' + std::to_string(argc) + ' ' + (given ? "1\n" : "0\n");
  for (int i = 0; i < argc; ++i) appendCounted(record, argv[i]);
  if (given) appendCounted(record, input);
  note(record);
}

// The shell is noted by its command line alone; scripts and interactive shells are not the appliance's doing.
void noteShell(int argc, char** argv) {
  if (argc < 3 || strcmp(argv[1], "-c") != 0) return;
  int line = strcmp(argv[2], "--") == 0 && argc > 3 ? 3 : 2;
  std::string record = std::string(kShellKind) + " 1 0\n";
  appendCounted(record, argv[line]);
  note(record);
}

bool setsClock(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (strncmp(argv[i], "--set", 5) == 0) return true;
    if (argv[i][0] == '-' && argv[i][1] != '-' && strchr(argv[i], 's')) return true;
  }
  return false;
}

void pause(const std::string& seconds) {
  double length = strtod(seconds.c_str(), nullptr);
  timespec time = {static_cast<time_t>(length), 0};
  time.tv_nsec = static_cast<long>((length - static_cast<double>(time.tv_sec)) * 1e9);
  while (nanosleep(&time, &time) == -1 && errno == EINTR) continue;
}

// The answer prepared for this program, if there is one, ends the run.
void answer(const std::string& name) {
  const std::string base = std::string(kAnswers) + "/" + name;
  std::string output, status, seconds;
  if (readWhole(base + ".sleep", seconds)) pause(seconds);
  bool prints = readWhole(base + ".out", output);
  bool ends = readWhole(base + ".status", status);
  if (!prints && !ends) return;
  (void)!write(STDOUT_FILENO, output.data(), output.size());
  exit(atoi(status.c_str()));
}

// Gives back only when there is no real program to run.
void runReal(const std::string& name, char** argv) {
  const std::string real = std::string(kRealPrograms) + "/" + name;
  if (access(real.c_str(), F_OK) == -1) return;
  execv(real.c_str(), argv);
  fprintf(stderr, "%s: %s\n", real.c_str(), strerror(errno));
  exit(kCannotRun);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string name = programName();
  if (name == "sh") {
    noteShell(argc, argv);
    runReal(name, argv);
    return kCannotRun;
  }
  noteProgram(argc, argv);
  answer(name);
  if (name != "date" || !setsClock(argc, argv)) runReal(name, argv);
  return 0;
}
