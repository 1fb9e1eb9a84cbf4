// stats.
#include <cerrno>

#include "kestrove/kestrove.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/rows.h"

namespace ctl {
namespace {

Json facts() {
  uint32_t uptime = 0;
  getSystemUptime(&uptime);
  InterfaceCounters counters[2];
  accept(getInterfaceStats(0, &counters[0]), "interface statistics");
  accept(getInterfaceStats(1, &counters[1]), "interface statistics");
  QosRow qos[SHM_QOS_ROWS];
  accept(readQosStats(qos), "QoS statistics");
  Json result = statisticsObject(shm->statistics);
  result["uptimeHundredths"] = uptime;
  result["interfaces"] =
      Json::array({interfaceCounterRow("LAN", counters[0]), interfaceCounterRow("WAN", counters[1])});
  result["qos"] = qosTable(qos);
  return result;
}

int resetNamed(const std::string& which, const Session& session) {
  const char* user = session.userName();
  if (which == "optimization") return resetOptimizationStats(session.source, user);
  if (which == "compression") return resetCompressionRatio(session.source, user);
  return which == "filter" ? resetFilterStats() : resetStats(session.source, user);
}

void reset(const Session& session, const std::string& which) {
  requireStore(session);
  awaitLock(session);
  shm_errno = SHM_OK;
  errno = 0;
  accept(resetNamed(which, session), which + " statistics");
  // The counters are no part of the configuration: what may have failed is the file of the event log.
  const bool unlogged = shm_errno == SHM_EOPEN || shm_errno == SHM_EIO;
  if (unlogged) warn("reset; the event log's file cannot be written: " + reasonText());
  session.done((which == "all" ? "statistics" : which + " statistics") + " reset");
}

}  // namespace

void addStatsCommands(CLI::App& app, Session& session) {
  CLI::App* stats = app.add_subcommand("stats", "Counters of the engine and the interfaces");
  stats->require_subcommand(0, 1);
  CLI::App* resetting = stats->add_subcommand("reset", "Start the counters anew");
  static std::string which = "all";
  resetting->add_option("WHICH", which, "all, optimization, compression or filter")
      ->check(CLI::IsMember({"all", "optimization", "compression", "filter"}));
  resetting->callback([&session] { reset(session, which); });
  stats->callback([&session, resetting] {
    if (!resetting->parsed()) showRead(session, facts);
  });
}

}  // namespace ctl
