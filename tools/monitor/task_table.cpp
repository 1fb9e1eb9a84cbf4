// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/task_table.h"

#include <algorithm>
#include <sstream>

#include "kestrove/codes.h"

namespace monitor {
namespace {

#define ITEM(member) offsetof(ConfigRecord, member)

// The programs stay in the foreground, as the monitor's children.
constexpr TaskRow kTasks[] = {
    {SHM_TASK_SNMPD, "snmpd", "/usr/sbin/snmpd -f", ITEM(snmpOperState), "/run/snmpd.pid", false},
    {SHM_TASK_HTTPD, "httpd", "/usr/local/apache2/bin/httpd -DFOREGROUND", ITEM(httpOperState),
     "/usr/local/apache2/logs/httpd.pid", false},
    {SHM_TASK_STATSD, "statsd", "", kAlways, "", false},
    {SHM_TASK_SSHD, "sshd", "/usr/sbin/sshd -D", ITEM(sshdOperState), "/run/sshd.pid", false},
    {SHM_TASK_ENGINE, "kestrove", "/usr/sbin/kestrove", ITEM(kestroveOperState), "", true},
};
#undef ITEM

}  // namespace

std::span<const TaskRow> taskTable() { return kTasks; }

const TaskRow* findTask(const std::string& name) {
  const auto* row = std::ranges::find_if(kTasks, [&](const TaskRow& task) { return name == task.name; });
  return row == std::end(kTasks) ? nullptr : row;
}

Wanted wanted(const TaskRow& row, const ConfigRecord& config) {
  if (row.item == kAlways) return Wanted::kOn;
  const uint8_t value = reinterpret_cast<const uint8_t*>(&config)[row.item];
  return value == SHM_ON ? Wanted::kOn : value == SHM_OFF ? Wanted::kOff : Wanted::kUnclear;
}

std::vector<std::string> wordsOf(const std::string& command) {
  std::istringstream stream(command);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

}  // namespace monitor
