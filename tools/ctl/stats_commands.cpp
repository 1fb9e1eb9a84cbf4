// SPDX-License-Identifier: Apache-2.0
// stats.
#include <cerrno>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/rows.h"
#include "tools/ctl/watch/stats_watch.h"

namespace ctl {
namespace {

Json facts() {
  uint32_t uptime = 0;
  getSystemUptime(&uptime);
  InterfaceCounters counters[2];
  accept(getInterfaceStats(SHM_IF_LAN, &counters[0]), "interface statistics");
  accept(getInterfaceStats(SHM_IF_WAN, &counters[1]), "interface statistics");
  QosRow qos[SHM_QOS_ROWS];
  accept(readQosStats(qos), "QoS statistics");
  Json result = statisticsObject(shm->statistics);
  result["uptimeHundredths"] = uptime;
  result["interfaces"] =
      Json::array({interfaceCounterRow("LAN", counters[0]), interfaceCounterRow("WAN", counters[1])});
  result["qos"] = qosTable(qos);
  return result;
}

struct StatsLine {
  bool watch = false;
  std::optional<double> seconds;
  std::optional<int> samples;
};

void showOrWatch(const Session& session, const StatsLine& line) {
  constexpr double kShortest = 0.1;
  if (!line.watch && (line.seconds || line.samples)) throw Refusal(kUsage, "SECONDS and --samples go with --watch");
  if (!line.watch) return showRead(session, facts);
  WatchLine watch;
  watch.seconds = line.seconds.value_or(watch.seconds);
  watch.samples = line.samples.value_or(watch.samples);
  if (watch.seconds < kShortest) throw Refusal(kUsage, "SECONDS: at least 0.1");
  watchStats(session, watch);
}

enum Which : int { kAll, kOptimization, kCompression, kFilter };

constexpr NamedNumber kWhich[] = {
    {"all", kAll}, {"optimization", kOptimization}, {"compression", kCompression}, {"filter", kFilter}};

struct ResetLine {
  int which = kAll;
};

int resetNamed(int which, const Session& session) {
  const char* user = session.userName();
  switch (which) {
    case kOptimization: return resetOptimizationStats(session.source, user);
    case kCompression: return resetCompressionRatio(session.source, user);
    case kFilter: return resetFilterStats();
    default: return resetStats(session.source, user);
  }
}

void reset(const Session& session, const ResetLine& line) {
  const std::string which = nameOf(kWhich, static_cast<uint32_t>(line.which));
  requireStore(session);
  awaitLock(session);
  shm_errno = SHM_OK;
  errno = 0;
  accept(resetNamed(line.which, session), which + " statistics");
  // The counters are no part of the configuration: what may have failed is the file of the event log.
  const bool unlogged = shm_errno == SHM_EOPEN || shm_errno == SHM_EIO;
  if (unlogged) warn("reset; the event log's file cannot be written: " + reasonText());
  session.done((line.which == kAll ? "statistics" : which + " statistics") + " reset");
}

}  // namespace

std::vector<Command> statsCommands() {
  return {command("stats", "Counters of the engine and the interfaces", showOrWatch,
                  {option("SECONDS", &StatsLine::seconds, takes::seconds(0, 86400),
                          "With --watch: between two samples; 1 when absent, at least 0.1"),
                   flag("--watch", &StatsLine::watch, "Rates instead, as they change, until Ctrl-C"),
                   option("--samples", &StatsLine::samples, takes::number(1, INT_MAX), "Stop after so many samples")}),
          changing("stats reset", "Start the counters anew", reset,
                   {option("WHICH", &ResetLine::which, takes::word(kWhich), "Which of them")})};
}

}  // namespace ctl
