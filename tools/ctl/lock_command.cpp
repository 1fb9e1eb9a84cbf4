// SPDX-License-Identifier: Apache-2.0
// lock: who holds the store's lock.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <sstream>

#include "tools/common/lock_wait.h"
#include "tools/common/plain_text.h"
#include "tools/common/steady_clock.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/watch/lock_waiters.h"

namespace ctl {
namespace {

constexpr char kLockFile[] = "/var/lock/shm";
constexpr useconds_t kPause = 10000;

struct LockLine {
  double seconds = 0.2;
};

// Two digits behind the point.
Json rounded(double seconds) { return std::round(seconds * 100) / 100; }

tools::LockAnswer look() {
  tools::LockAnswer answer = tools::lookAtLock();
  const bool failed = answer.state == tools::LockState::kDenied || answer.state == tools::LockState::kFailed;
  if (failed) throw systemRefusal(kLockFile, answer.error);
  return answer;
}

bool sameHolder(const tools::LockAnswer& answer, int pid) {
  return answer.state == tools::LockState::kHeld && answer.holder.pid == pid;
}

// The system does not tell since when. What is known: how long it was looked at, and how old the holder is.
struct Watched {
  tools::LockHolder holder;
  double seconds = 0;
  bool released = false;
};

Watched watch(tools::LockHolder holder, double seconds) {
  const double start = tools::steadySeconds();
  for (;;) {
    const tools::LockAnswer answer = look();
    const double passed = tools::steadySeconds() - start;
    if (!sameHolder(answer, holder.pid)) return {holder, passed, true};
    holder = answer.holder;
    if (passed >= seconds) return {holder, passed, false};
    usleep(kPause);
  }
}

// Null where the process is gone or cannot be seen.
Json ageOf(int pid) {
  constexpr int kStartTime = 20;  // of the words behind the name
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string line;
  std::getline(file, line);
  const size_t behindName = line.rfind(") ");
  if (behindName == std::string::npos) return nullptr;
  std::istringstream words(line.substr(behindName + 2));
  std::string word;
  for (int i = 0; i < kStartTime; ++i) words >> word;
  double start = 0;
  double uptime = 0;
  if (!(words >> start) || !(std::ifstream("/proc/uptime") >> uptime)) return nullptr;
  return rounded(std::max(0.0, uptime - start / static_cast<double>(sysconf(_SC_CLK_TCK))));
}

Json waitingFor(int pid) {
  Json waiting = Json::array();
  for (const int waiter : waitersBehind(pid)) {
    waiting.push_back({{"pid", waiter}, {"program", tools::holderOf(waiter).name}});
  }
  return waiting;
}

Json holderJson(const Watched& watched) {
  const tools::LockHolder& holder = watched.holder;
  return {{"lock", kLockFile},
          {"held", true},
          {"pid", holder.pid == 0 ? Json() : Json(holder.pid)},
          {"program", holder.name.empty() ? Json() : Json(holder.name)},
          {"state", holder.stopped ? "stopped" : "running"},
          {"heldAtLeastSeconds", rounded(watched.seconds)},
          {"heldAtMostSeconds", ageOf(holder.pid)},
          {"released", watched.released},
          {"waiting", waitingFor(holder.pid)}};
}

void lock(const Session& session, const LockLine& line) {
  const tools::LockAnswer answer = look();
  if (answer.state == tools::LockState::kHeld) return session.show(holderJson(watch(answer.holder, line.seconds)));
  const bool missing = answer.state == tools::LockState::kMissing;
  if (session.forPeople())
    return session.done(missing ? "nobody holds it: there is no lock file" : "nobody holds the lock");
  session.show({{"lock", missing ? Json() : Json(kLockFile)}, {"held", false}});
}

}  // namespace

std::vector<Command> lockCommands() {
  return {command("lock", "Who holds the store's lock, and who waits for it; takes nothing", lock,
                  {option("--seconds", &LockLine::seconds, takes::seconds(0, 86400), "How long to look at the holder")},
                  "The system does not record since when a lock is held: it is at least as long as it was looked at, "
                  "and at most as long as the process lives.")};
}

}  // namespace ctl
