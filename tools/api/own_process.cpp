// SPDX-License-Identifier: Apache-2.0
#include "tools/api/own_process.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <vector>

#include "tools/common/lock_wait.h"
#include "tools/common/write_whole.h"

namespace api {
namespace {

Json asJson(const Reply& reply) {
  Json headers = Json::array();
  for (const auto& [name, value] : reply.headers) headers.push_back({name, value});
  return {{"status", reply.status}, {"headers", headers}, {"file", reply.file}};
}

Reply fromText(const std::string& text) {
  const size_t end = text.find('\n');
  const Json head = Json::parse(text.substr(0, end), nullptr, false);
  Reply reply = {.status = head.value("status", 500), .body = text.substr(end + 1), .headers = {}};
  for (const Json& pair : head["headers"])
    reply.headers.emplace_back(pair[0].get<std::string>(), pair[1].get<std::string>());
  reply.file = head.value("file", "");
  return reply;
}

// Connections, which would stay open as long as the longest of these processes; and what waits for them.
bool isOfTheServer(int fd) {
  struct stat facts;
  if (fstat(fd, &facts) != 0) return false;
  return S_ISSOCK(facts.st_mode) || (facts.st_mode & S_IFMT) == 0;
}

void leaveConnections() {
  closelog();
  std::vector<int> found;
  {
    std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("/proc/self/fd"), closedir);
    while (const dirent* entry = folder ? readdir(folder.get()) : nullptr) found.push_back(atoi(entry->d_name));
  }
  for (const int fd : found) {
    if (fd > STDERR_FILENO && isOfTheServer(fd)) close(fd);
  }
}

// The change is made to its end, whatever becomes of who asked for it.
[[noreturn]] void live(int out, const std::function<Reply()>& work) {
  setsid();
  for (int number : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) signal(number, SIG_DFL);
  signal(SIGPIPE, SIG_IGN);
  leaveConnections();
  tools::limitWaits(kPatience);
  const Reply reply = work();
  const bool said = tools::writeWhole(out, asJson(reply).dump() + "\n" + reply.body);
  fflush(nullptr);
  _exit(said ? 0 : 1);
}

}  // namespace

OwnProcess::OwnProcess(const std::function<Reply()>& work) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) throw ctl::systemRefusal("a pipe", errno);
  out_ = kestrove::sys::Descriptor(ends[0]);
  const kestrove::sys::Descriptor in(ends[1]);
  fcntl(in.get(), F_SETFL, 0);
  fflush(nullptr);
  child_ = fork();
  if (child_ == -1) throw ctl::systemRefusal("a new process", errno);
  if (child_ == 0) live(in.get(), work);
}

OwnProcess::OwnProcess(OwnProcess&& other) noexcept
    : child_(other.child_), out_(std::move(other.out_)), text_(std::move(other.text_)) {
  other.child_ = -1;
}

// A worker hears the end of each of its own; those that are left when it ends itself end by themselves, and are init's.
OwnProcess::~OwnProcess() = default;

bool OwnProcess::take() {
  char buffer[65536];
  for (;;) {
    const ssize_t length = read(out_.get(), buffer, sizeof buffer);
    if (length == -1 && errno == EINTR) continue;
    if (length == -1) return errno != EAGAIN;
    if (length == 0) return true;
    text_.append(buffer, static_cast<size_t>(length));
  }
}

Reply OwnProcess::reply() {
  int status = 0;
  while (waitpid(child_, &status, 0) == -1 && errno == EINTR) continue;
  child_ = -1;
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0 && text_.find('\n') != std::string::npos) return fromText(text_);
  return errorReply(
      500, {ctl::kSystem, WIFSIGNALED(status) ? "the command was ended by signal " + std::to_string(WTERMSIG(status))
                                              : "the command ended without a reply"});
}

Reply inOwnProcess(const std::function<Reply()>& work) {
  OwnProcess process(work);
  while (!process.take()) {
    struct pollfd end = {process.descriptor(), POLLIN, 0};
    poll(&end, 1, -1);
  }
  return process.reply();
}

}  // namespace api
