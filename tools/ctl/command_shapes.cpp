// SPDX-License-Identifier: Apache-2.0
// The shapes of commands whose rows do not say them.
#include <string_view>

#include "tools/ctl/reference.h"
#include "tools/ctl/shape.h"

namespace ctl {
namespace {

struct CommandShape {
  std::string_view words;
  const char* shape;
};

// The lines of saved scripts say it likewise.
constexpr char kOfAnItem[] = "change({item, value: text|number, unit?, script?: text, file?: text})";

constexpr CommandShape kShapes[] = {
    {"status", "@status"},
    {"save", "@done"},
    {"check", "{findings: [{table, finding}]}"},
    {"load", "{done, added: {*: number} (rows by table), faults: [{line: number, fault}], saved: bool, applied: bool}"},
    {"show", "[{item, value: text|number, unit, accepts}]"},
    {"set", kOfAnItem},
    {"set interfaceMode single", "change(@mode)"},
    {"set interfaceMode double", "change(@mode)"},
    {"rule list", "[@rule]"},
    {"rule add", "change(@rule)"},
    {"rule change", "change(@rule)"},
    {"rule move", "change(@done)"},
    {"rule delete", "change(@done)"},
    {"user list", "[@userRow]"},
    {"user add", "change(@done)"},
    {"user remove", "change(@done)"},
    {"user passwd", "change(@done)"},
    {"user check", "@done"},
    {"events", "{events: [@event]}|lines(@event)"},
    {"events list", "{events: [@event]}|lines(@event)"},
    {"events follow", "lines(@event)"},
    {"events clear", "@done"},
    {"stats", "@stats|lines(@sample)"},
    {"stats reset", "@done"},
    {"engine status",
     "{pid: number, process: @life, enabled: @switch, restarts: number, reboots: number, pendingChanges: [text], "
     "version}"},
    {"engine restart", "change(@done)"},
    {"task list", "[@task]"},
    {"interface list", "[{interface, inUse, physical, hardware?, address?, mask?}]"},
    {"interface link", "{interface, first, second, third}"},
    {"interface name", "change({interface, name})"},
    {"mode show", "@mode"},
    {"mode single", "change(@mode)"},
    {"mode double", "change(@mode)"},
    {"mode unset", "change(@mode)"},
    {"mode other", "change(@mode)"},
    {"mode pbr", "change(@mode)"},
    {"address list", "[@address]"},
    {"address add", "change(@done)"},
    {"address remove", "change(@done)"},
    {"route list", "[@route]"},
    {"route freshen", "change([@route])"},
    {"route add", "change(@route)"},
    {"route remove", "change(@done)"},
    {"route replace", "change(@route)"},
    {"route6 list", "[@route6]"},
    {"route6 freshen", "change([@route6])"},
    {"route6 add", "change(@route6)"},
    {"route6 remove", "change(@done)"},
    {"route6 replace", "change(@route6)"},
    {"kernel show",
     "{addresses: [@addressInKernel], routes: [@routeInKernel], routes6: [@routeInKernel], rules: [any] (as ip -json "
     "rule show has them)}"},
    {"state save", "[@savedState]"},
    {"state load", "@done"},
    {"state list", "[@savedState]"},
    {"dhcp", "{interface, address?, netmask?, gateways?, server?, nameServers?, domain?}"},
    {"dump", "@dump"},
    {"explain", "{exit: number (of the command), effects: [{kind, effect, result}]}"},
    {"lint", "[{line: number, column: number, text, kind}]"},
    {"clock show", "{time: time, hardwareClock: time (null without one), uptimeSeconds: number}"},
    {"clock set", "{done, set: time, time: time (what the clock says now)}"},
    {"reboot", "@done"},
    {"poweroff", "@done"},
    {"lock",
     "{lock: text|null (the lock file; null where there is none), held: bool}|{lock, held: bool, pid: number|null, "
     "program: text|null, state: \"running\"|\"stopped\", heldAtLeastSeconds: number, heldAtMostSeconds: number|null, "
     "released: bool, waiting: [{pid: number, program}]}"},
    {"factory-reset",
     "{done, removed: {users: [text], settings, settingsAfterwards: text|null, events: number, files: [text]}}"},
    {"configuration-mode enter", "{done, state, changed: bool, effect}"},
    {"configuration-mode leave",
     "{done, state, changed: bool, saved?: bool, unsaved?: [@settingChange]|null, error?: @reason, kernelLacks?: "
     "[text]|null, engineTold?: bool}"},
    {"debug-mode enter", "{done, state, changed: bool, effect}"},
    {"debug-mode leave", "{done, state, changed: bool, kernelLacks?: [text]|null, engineTold?: bool}"},
    {"notifications", "[{number: number, on: bool}]"},
    {"notifications show", "[{number: number, on: bool}]"},
    {"notifications set", "@done"},
    {"diff",
     "{changed: bool, diff: {before: text, after: text}, changes: [@settingChange], unsaved: [text] (what a restart "
     "loses)}"},
    {"settings", "[{section, key, line}]"},
    {"preview",
     "{exit: number (of the command), store: {changed: bool, diff: {before: text, after: text}, changes: "
     "[@settingChange]}, files: [{path, before: text|null, after: text|null}], kernel: [{section, before: text|null, "
     "after: text|null}], notes: [text]}"},
    {"apply",
     "{changed: bool, diff?: {before: text, after: text}, changes: [@settingChange], lines: [{line: number, text, "
     "changed: bool, error?}], failed: [@unmade], revision?: null, confirm?: {user, secondsLeft: number}}"},
    {"lost", "{lost: [{section, key, setting: text|null, becomes: text|null, reason}]}"},
    {"metrics",
     "{families: [{name, type: \"counter\"|\"gauge\", help, metrics: [{labels: {*: text}, value: number}]}]}|@done"},
    {"support", "{done, parts: [text], missing: [{part, reason}]}"},
    {"history", "[@revision]"},
    {"history show",
     "{revision: number, time, user, source, comment, command, changed: bool, diff: {before: text, after: text}, "
     "changes: [@settingChange], settings: [text]}"},
    {"rollback",
     "{done, changed: bool, diff: {before: text, after: text}, changes: [@settingChange], saved: bool, reason?: text, "
     "failed: [@unmade], notes: [text], revision?: null, confirm?: {user, secondsLeft: number}}"},
    {"confirm",
     "@done|{pending: bool, user?: text, command?: text, comment?: text, time?: text, revision?: number, secondsLeft?: "
     "number}"},
    {"ip add", "change(@done)"},
    {"completion bash", "{script: text}"},
    {"completion zsh", "{script: text}"},
    {"shell", "lines(any)"},
};

}  // namespace

const char* shapeOf(const Command& row) {
  if (*row.json) return row.json;
  const std::string words = joined(row.words, " ");
  for (const CommandShape& one : kShapes) {
    if (words == one.words) return one.shape;
  }
  return row.script && row.words.front() == "set" ? kOfAnItem : "";
}

}  // namespace ctl
