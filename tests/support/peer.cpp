// SPDX-License-Identifier: Apache-2.0
#include "tests/support/peer.h"
#include "tests/support/files.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

namespace kestrove::testing {
namespace {

int waitFor(pid_t pid) {
  int status = 0;
  if (waitpid(pid, &status, 0) != pid || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

}  // namespace

void Peer::Line::say(char word) const {
  if (write(out_, &word, 1) != 1) perror("peer");
}

char Peer::Line::hear() const {
  char word = 0;
  return read(in_, &word, 1) == 1 ? word : '\0';
}

bool Peer::Line::silentFor(int milliseconds) const {
  pollfd request = {in_, POLLIN, 0};
  return poll(&request, 1, milliseconds) == 0;
}

Peer::Peer(const std::function<int(const Line&)>& body) : line_(-1, -1), pid_(-1), in_(-1), out_(-1) {
  int down[2];
  int up[2];
  if (pipe2(down, O_CLOEXEC) != 0 || pipe2(up, O_CLOEXEC) != 0) return;
  pid_ = fork();
  if (pid_ == 0) {
    close(down[1]);
    close(up[0]);
    _exit(body(Line(down[0], up[1])));
  }
  close(down[0]);
  close(up[1]);
  in_ = up[0];
  out_ = down[1];
  line_ = Line(in_, out_);
}

Peer::~Peer() {
  if (pid_ > 0) kill();
  close(in_);
  close(out_);
}

int Peer::join() {
  int result = waitFor(pid_);
  pid_ = -1;
  return result;
}

void Peer::kill() {
  ::kill(pid_, SIGKILL);
  join();
}

int inOtherProcess(const std::function<int()>& body) {
  pid_t pid = fork();
  if (pid == 0) _exit(body());
  return waitFor(pid);
}

bool fileLockHeld() {
  return inOtherProcess([] {
           struct flock request = {};
           request.l_type = F_WRLCK;
           int fd = open(kLockFile, O_RDWR | O_CLOEXEC);
           if (fd == -1 || fcntl(fd, F_GETLK, &request) == -1) return 2;
           return request.l_type == F_UNLCK ? 0 : 1;
         }) == 1;
}

int lockDescriptor() {
  struct stat file, open;
  if (stat(kLockFile, &file) != 0) return -1;
  for (int fd = 3; fd < 64; ++fd) {
    if (fstat(fd, &open) == 0 && open.st_dev == file.st_dev && open.st_ino == file.st_ino) return fd;
  }
  return -1;
}

}  // namespace kestrove::testing
