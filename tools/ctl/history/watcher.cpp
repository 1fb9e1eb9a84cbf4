// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/watcher.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/timerfd.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "tools/common/program.h"
#include "tools/ctl/history/finish.h"

namespace ctl {
namespace {

using kestrove::sys::Descriptor;

constexpr unsigned kPauseSeconds = 1;
constexpr double kPatience = 600;  // for a store that others have locked
constexpr int64_t kSecond = 1000000000;

// Wakes up when a file of the folder comes or goes, or when the machine's own clock is there.
class Alarm {
 public:
  explicit Alarm(const Home& home)
      : changes_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)), clock_(timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC)) {
    const std::string folder = "/proc/self/fd/" + std::to_string(home.folder());
    const uint32_t kinds = IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM;
    watching_ = changes_ && inotify_add_watch(changes_.get(), folder.c_str(), kinds) != -1;
  }

  // Where the folder cannot be watched it is looked at every second.
  void wait(int64_t nanoseconds) {
    struct itimerspec when = {};
    when.it_value = {.tv_sec = static_cast<time_t>(nanoseconds / kSecond), .tv_nsec = long(nanoseconds % kSecond)};
    timerfd_settime(clock_.get(), 0, &when, nullptr);
    struct pollfd ends[] = {{clock_.get(), POLLIN, 0}, {changes_.get(), POLLIN, 0}};
    poll(ends, 2, watching_ ? -1 : 1000);
    char events[4096];
    while (watching_ && read(changes_.get(), events, sizeof events) > 0) {
    }
  }

 private:
  Descriptor changes_;
  Descriptor clock_;
  bool watching_ = false;
};

[[noreturn]] void become(const std::string& program, const std::string& id, int complaint) {
  setsid();
  if (fork() != 0) _exit(0);
  const int nothing = open("/dev/null", O_RDWR);
  for (int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, fd);
  if (chdir("/") == 0) {
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    execl(program.c_str(), "kestrovectl", "confirm-watch", id.c_str(), nullptr);
  }
  const int error = errno;
  [[maybe_unused]] const ssize_t said = write(complaint, &error, sizeof error);
  _exit(127);
}

void reap(pid_t child) {
  while (waitpid(child, nullptr, 0) == -1 && errno == EINTR) {
  }
}

// Whether there is nothing more to wait for; otherwise how long.
bool settled(const Session& session, const Home& home, const std::string& id, int64_t& left) {
  const HomeLock lock = HomeLock::take(home);  // a change that is being made has it
  const std::optional<Entry> entry = Journal(home).read();
  if (!entry || entry->id != id) return true;
  left = remaining(*entry, bootTimeNow());
  if (entry->stage == Stage::kWaiting && left > 0) return false;
  attachStore(session);
  finishEntry(session, home, *entry);
  return true;
}

}  // namespace

void startWatcher(const std::string& id) {
  const std::string program = tools::findProgram("kestrovectl", "../bin");
  int ends[2];
  if (program.empty() || pipe2(ends, O_CLOEXEC) != 0) throw Refusal(kSystem, "no watcher can be started");
  const Descriptor hear(ends[0]);
  Descriptor complain(ends[1]);
  const pid_t child = fork();
  if (child == 0) become(program, id, complain.get());
  int error = child == -1 ? errno : 0;
  complain.close();
  if (child > 0) reap(child);
  if (child > 0 && read(hear.get(), &error, sizeof error) <= 0) error = 0;
  if (error != 0) throw systemRefusal("the watcher cannot be started", error);
}

void watch(const Session& session, const std::string& id) {
  Session patient = session;
  patient.waitSeconds = kPatience;
  const std::optional<Home> home = Home::find();
  if (!home) return;
  Alarm alarm(*home);
  for (;;) {
    int64_t left = kPauseSeconds * kSecond;
    try {
      if (settled(patient, *home, id, left)) return;
    } catch (const Refusal& refusal) {
      syslog(LOG_ERR, "kestrovectl: a change is not taken back yet: %s", refusal.what());
      sleep(kPauseSeconds);
    }
    alarm.wait(left);
  }
}

bool awaitOutcome(const std::string& id) {
  const std::optional<Home> home = Home::find();
  if (!home) return false;
  Alarm alarm(*home);
  for (;;) {
    const std::optional<Entry> entry = Journal(*home).read();
    if (!entry || entry->id != id) return Journal(*home).outcomeOf(id) == "confirmed";
    alarm.wait(kPauseSeconds * kSecond);
  }
}

}  // namespace ctl
