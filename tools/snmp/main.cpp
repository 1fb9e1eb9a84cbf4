// SPDX-License-Identifier: Apache-2.0
// kestrove-snmp: the store for the agent of the machine.
#include <signal.h>
#include <syslog.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>

#include "tools/common/service.h"
#include "tools/snmp/agent.h"
#include "tools/snmp/agent_library.h"
#include "tools/snmp/hints.h"
#include "tools/snmp/module.h"

namespace {

constexpr tools::Service kService = {
    "kestrove-snmp", "Shows the store to the network's monitoring, behind the machine's own agent.",
    "Exit status:\n"
    "  0  told to end\n"
    "  2  wrong usage\n"
    "  3  a library of another layout\n"
    "  5  the library of the agent cannot be used; or standard output cannot be written"};
constexpr int kAgain = 2;         // seconds between two looks whether the master lives, and two tries to reach it
constexpr unsigned kBetween = 1;  // seconds between two looks at the store

volatile sig_atomic_t toldToEnd = 0;

void hearSignals() {
  struct sigaction action = {};
  action.sa_handler = [](int) { toldToEnd = 1; };
  for (int number : {SIGTERM, SIGINT}) sigaction(number, &action, nullptr);
}

struct Options {
  std::string master = "/var/agentx/master";
  std::string hints = snmp::kHintPath;
  std::string group = "Debian-snmp";
  bool module = false;
};

void describe(CLI::App& app, Options& options) {
  app.add_option("--master", options.master, "Where the agent listens for its subagents")
      ->take_last()
      ->capture_default_str();
  app.add_option("--hints", options.hints, "Where the module in snmpd tells of requests")
      ->take_last()
      ->capture_default_str();
  app.add_option("--group", options.group, "Who may tell there beside root")->take_last()->capture_default_str();
  app.add_flag("--module", options.module, "Print the module, KESTROVE-MIB");
}

// The library of the agent keeps no files of its own and reads none.
bool prepare(const std::string& master) {
  snmp_enable_calllog();
  snmp_enable_syslog_ident(kService.name, LOG_DAEMON);
  netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, 1);
  netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
  netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
  netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_X_SOCKET, master.c_str());
  if (init_agent(kService.name) != 0) return false;
  // Behind init_agent, which sets another.
  netsnmp_ds_set_int(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_AGENTX_PING_INTERVAL, kAgain);
  return true;
}

int serve(const Options& options) {
  if (!prepare(options.master)) {
    return tools::fail(kService, tools::kCannotServe, "the library of the agent cannot be used");
  }
  snmp::Hints hints(options.hints, options.group);
  snmp::Agent agent(hints);
  snmp::registerModule(agent);
  init_snmp(kService.name);
  hearSignals();
  snmp_alarm_register(
      kBetween, SA_REPEAT, [](unsigned, void* one) { static_cast<snmp::Agent*>(one)->look(); }, &agent);
  agent.look();
  while (!toldToEnd) agent_check_and_process(1);
  snmp_shutdown(kService.name);
  return tools::kToldToEnd;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  return tools::runService(
      kService, argc, argv, [&](CLI::App& app) { describe(app, options); },
      [&](FILE* out) { return options.module ? tools::print(kService, out, snmp::moduleText()) : serve(options); });
}
