// SPDX-License-Identifier: Apache-2.0
#include "tests/support/lock_watch.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr char kQuestion[] = "/tmp/lock-watch.question";
constexpr char kAnswer[] = "/tmp/lock-watch.answer";
constexpr char kSeen[] = "/tmp/lock-watch.seen";
constexpr char kProgram[] = "/tmp/lock-watch.program";

// Each program asks by its name and goes on when it has an answer.
int answerFor(const Peer::Line&) {
  for (;;) {
    std::string name;
    std::ifstream question(kQuestion);
    std::getline(question, name);
    question.close();
    std::ofstream(kSeen, std::ios::app) << name << (fileLockHeld() ? " held\n" : " free\n");
    std::ofstream(kAnswer) << "seen\n";
  }
}

}  // namespace

LockWatch::LockWatch() : peer_((mkfifo(kQuestion, 0600), mkfifo(kAnswer, 0600), answerFor)) {
  writeFile(kProgram, "#!/bin/sh\necho \"${0##*/}\" > " + std::string(kQuestion) + "\nread word < " + kAnswer + "\n");
  chmod(kProgram, 0755);
}

LockWatch::~LockWatch() {
  for (const char* path : {kQuestion, kAnswer, kSeen, kProgram}) unlink(path);
}

void LockWatch::instead(const std::string& path) {
  ASSERT_EQ(0, mount(kProgram, path.c_str(), nullptr, MS_BIND, nullptr)) << path;
}

std::vector<std::string> LockWatch::seen() const {
  std::vector<std::string> lines;
  std::ifstream file(kSeen);
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

}  // namespace kestrove::testing
