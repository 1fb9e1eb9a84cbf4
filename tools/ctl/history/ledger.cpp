// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/ledger.h"

#include <algorithm>
#include <cinttypes>
#include <cstddef>
#include <cstring>

#include "kestrove/segment.h"

namespace ctl {
namespace {

// Word by word: the tables are more than half a megabyte.
class Mixer {
 public:
  void take(const void* from, size_t length) {
    const char* bytes = static_cast<const char*>(from);
    for (size_t at = 0; at < length; at += sizeof(uint64_t)) {
      uint64_t word = 0;
      memcpy(&word, bytes + at, std::min(sizeof word, length - at));
      sum_ = (sum_ ^ word) * 0x9e3779b97f4a7c15u;
      sum_ ^= sum_ >> 29;
    }
  }
  std::string text() const {
    char digits[17];
    snprintf(digits, sizeof digits, "%016" PRIx64, sum_);
    return digits;
  }

 private:
  uint64_t sum_ = 0xcbf29ce484222325u;
};

size_t rulesInUse(const FilterTable& table) {
  return static_cast<size_t>(std::clamp<int32_t>(table.ruleCount, 0, SHM_RULES));
}

constexpr char kFirst[] = "the settings that kestrovectl found";

}  // namespace

std::string fingerprintOf(const ShmData& store) {
  Mixer mixer;
  const char* bytes = reinterpret_cast<const char*>(&store);
  mixer.take(bytes + offsetof(ShmData, config), offsetof(ShmData, filterTable) - offsetof(ShmData, config));
  mixer.take(&store.filterTable.ruleCount, sizeof store.filterTable.ruleCount);
  mixer.take(store.filterTable.rule, rulesInUse(store.filterTable) * sizeof(FilterRule));
  mixer.take(store.ddupStartupOptions, sizeof store.ddupStartupOptions);
  return mixer.text();
}

std::string runningBody(const ShmData& store) { return bodyOf(settingLines(store)); }

void Ledger::open(const Home* home) {
  fingerprint_ = fingerprintOf(*shm);
  std::optional<Revisions::Newest> newest;
  try {
    if (home) newest = Revisions(*home).newest();
  } catch (const Refusal& refusal) {
    missing_ = refusal.what();
  }
  if (newest && newest->fingerprint == fingerprint_) {
    sum_ = newest->sum;
    return;
  }
  before_ = runningBody();
  sum_ = sumOf(before_);
  if (newest && newest->sum == sum_) return;
  add(home, {.source = kOutside, .comment = newest ? "" : kFirst}, before_, fingerprint_);
}

bool Ledger::changed(const ShmData& store) {
  if (fingerprintOf(store) == fingerprint_) return false;
  after_ = runningBody(store);
  return sumOf(after_) != sum_;
}

int Ledger::close(const Home* home, const Revision& revision, const ShmData& store) {
  if (after_.empty()) after_ = runningBody(store);
  return add(home, revision, after_, fingerprintOf(store));
}

int Ledger::add(const Home* home, const Revision& revision, const std::string& body, const std::string& fingerprint) {
  if (!home) return 0;
  try {
    return Revisions(*home).add(revision, body, fingerprint);
  } catch (const Refusal& refusal) {
    missing_ = refusal.what();
    return 0;
  }
}

}  // namespace ctl
