// SPDX-License-Identifier: Apache-2.0
// The shapes that have names.
#include "tools/ctl/shape.h"

namespace ctl {
namespace {

constexpr NamedShape kNamedShapes[] = {
    {"error", "What --json prints when a command fails, beside its exit status", "{error: @reason}"},
    {"reason", "Why something failed",
     "{message (as it stands on standard error without --json), exit: number (the exit status), "
     "code?: number (of shm_errno, where the library gave one), errno?: @errno (where the system gave one)}"},
    {"errno", "The system's own reason", "{number: number, name: text|null (EACCES and so on), text}"},
    {"change", "What a change says beside its result; a list then stands in result",
     "{saved?: bool (false where the configuration file does not have it), reason?: text (why it is only stored), "
     "error?: @reason (why it could not be saved), revision?: null (where history does not have it), "
     "confirm?: {user, secondsLeft: number} (with --confirm)}"},
    {"settingChange", "A setting that differs: the lines that make it, null where it is absent",
     "{section, key, before: text|null, after: text|null}"},
    {"unmade", "A step of a change that was refused", "{section, key, line, reason}"},
    {"revision", "A revision of the history", "{revision: number, time, user, source, comment, command}"},
    {"done", "That something was done", "{done: text (a sentence)}"},
    {"switch", "A switch: unset is one that no file has named, invalid any other value",
     "\"on\"|\"off\"|\"unset\"|\"invalid\""},
    {"life", "Of a process", "\"none\"|\"alive\"|\"dead\""},
    {"rule", "A policy rule",
     "{position: number (0 is the first), family: \"IPv4\"|\"IPv6\"|\"any\", source: text (address/length, or any), "
     "destination: text (likewise), protocol: text (any, tcp, udp or a number), sourcePorts: text (first, "
     "first-last or any), destinationPorts: text (likewise), target: \"accelerate\"|\"bridge\"|\"drop\", "
     "priority: number, kbit/s: number (0: no limit of its own), acceleration: @switch, status: text (active, nis, "
     "invalid, undefined or a number), notes?: [text] (what the library made of the rule that was asked for)}"},
    {"route", "A static IPv4 route",
     "{destination, mask, gateway, status: text (active, inactive, disabled or a number)}"},
    {"route6", "A static IPv6 route",
     "{destination: text (address/length), gateway, interface, status: text (active, inactive, disabled or a "
     "number)}"},
    {"address", "A management address, or one of the bridge's own",
     "{address, mask: text (of IPv6 the length), interface: text (lan, wan, management, bridge, router, br0 or a "
     "number), status: \"applied\"|\"not applied\"|\"bridge's own\"}"},
    {"account", "An account", "{name, administrator: bool, lastLogin: time, lastPasswordChange: time}"},
    {"event", "An event of the log", "{time: time|number, type, source, user, description}"},
    {"task", "A monitored task", "{task: number, name, pid: number, process: @life}"},
    {"counters", "Counters of an interface",
     "{interface, bytesSent: number, bytesReceived: number, packetsSent: number, packetsReceived: number, "
     "dropsSent: number, dropsReceived: number}"},
    {"qos", "A class of the scheduler",
     "{class, priority: number, bytes: number, packets: number, drops: number, current: number, average: number, "
     "maximum: number, sessions: number}"},
    {"mode", "The operating mode",
     "{mode: text (OPMODE_DUAL_IF and so on), singleInterface: @switch, policyRouting: @switch, lanVlan: number, "
     "wanVlan: number}"},
    {"statistics", "Counters of the engine",
     "{lastResetHundredths: number, accumulationInterval: number, accumulatedIntervals: number, "
     "totalUncompressedDataSize: number, totalCompressedDataSize: number, compressionRatio: number, "
     "filterBytesIn: number, filterBytesOut: number, filterCompressionRatio: number, "
     "maxTcpSessionInitiationsPerSecond: number, maxTcpSessionTerminationsPerSecond: number, "
     "totalTcpSessionRequestsFailed: number, totalTcpSessionsTimedOut: number, totalTcpSegmentsBadChecksum: number}"},
    {"status", "The segment and what can be read of it without waiting",
     "{store: \"present\"|\"absent\"|\"foreign segment under the key\", key?: number, size?: number, "
     "attachedProcesses?: number, lockHeldBy, state?: number, stateName?, configurationFile?}"},
    {"stats", "Counters of the engine, of the interfaces and of the scheduler",
     "{@statistics, uptimeHundredths: number, interfaces: [@counters], qos: [@qos]}"},
    {"sample", "Rates since the sample before",
     "{time: time, reports: number (of the engine), engine: \"reporting\"|\"silent\", perSecond: {*: number|null} "
     "(by "
     "counter), gauges: {*: number}}"},
    {"userRow", "An account beside the machine's password file",
     "{@account, passwordLine: bool (whether it has a line there)}"},
    {"addressInKernel", "An address of a table beside the kernel",
     "{address, interface, table: \"applied\"|\"not applied\", kernel: \"there\"|\"absent\", differs: bool, reason}"},
    {"routeInKernel", "A route of a table beside the kernel",
     "{destination, gateway, table: \"active\"|\"not active\", kernel: \"there\"|\"absent\", differs: bool, reason}"},
    {"savedState", "A file of a saved state", "{kind: \"archive\"|\"script\", file, members: [text]}"},
    {"dump", "The whole store, or the one section that was asked for",
     "{operationalState?, files?: {configFileName, eventLogFileName}, users?: @dumpUsers, config?: {*: any} (fields "
     "of "
     "the configuration record by name), addresses?: [@address], stats?: @statistics, notifications?: {raised: "
     "[number]}, interfaces?: [@counters], qos?: [@qos], tasks?: [@task], sessions?: @dumpSessions, routes?: "
     "[@route], "
     "routes6?: [@route6], rules?: [@rule], events?: @dumpEvents}"},
    {"dumpUsers", "Accounts with their counts", "{userCount: number, adminUserCount: number, accounts: [@account]}"},
    {"dumpEvents", "The event log with its indexes",
     "{eventLogFull: bool, readIndex: number, writeIndex: number, events: [@event]}"},
    {"dumpSessions", "Sessions of the engine", "{sessions: number, interfaces: [{interface, counters: [number]}]}"}};

}  // namespace

std::span<const NamedShape> namedShapes() { return kNamedShapes; }

}  // namespace ctl
