// SPDX-License-Identifier: Apache-2.0
// What commands that only read have printed, as long as the store is to the byte what it was: who asks again
// needs neither the lock, which somebody may hold, nor the work. One set a process.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/api/command.h"

namespace api {

struct KeptTable {
  std::string text;
  std::string tag;  // as it stands in ETag
};

enum class MadeOf {
  kStore,  // alone, and of nothing that is counted
  kMore    // of counters, processes, the kernel and clocks, too: it is known for a second at most
};

// What the words would print now; nothing where that is not known. The store is compared without its lock: a change
// that is under way when nothing differs yet is one that came later.
std::optional<KeptTable> keptTable(const std::vector<std::string>& words, MadeOf made = MadeOf::kStore);

// Whether runAndKeep has printed them since the store last changed, be it that the text was too long to be kept.
bool printedSince(const std::vector<std::string>& words);

// Runs the words and keeps what they print; of all items together what each of them would print, too.
Printed runAndKeep(const ctl::Session& session, const std::vector<std::string>& words, MadeOf made = MadeOf::kStore);

}  // namespace api
