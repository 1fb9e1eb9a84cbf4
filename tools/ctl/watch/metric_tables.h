// SPDX-License-Identifier: Apache-2.0
// The families by what they are about.
#pragma once

#include <span>

#include "tools/ctl/watch/metric.h"

namespace ctl {

std::span<const MetricFamily> unitFamilies();     // store, versions, lock, tasks
std::span<const MetricFamily> settingFamilies();  // modes, settings, tables, events
std::span<const MetricFamily> counterFamilies();  // of engine, queues, ports

}  // namespace ctl
