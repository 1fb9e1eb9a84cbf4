// stats.
#include "kestrove/kestrove.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/rows.h"

namespace ctl {
namespace {

void show(const Session& session) {
  requireStore();
  uint32_t uptime = 0;
  getSystemUptime(&uptime);
  InterfaceCounters counters[2];
  accept(getInterfaceStats(0, &counters[0]), "interface statistics");
  accept(getInterfaceStats(1, &counters[1]), "interface statistics");
  QosRow qos[SHM_QOS_ROWS];
  accept(readQosStats(qos), "QoS statistics");
  accept(shm_lock(), "lock");
  Json result = statisticsObject(shm->statistics);
  shm_unlock();
  result["uptimeHundredths"] = uptime;
  result["interfaces"] =
      Json::array({interfaceCounterRow("LAN", counters[0]), interfaceCounterRow("WAN", counters[1])});
  result["qos"] = qosTable(qos);
  session.show(result);
}

void reset(const Session& session, int result, const char* what) {
  accept(result, what);
  session.done(std::string(what) + " reset");
}

}  // namespace

void addStatsCommands(CLI::App& app, Session& session) {
  CLI::App* stats = app.add_subcommand("stats", "Counters of the engine and the interfaces");
  stats->require_subcommand(0, 1);
  CLI::App* resetting = stats->add_subcommand("reset", "Start the counters anew");
  static std::string which = "all";
  resetting->add_option("WHICH", which, "all, optimization, compression or filter")
      ->check(CLI::IsMember({"all", "optimization", "compression", "filter"}));
  resetting->callback([&session] {
    requireStore();
    const char* user = session.userName();
    if (which == "optimization")
      return reset(session, resetOptimizationStats(session.source, user), "optimization statistics");
    if (which == "compression") return reset(session, resetCompressionRatio(session.source, user), "compression ratio");
    if (which == "filter") return reset(session, resetFilterStats(), "filter statistics");
    reset(session, resetStats(session.source, user), "statistics");
  });
  stats->callback([&session, resetting] {
    if (!resetting->parsed()) show(session);
  });
}

}  // namespace ctl
