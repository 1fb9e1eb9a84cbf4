// SPDX-License-Identifier: Apache-2.0
#include "tools/api/endpoint.h"

namespace api {
namespace {

constexpr char kItem[] = "show {item}";
constexpr char kRules[] = "rule list";
constexpr char kUsers[] = "user list";
constexpr char kRoutes[] = "route list";
constexpr char kRoutes6[] = "route6 list";
constexpr char kAddresses[] = "address list";
constexpr char kMode[] = "mode show";
constexpr char kInterfaces[] = "interface list";
constexpr char kSettings[] = "settings running";

constexpr char kSessionShape[] = "{user, role: \"admin\"|\"read\", csrf?, secondsLeft?: number}";

Field word(const char* name, const char* type, const char* help) { return {name, Form::kWord, "", type, true, help}; }
Field option(const char* name, const char* option, const char* type, const char* help) {
  return {name, Form::kOption, option, type, false, help};
}
Field flag(const char* name, const char* option, const char* help) {
  return {name, Form::kFlag, option, "boolean", false, help};
}
Field secret(const char* name, const char* help) { return {name, Form::kLine, "", "string", true, help}; }

std::vector<Field> operator+(std::vector<Field> first, const std::vector<Field>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

std::vector<Field> ruleFields() {
  return {flag("any", "--any", "Match both address families"),
          option("source", "--from", "string", "ADDRESS[/LENGTH]"),
          option("destination", "--to", "string", "ADDRESS[/LENGTH]"),
          option("protocol", "--proto", "string", "any, tcp, udp or a number"),
          option("sourcePorts", "--sport", "string", "PORT or PORT-PORT; 0 is any"),
          option("destinationPorts", "--dport", "string", "PORT or PORT-PORT; 0 is any"),
          option("target", "--target", "string", "accelerate, bridge or drop"),
          option("priority", "--priority", "integer", "Scheduling priority"),
          option("kbit/s", "--kbps", "integer", "Rate limit; the least is minRate"),
          {"acceleration", Form::kSwitch, "--accel", "boolean", false, "Acceleration"},
          option("status", "--status", "string", "active, nis or invalid")};
}

std::vector<Field> routeFields() {
  return {word("gateway", "string", "Next hop"), flag("disabled", "--disabled", "Keep it out of the kernel")};
}

std::vector<Endpoint> itemRows() {
  return {{"GET", "/items", Right::kRead, "show", "All items with value, unit and what they accept", {}, "show"},
          {"GET", "/items/{item}", Right::kRead, kItem, "One item", {}, kItem, "item"},
          {"PUT",
           "/items/{item}",
           Right::kChange,
           "set {item} {value}",
           "Change an item",
           {{"value", Form::kWord, "", "any", true, "A switch is on or off, or a boolean"}},
           kItem}};
}

std::vector<Endpoint> ruleRows() {
  return {{"GET", "/rules", Right::kRead, kRules, "All rules; the last is the default rule", {}, kRules},
          {"GET", "/rules/{position}", Right::kRead, kRules, "One rule", {}, kRules, "position"},
          {"POST", "/rules", Right::kChange, "rule add {position}", "Insert a rule in front of a position",
           std::vector<Field>{word("position", "integer", "0 is the first rule")} + ruleFields() +
               std::vector<Field>{flag("matchAll", "--match-all", "The rule may match all traffic")},
           kRules, "", "", 201},
          {"PATCH", "/rules/{position}", Right::kChange, "rule change {position}", "Change what the members name",
           ruleFields(), kRules},
          {"POST",
           "/rules/{position}/move",
           Right::kChange,
           "rule move {position} {to}",
           "Move a rule in front of another",
           {word("to", "integer", "The rule to stand in front of")},
           kRules},
          {"DELETE", "/rules/{position}", Right::kChange, "rule delete {position}", "Delete a rule", {}, kRules}};
}

std::vector<Endpoint> userRows() {
  return {{"GET", "/users", Right::kRead, kUsers, "All accounts", {}, kUsers},
          {"GET", "/users/{name}", Right::kRead, kUsers, "One account", {}, kUsers, "name"},
          {"POST",
           "/users",
           Right::kChange,
           "user add {name}",
           "Add a user",
           {word("name", "string", "5 to 31 letters and digits"),
            flag("administrator", "--admin", "Make it an administrator"), secret("password", "8 to 31 characters")},
           kUsers,
           "",
           "",
           201},
          {"DELETE", "/users/{name}", Right::kChange, "user remove {name}", "Remove a user", {}, kUsers},
          {"PUT",
           "/users/{name}/password",
           Right::kChange,
           "user passwd {name}",
           "Change a password",
           {secret("oldPassword", "The present one"), secret("newPassword", "8 to 31 characters")},
           kUsers}};
}

std::vector<Endpoint> routeRows() {
  return {{"GET", "/routes", Right::kRead, kRoutes, "All IPv4 routes, in list order", {}, kRoutes},
          {"POST", "/routes", Right::kChange, "route add {destination} {gateway}", "Add a route",
           std::vector<Field>{word("destination", "string", "ADDRESS[/LENGTH]")} + routeFields(), kRoutes, "", "", 201},
          {"PUT", "/routes/{address}/{length}", Right::kChange,
           "route replace {address}/{length} {destination} {gateway}", "Remove a route and add another",
           std::vector<Field>{word("destination", "string", "Destination of the other")} + routeFields(), kRoutes},
          {"DELETE",
           "/routes/{address}/{length}",
           Right::kChange,
           "route remove {address}/{length}",
           "Remove a route",
           {},
           kRoutes},
          {"POST",
           "/routes/freshen",
           Right::kChange,
           "route freshen",
           "Apply every route anew, disabled ones too",
           {},
           kRoutes}};
}

std::vector<Endpoint> route6Rows() {
  return {
      {"GET", "/routes6", Right::kRead, kRoutes6, "All IPv6 routes, in list order", {}, kRoutes6},
      {"POST", "/routes6", Right::kChange, "route6 add {destination} {gateway}", "Add a route",
       std::vector<Field>{word("destination", "string", "ADDRESS[/LENGTH]")} + routeFields(), kRoutes6, "", "", 201},
      {"PUT", "/routes6/{address}/{length}", Right::kChange,
       "route6 replace {address}/{length} {destination} {gateway}", "Remove a route and add another",
       std::vector<Field>{word("destination", "string", "Destination of the other")} + routeFields(), kRoutes6},
      {"DELETE",
       "/routes6/{address}/{length}",
       Right::kChange,
       "route6 remove {address}/{length}",
       "Remove a route",
       {},
       kRoutes6},
      {"POST",
       "/routes6/freshen",
       Right::kChange,
       "route6 freshen",
       "Apply every route anew, disabled ones too",
       {},
       kRoutes6}};
}

std::vector<Endpoint> addressRows() {
  const Field bridge = flag("bridge", "--br0", "The table of the bridge's own IPv6 addresses");
  return {{"GET", "/addresses", Right::kRead, kAddresses, "Management addresses, and the bridge's own", {}, kAddresses},
          {"POST",
           "/addresses",
           Right::kChange,
           "address add {address}",
           "Add an address",
           {word("address", "string", "ADDRESS[/LENGTH]"), bridge,
            option("interface", "--interface", "string", "lan, wan, management, bridge or router")},
           kAddresses,
           "",
           "",
           201},
          {"DELETE",
           "/addresses/{address}",
           Right::kChange,
           "address remove {address}",
           "Remove an address",
           {bridge},
           kAddresses}};
}

std::vector<Endpoint> modeRows() {
  return {{"GET", "/mode", Right::kRead, kMode, "The operating mode", {}, kMode},
          {"PUT",
           "/mode/single",
           Right::kChange,
           "mode single {lan} {wan}",
           "One interface with two VLANs",
           {word("lan", "integer", "VLAN id of the LAN side"), word("wan", "integer", "VLAN id of the WAN side")},
           kMode},
          {"PUT", "/mode/double", Right::kChange, "mode double", "Two interfaces, bridged", {}, kMode},
          {"PUT",
           "/mode/policy-routing",
           Right::kChange,
           "mode pbr {on}",
           "Policy routing on the single interface",
           {{"on", Form::kSwitch, "", "boolean", true, "Whether it is used"}},
           kMode},
          {"POST", "/configuration-mode/enter", Right::kChange, "configuration-mode enter",
           "From here on changes touch the store alone"},
          {"POST",
           "/configuration-mode/leave",
           Right::kChange,
           "configuration-mode leave",
           "Back to normal",
           {flag("save", "--save", "Write the configuration file at once")}},
          {"POST", "/debug-mode/enter", Right::kChange, "debug-mode enter",
           "From here on items and rules are not told to the engine"},
          {"POST", "/debug-mode/leave", Right::kChange, "debug-mode leave", "Back to normal"}};
}

std::vector<Endpoint> systemRows() {
  return {{"GET", "/status", Right::kRead, "status", "Store, state, holder of the lock; never waits"},
          {"POST", "/save", Right::kChange, "save", "Write the configuration file"},
          {"GET", "/check", Right::kRead, "check", "The invariants of every table"}};
}

std::vector<Endpoint> portRows() {
  return {{"GET", "/interfaces", Right::kRead, kInterfaces, "Names, hardware addresses, addresses", {}, kInterfaces},
          {"GET", "/interfaces/{port}/link", Right::kRead, "interface link {port}", "Link status of a port"},
          {"PUT",
           "/interfaces/{port}/name",
           Right::kChange,
           "interface name {port} {name}",
           "The name that the store has for a port",
           {word("name", "string", "Up to 15 characters")},
           kInterfaces},
          {"POST",
           "/dhcp",
           Right::kChange,
           "dhcp {interface}",
           "Obtain an address for an interface",
           {word("interface", "string", "Name of the interface"),
            option("timeout", "--timeout", "integer", "Seconds; the web server in front waits for 60")}}};
}

std::vector<Endpoint> engineRows() {
  return {{"GET", "/engine", Right::kRead, "engine status", "Process, switch, counters, changes not fetched yet"},
          {"POST", "/engine/restart", Right::kChange, "engine restart",
           "Reset the counters, switch it on, end its process"},
          {"GET", "/tasks", Right::kRead, "task list", "The monitored tasks"},
          {"GET", "/kernel", Right::kRead, "kernel show", "Addresses and routes in the tables and in the kernel"},
          {"GET", "/notifications", Right::kRead, "notifications", "The notifications that are on, leaving them so"},
          {"PUT",
           "/notifications/{number}",
           Right::kChange,
           "notifications set {number} {on}",
           "Switch one; it stays until somebody reads it",
           {{"on", Form::kSwitch, "", "boolean", true, "Its switch"}}}};
}

std::vector<Endpoint> eventRows() {
  return {
      {"GET", "/events", Right::kRead, "events", "The event log, oldest first"},
      {"DELETE", "/events", Right::kChange, "events clear", "Empty the log"},
      {"GET", "/events/stream", Right::kRead, "", "Events as they come, as server-sent events", {}, "", "", "stream"},
      {"GET",
       "/metrics",
       Right::kRead,
       "",
       "Counters, tables and modes as Prometheus takes them",
       {},
       "",
       "",
       "metrics"},
      {"GET", "/statistics", Right::kRead, "stats", "Counters of the engine, the interfaces and the scheduler"},
      {"POST",
       "/statistics/reset",
       Right::kChange,
       "stats reset {which}",
       "Start counters anew",
       {word("which", "string", "all, optimization, compression or filter")}}};
}

std::vector<Endpoint> stateRows() {
  return {{"GET", "/clock", Right::kRead, "clock show", "Clock, hardware clock, uptime"},
          {"PUT",
           "/clock",
           Right::kChange,
           "clock set {time}",
           "Set both clocks; the engine is stopped meanwhile",
           {word("time", "string", "2026-11-22T04:45:25Z")}},
          {"GET", "/state", Right::kRead, "state list", "What is saved of whole states"},
          {"POST",
           "/state",
           Right::kChange,
           "state save",
           "Save the state; an earlier one is replaced",
           {},
           "",
           "",
           "",
           201},
          {"POST",
           "/state/load",
           Right::kChange,
           "state load",
           "Restore the saved files",
           {flag("now", "--now", "Build the store anew from them at once")}},
          {"GET",
           "/support",
           Right::kChange,
           "support {file}",
           "Everything that a support engineer asks for, without secrets",
           {},
           "",
           "",
           "file"}};
}

std::vector<Endpoint> restartRows() {
  return {{"POST", "/reboot", Right::kChange, "reboot --yes", "Restart the appliance"},
          {"POST", "/poweroff", Right::kChange, "poweroff --yes", "Switch the appliance off"},
          {"POST",
           "/factory-reset",
           Right::kChange,
           "factory-reset --yes",
           "Take back users, settings, event log and files, and restart",
           {flag("keepUsers", "--keep-users", "Leave the users, and the mark of a configured unit"),
            flag("noReboot", "--no-reboot", "Leave the restart to the caller")}}};
}

std::vector<Endpoint> lineRows() {
  return {{"GET",
           "/settings",
           Right::kRead,
           "settings {state}",
           "The settings as the lines that make them; of running, If-Match of apply and rollback",
           {{"state", Form::kState, "", "string", true, "running, saved or rev:N"}},
           kSettings}};
}

std::vector<Endpoint> settingRows() {
  return {{"GET",
           "/diff",
           Right::kRead,
           "diff {from} {to}",
           "What makes two states of the settings differ",
           {{"from", Form::kState, "", "string", true, "running, saved or rev:N"},
            {"to", Form::kState, "", "string", true, "running, saved or rev:N"}}},
          {"GET", "/lost", Right::kRead, "lost", "Settings that a saved script cannot hold"},
          {"POST",
           "/apply",
           Right::kChange,
           "apply -",
           "Make the settings what a script says",
           {{"script", Form::kInput, "", "string", true, "Lines of a saved script, or of kestrovectl"},
            flag("replace", "--replace", "Take away what the script does not say"),
            flag("check", "--check", "Change nothing: say what would be changed"),
            flag("diff", "--diff", "Show what differs before and after"),
            flag("stopOnError", "--stop-on-error", "End at the first change that fails"),
            flag("skipRefused", "--skip-refused", "Leave out lines that the store refuses")},
           kSettings}};
}

std::vector<Endpoint> historyRows() {
  return {{"GET", "/history", Right::kRead, "history", "The changes made, newest first"},
          {"GET", "/history/{revision}", Right::kRead, "history show {revision}", "What a revision changed"},
          {"POST",
           "/history/{revision}/rollback",
           Right::kChange,
           "rollback {revision}",
           "Bring the settings of a revision back",
           {},
           kSettings},
          {"GET", "/confirm", Right::kRead, "confirm --status", "What waits for its confirmation, and how long"},
          {"POST", "/confirm", Right::kChange, "confirm", "Keep the change that waits"},
          {"DELETE", "/confirm", Right::kChange, "confirm --abort", "Take it back now"}};
}

std::vector<Endpoint> operationRows() {
  return {{"POST",
           "/preview",
           Right::kChange,
           "",
           "What one request would make different: settings, files, kernel",
           {{"method", Form::kWord, "", "string", true, "Of the request that is tried"},
            {"path", Form::kWord, "", "string", true, "Below /api/1"},
            {"body", Form::kWord, "", "object", false, "What it would send"}},
           "",
           "",
           "preview"},
          {"POST",
           "/batch",
           Right::kChange,
           "",
           "Several requests, up to the first that fails",
           {{"operations", Form::kWord, "", "array", true, "Each with method, path and body"}},
           "",
           "",
           "batch",
           200,
           "{failed: number|null, error?: @reason, results: [{status: number, body: any}]}"}};
}

std::vector<Endpoint> sessionRows() {
  return {{"GET",
           "",
           Right::kNone,
           "",
           "Whether changes by the web are switched on",
           {},
           "",
           "",
           "about",
           200,
           "{api: number, version, enabled: bool}"},
          {"POST",
           "/session",
           Right::kNone,
           "",
           "Log in",
           {{"user", Form::kWord, "", "string", true, "Exact name of a user"},
            {"password", Form::kLine, "", "string", true, "Never empty"}},
           "",
           "",
           "log-in",
           201,
           kSessionShape},
          {"GET", "/session", Right::kRead, "", "Who is logged in", {}, "", "", "session", 200, kSessionShape},
          {"DELETE", "/session", Right::kRead, "", "Log out", {}, "", "", "log-out", 200, "@done"}};
}

std::vector<Endpoint> allRows() {
  std::vector<Endpoint> rows;
  for (const auto& family : {sessionRows(), itemRows(), ruleRows(), userRows(), routeRows(), route6Rows(),
                             addressRows(), modeRows(), systemRows(), portRows(), engineRows(), eventRows(),
                             stateRows(), restartRows(), lineRows(), settingRows(), historyRows(), operationRows()}) {
    rows.insert(rows.end(), family.begin(), family.end());
  }
  return rows;
}

}  // namespace

std::span<const Endpoint> endpoints() {
  static const std::vector<Endpoint> rows = allRows();
  return rows;
}

}  // namespace api
