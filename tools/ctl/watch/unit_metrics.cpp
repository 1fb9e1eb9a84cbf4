// SPDX-License-Identifier: Apache-2.0
// Metrics of the store as a whole, its lock, the versions, the tasks.
#include <inttypes.h>
#include <sys/stat.h>

#include "kestrove/kestrove.h"
#include "tools/ctl/check.h"
#include "tools/ctl/rows.h"
#include "tools/ctl/watch/metric_tables.h"

namespace ctl {
namespace {

constexpr double kHundredths = 100;

std::string hexadecimal(uint64_t number) {
  char text[17];
  snprintf(text, sizeof text, "%016" PRIx64, number);
  return text;
}

void up(const MetricFacts& facts, Metrics& out) { out.add(facts.store.has_value()); }

void library(const MetricFacts&, Metrics& out) {
  out.add(true, {{"version", kestrove_version()}, {"layout", hexadecimal(kestrove_layout_hash())}});
}

void unit(const MetricFacts& facts, Metrics& out) {
  const ConfigRecord& config = (*facts.store)->config;
  const uint8_t(&id)[4] = config.gatewayId;
  char gateway[9];
  snprintf(gateway, sizeof gateway, "%02X%02X%02X%02X", id[0], id[1], id[2], id[3]);
  out.add(true, {{"unit", text(config.unitId)},
                 {"product", getProductName(config.productId)},
                 {"platform", std::to_string(config.hardwarePlatform)},
                 {"gateway", gateway},
                 {"name", text(config.sysName)},
                 {"location", text(config.sysLocation)}});
}

void engineVersion(const MetricFacts& facts, Metrics& out) {
  const ConfigRecord& config = (*facts.store)->config;
  out.add(true, {{"version", text(config.kestroveVersion)}, {"full_version", text(config.kestroveFullVersion)}});
}

void protocolEngineVersion(const MetricFacts& facts, Metrics& out) {
  const ConfigRecord& config = (*facts.store)->config;
  out.add(true, {{"version", text(config.drelmVersion)}, {"full_version", text(config.drelmFullVersion)}});
}

void segmentBytes(const MetricFacts& facts, Metrics& out) { out.add(facts.segmentBytes); }

void attached(const MetricFacts& facts, Metrics& out) { out.add(facts.attachedProcesses); }

void uptime(const MetricFacts& facts, Metrics& out) { out.add(facts.uptimeHundredths / kHundredths); }

bool held(const MetricFacts& facts) { return facts.lock.state == tools::LockState::kHeld; }

void lockHeld(const MetricFacts& facts, Metrics& out) { out.add(held(facts)); }

void lockHolder(const MetricFacts& facts, Metrics& out) {
  if (!held(facts)) return;
  out.add(true, {{"program", facts.lock.holder.name}, {"state", facts.lock.holder.stopped ? "stopped" : "running"}});
}

void lockWaiters(const MetricFacts& facts, Metrics& out) { out.add(uint64_t{facts.lockWaiters}); }

// Each task with what of it is asked.
template <typename Value>
void forTasks(const MetricFacts& facts, Metrics& out, Value value) {
  int32_t pids[SHM_TASKS];
  for (int i = 0; i < SHM_TASKS; ++i) pids[i] = (*facts.store)->taskPids[i];
  for (const Json& task : taskTable(pids)) out.add(value(task), {{"task", task["name"].get<std::string>()}});
}

void tasksUp(const MetricFacts& facts, Metrics& out) {
  forTasks(facts, out, [](const Json& task) { return task["process"] == "alive"; });
}

void tasksRegistered(const MetricFacts& facts, Metrics& out) {
  forTasks(facts, out, [](const Json& task) { return task["pid"].get<int>() > 0; });
}

void failedStarts(const MetricFacts& facts, Metrics& out) { out.add(+(*facts.store)->config.kestroveRestartCount); }

void failedBoots(const MetricFacts& facts, Metrics& out) { out.add(+(*facts.store)->config.kestroveRebootCount); }

void findings(const MetricFacts& facts, Metrics& out) {
  std::vector<std::pair<std::string, uint64_t>> tables;
  for (const Finding& finding : checkStore(**facts.store)) {
    if (tables.empty() || tables.back().first != finding.table) tables.emplace_back(finding.table, 0);
    ++tables.back().second;
  }
  uint64_t all = 0;
  for (const auto& [table, count] : tables) {
    out.add(count, {{"table", table}});
    all += count;
  }
  out.add(all, {{"table", "all"}});
}

struct stat configurationFile(const MetricFacts& facts) {
  struct stat file = {};
  if (stat(text((*facts.store)->config.configFileName).c_str(), &file) != 0) return {};
  return file;
}

void savedAt(const MetricFacts& facts, Metrics& out) {
  const struct stat file = configurationFile(facts);
  if (file.st_mtime != 0) out.add(int64_t{file.st_mtime});
}

void savedBytes(const MetricFacts& facts, Metrics& out) {
  const struct stat file = configurationFile(facts);
  if (file.st_mtime != 0) out.add(int64_t{file.st_size});
}

constexpr MetricFamily kFamilies[] = {
    {"kestrove_up", "gauge", "Whether the store could be read.", up, false},
    {"kestrove_library_info", "gauge", "Version of the library and number of its layout.", library, false},
    {"kestrove_unit_info", "gauge", "Who this unit is.", unit},
    {"kestrove_engine_info", "gauge", "Version of the engine.", engineVersion},
    {"kestrove_protocol_engine_info", "gauge", "Version of the protocol engine.", protocolEngineVersion},
    {"kestrove_host_uptime_seconds", "gauge", "Time since the kernel started.", uptime, false},
    {"kestrove_segment_size_bytes", "gauge", "Size of the store's segment; 0 without one.", segmentBytes, false},
    {"kestrove_segment_attached_processes", "gauge", "Processes that have the segment attached.", attached, false},
    {"kestrove_lock_held", "gauge", "Whether another process held the store's lock when it was looked at.", lockHeld,
     false},
    {"kestrove_lock_holder_info", "gauge", "Who held it.", lockHolder, false},
    {"kestrove_lock_waiting_processes", "gauge", "Processes that waited for it.", lockWaiters, false},
    {"kestrove_task_up", "gauge", "Whether the process of a monitored task is there.", tasksUp},
    {"kestrove_task_registered", "gauge", "Whether a monitored task has a process number in the store.",
     tasksRegistered},
    {"kestrove_engine_failed_starts", "gauge", "Starts of the engine in a row that failed.", failedStarts},
    {"kestrove_engine_failed_boots", "gauge", "Reboots in a row because the engine would not start.", failedBoots},
    {"kestrove_store_findings", "gauge", "Invariants that a table of the store breaks, and all of them together.",
     findings},
    {"kestrove_configuration_file_modified_timestamp_seconds", "gauge", "When the configuration file was last written.",
     savedAt},
    {"kestrove_configuration_file_size_bytes", "gauge", "Size of the configuration file.", savedBytes}};

}  // namespace

std::span<const MetricFamily> unitFamilies() { return kFamilies; }

}  // namespace ctl
