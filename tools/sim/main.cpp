// SPDX-License-Identifier: Apache-2.0
// kestrove-sim: stands in for the optimisation engine. It takes the engine's task slot, hears the signal, fetches the
// change bits and the snapshot, says what changed, and reports counters once per interval.
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/common/standard_output.h"
#include "tools/common/store_refusal.h"
#include "tools/common/version_text.h"
#include "tools/sim/act.h"
#include "tools/sim/changes.h"
#include "tools/sim/interval.h"
#include "tools/sim/soundness.h"

namespace {

enum Exit { kDone = 0, kRefused = 1, kUsage = 2, kNoStore = 3, kUnsound = 4, kSystem = 5 };
constexpr int kEngineTask = 4;
constexpr int64_t kSecond = 1000000000;
constexpr int64_t kNever = INT64_MAX;
constexpr uint32_t kPidFileProduct = 11;
constexpr char kPidFile[] = "/var/log/curpid";
constexpr char kExitCodes[] =
    "Exit status: 0 done; 1 another engine runs; 2 wrong usage; 3 no store, or a library of another layout; 4 a "
    "snapshot was not sound; 5 standard "
    "output cannot be written.";

struct Options {
  int interval = -1;  // seconds; the store's own when negative
  int changes = 0;    // to hear before it ends; 0: no end
  int intervals = 0;  // likewise
  bool replace = false;
  bool act = false;
};

// Nanoseconds of a clock that nobody sets.
int64_t monotonic() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * kSecond + now.tv_nsec;
}

// The next of the signals; 0 when the time is up first.
int nextSignal(const sigset_t& heard, int64_t deadline) {
  if (deadline == kNever) return sigwaitinfo(&heard, nullptr);
  int64_t left = std::max<int64_t>(deadline - monotonic(), 0);
  timespec wait = {static_cast<time_t>(left / kSecond), static_cast<long>(left % kSecond)};
  int signal = sigtimedwait(&heard, nullptr, &wait);
  return signal == -1 ? 0 : signal;
}

std::string nameOf(const EngineLink& link) {
  return {link.interfaceName, strnlen(link.interfaceName, sizeof link.interfaceName)};
}

class Engine {
 public:
  Engine(const Options& options, FILE* words) : options_(options), words_(words) {}

  int run(const sigset_t& heard);

 private:
  bool takeSlot();
  void leaveSlot();
  bool fetch(EngineConfiguration& block);
  void use(std::unique_ptr<EngineConfiguration> block);
  void start();
  void hear();
  void report();
  bool count(sim::IntervalRecord& record, const InterfaceCounters& lan, const InterfaceCounters& wan);
  bool finished() const;
  int seconds() const { return options_.interval >= 0 ? options_.interval : block_->accumulationInterval; }
  void startInterval() { deadline_ = seconds() > 0 ? monotonic() + seconds() * kSecond : kNever; }
  // Names come from the store.
  void say(const std::string& line) {
    const std::string failure = tools::writeOut(words_, tools::escaped(line) + "\n");
    if (!failure.empty() && !mute_) fprintf(stderr, "kestrove-sim: %s\n", failure.c_str());
    mute_ = mute_ || !failure.empty();
  }

  const Options& options_;
  FILE* words_;
  std::unique_ptr<EngineConfiguration> block_ = std::make_unique<EngineConfiguration>();
  sim::PortCounters lan_;
  sim::PortCounters wan_;
  int64_t deadline_ = kNever;
  int changesHeard_ = 0;
  int intervalsReported_ = 0;
  bool sound_ = true;
  bool mute_ = false;  // nobody hears it any more: it ends
};

bool Engine::takeSlot() {
  int other = shm_getTaskPid(kEngineTask);
  if (!options_.replace && other > 1 && other != getpid() && kill(other, 0) == 0) {
    fprintf(stderr, "kestrove-sim: process %d is the engine already (--replace takes its place)\n", other);
    return false;
  }
  shm_setTaskPid(kEngineTask, getpid());
  uint32_t product = 0;
  if (getKestroveProduct(&product) != 0 || product != kPidFileProduct) return true;
  if (FILE* file = fopen(kPidFile, "w")) {
    fprintf(file, "%d\n", getpid());
    fclose(file);
  }
  return true;
}

void Engine::leaveSlot() {
  if (shm_getTaskPid(kEngineTask) == getpid()) shm_setTaskPid(kEngineTask, 0);
}

bool Engine::fetch(EngineConfiguration& block) {
  if (setConfiguration(&block) != 0) {
    say(std::string("snapshot refused: ") + shm_strerror(static_cast<int>(shm_errno)));
    return false;
  }
  std::vector<std::string> wrong = sim::findings(block);
  for (const std::string& line : wrong) say("unsound: " + line);
  if (!wrong.empty()) sound_ = false;
  return true;
}

