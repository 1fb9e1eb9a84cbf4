// SPDX-License-Identifier: Apache-2.0
// What the command line says.
#pragma once

#include <string>
#include <vector>

#include "tools/monitor/task.h"

namespace monitor {

// Beside those that every service has.
enum Exit { kDone = 0, kAnother = 1, kSystem = 5, kNotPermitted = 7 };

struct Options {
  std::vector<std::string> tasks;  // "NAME=COMMAND"
  std::string metrics = "/var/lib/prometheus/node-exporter/kestrove.prom";
  std::string folder = "/run/kestrove";
  int every = 15;  // seconds between the looks of the helper
  bool misc = false;
  Limits limits;
};

}  // namespace monitor
