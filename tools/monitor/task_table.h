// SPDX-License-Identifier: Apache-2.0
// The tasks that are watched, one row each.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "kestrove/layout.h"

namespace monitor {

constexpr size_t kAlways = SIZE_MAX;

struct TaskRow {
  int slot;
  const char* name;     // as the store's tables have it
  const char* command;  // words apart by blanks; empty for none
  size_t item;          // place of the switch in the configuration record, or kAlways
  const char* pidFile;  // where it says its process id when somebody else started it; empty for none
  bool isEngine;        // takes its slot itself when it is ready, is counted, and works on the store that it found
};

std::span<const TaskRow> taskTable();

// Of a task by its name; null for none.
const TaskRow* findTask(const std::string& name);

// Whether the switch is on, is off, or says neither.
enum class Wanted { kOn, kOff, kUnclear };
Wanted wanted(const TaskRow& row, const ConfigRecord& config);

std::vector<std::string> wordsOf(const std::string& command);

}  // namespace monitor
