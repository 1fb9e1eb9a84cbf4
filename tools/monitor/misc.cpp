// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/misc.h"

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <syslog.h>

#include "tools/ctl/watch/metric.h"
#include "tools/ctl/watch/new_file.h"
#include "tools/monitor/records.h"
#include "tools/monitor/servers.h"
#include "tools/monitor/unkept.h"

namespace monitor {
namespace {

constexpr mode_t kForEverybody = 0644;  // the node exporter is no super-user
constexpr double kPatience = 2;
constexpr Milliseconds kTick = 1000;
constexpr int kNap = 100;  // milliseconds, while the lock is not to be had

class Metrics {
 public:
  explicit Metrics(std::string path) : path_(std::move(path)) {}

  void write() {
    if (path_.empty()) return;
    ctl::Session session;
    session.waitSeconds = kPatience;
    try {
      ctl::NewFile file(path_, kForEverybody);
      file.write(ctl::metricsText(ctl::readMetricFacts(session)));
      file.putInPlace();
      told_ = false;
    } catch (const ctl::Refusal& refusal) {
      if (!told_) syslog(LOG_WARNING, "metrics are not written: %s", refusal.what());
      told_ = true;
    }
  }

 private:
  std::string path_;
  bool told_ = false;
};

}  // namespace

Exit runMisc(const Options& options) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);  // it goes with the monitor, whatever becomes of that
  const Loop loop;
  if (!loop) return kSystem;
  Store store;
  Records records(options.folder + "/records");
  if (records.descriptor() >= 0) loop.watch(records.descriptor());
  Metrics metrics(options.metrics);
  Unkept unkept;
  Servers servers(options.folder + "/monitor.addresses");
  Milliseconds next = 0;
  while (!loop.toldToEnd()) {
    store.look();
    servers.look(store, clockNow());
    const bool folded = records.descriptor() < 0 || records.fold(store);
    if (clockNow() >= next) {
      next = clockNow() + Milliseconds{options.every} * 1000;
      metrics.write();
      unkept.look(store);
    }
    if (folded) {
      loop.sleep(kTick);
    } else {
      poll(nullptr, 0, kNap);  // what wakes the loop up is still there
    }
  }
  return kDone;
}

}  // namespace monitor