// Works by the snapshot from now on.
void Engine::use(std::unique_ptr<EngineConfiguration> block) {
  int before = seconds();
  block_ = std::move(block);
  lan_.watch(nameOf(block_->lan));
  wan_.watch(nameOf(block_->wan));
  if (seconds() != before || deadline_ == kNever) startInterval();
}

void Engine::start() {
  auto block = std::make_unique<EngineConfiguration>();
  fetch(*block);
  use(std::move(block));
  say("engine " + std::to_string(getpid()) + " (" + std::to_string(sizeof(void*) * 8) +
      " bits) started: " + std::to_string(block_->ruleCount) + " rules, LAN rate " +
      std::to_string(block_->lan.linkRate) + ", WAN rate " + std::to_string(block_->wan.linkRate) + ", MTU " +
      std::to_string(block_->wan.mtu) + ", compression " + (block_->compression ? "on" : "off"));
}

void Engine::hear() {
  uint32_t bits = 0;
  auto block = std::make_unique<EngineConfiguration>();
  if (receiveKestroveEvent(&bits) != 0 || !fetch(*block)) return;
  say("told of: " + (bits ? sim::namesOfBits(bits) : "nothing"));
  for (const std::string& line : sim::differences(*block_, *block)) say("  " + line);
  use(std::move(block));
  ++changesHeard_;
}

void Engine::report() {
  startInterval();
  const InterfaceCounters lan = lan_.advance();
  const InterfaceCounters wan = wan_.advance();
  sim::IntervalRecord record = sim::makeRecord(lan, wan, static_cast<uint32_t>(seconds()));
  if (options_.act) sim::act(record, *block_);
  if (!count(record, lan, wan)) return;
  ++intervalsReported_;
  say("interval " + std::to_string(checkStatsCounter()) + ": " + std::to_string(record.bytesToWan()) +
      " bytes to the WAN");
}

// Whoever reads sees one whole interval.
bool Engine::count(sim::IntervalRecord& record, const InterfaceCounters& lan, const InterfaceCounters& wan) {
  if (kestrove_hold() != 0) return false;
  const bool folded = shm_updateKestroveStats(record.word) == 0;
  if (folded) sim::countPorts(shm->statistics, lan, wan);
  if (folded && options_.act) {
    SessionEngineStats sessions = sim::sessionRecord(lan, wan, record);
    updateDomoStats(&sessions);
  }
  kestrove_release();
  return folded;
}

bool Engine::finished() const {
  return (options_.changes > 0 && changesHeard_ >= options_.changes) ||
         (options_.intervals > 0 && intervalsReported_ >= options_.intervals);
}

int Engine::run(const sigset_t& heard) {
  if (!takeSlot()) return kRefused;
  start();
  while (!finished() && !mute_) {
    int signal = nextSignal(heard, deadline_);
    if (signal == 0) report();
    if (signal == SIGUSR1) hear();
    if (signal == SIGTERM || signal == SIGINT) break;
  }
  leaveSlot();
  say("engine stopped");
  if (mute_) return kSystem;
  return sound_ ? kDone : kUnsound;
}

sigset_t blockSignals() {
  sigset_t heard;
  sigemptyset(&heard);
  for (int signal : {SIGUSR1, SIGTERM, SIGINT}) sigaddset(&heard, signal);
  sigprocmask(SIG_BLOCK, &heard, nullptr);
  return heard;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string otherLibrary = tools::libraryRefusal();
  if (!otherLibrary.empty()) {
    fprintf(stderr, "kestrove-sim: %s\n", otherLibrary.c_str());
    return kNoStore;
  }
  const std::string refused = tools::refusedWord(argc, argv);
  if (!refused.empty()) {
    fprintf(stderr, "kestrove-sim: %s\n", refused.c_str());
    return kUsage;
  }
  Options options;
  CLI::App app("Stands in for the optimisation engine");
  app.footer(kExitCodes);
  app.set_version_flag("--version", tools::versionText("kestrove-sim"));
  app.add_option("--interval", options.interval, "Seconds between reports, 0 for none; otherwise the store's")
      ->check(CLI::Range(0, 86400));
  app.add_option("--changes", options.changes, "End after this many changes")->check(CLI::PositiveNumber);
  app.add_option("--intervals", options.intervals, "End after this many reports")->check(CLI::PositiveNumber);
  app.add_flag("--act", options.act, "Report compression, classes and sessions, too, as an engine would");
  app.add_flag("--replace", options.replace, "Take the place of an engine that runs");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUsage;
  }
  sigset_t heard = blockSignals();  // before the slot is taken: the default action of the signal ends a process
  prctl(PR_SET_NAME, "kestrove");   // so that a restart by killall finds it
  if (shm_lock() != 0) {
    fprintf(stderr, "kestrove-sim: %s\n", tools::storeRefusal().c_str());
    return kNoStore;
  }
  shm_unlock();
  FILE* words = tools::takeStandardOutput();
  if (!freopen("/dev/null", "w", stdout)) return kRefused;  // the library's line for each rule is of no use here
  return Engine(options, words).run(heard);
}
