// SPDX-License-Identifier: Apache-2.0
// The records of the store as JSON rows, for the list commands and the dump alike.
#pragma once

#include "kestrove/layout.h"
#include "tools/ctl/session.h"

namespace ctl {

Json userRow(const UserAccount& account);
Json ruleRow(int position, const FilterRule& rule);
Json managementRow(const ManagementAddress& entry);
Json address6Row(const Ip6Address& entry);
Json routeRow(const RouteEntry& route);
Json route6Row(const Route6Entry& route);
Json qosTable(const QosRow (&rows)[SHM_QOS_ROWS]);
Json interfaceCounterRow(const char* name, const InterfaceCounters& counters);
Json statisticsObject(const StatisticsBlock& block);
Json pendingNames(uint32_t bits);  // of changes that the engine has not fetched
Json taskTable(const int32_t (&pids)[SHM_TASKS]);

const char* processLife(int pid);  // "none", "alive" or "dead"

}  // namespace ctl
