// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/ledger.h"

#include <algorithm>
#include <cstddef>

#include "kestrove/segment.h"
#include "tools/ctl/history/mixer.h"
#include "tools/ctl/settings/difference.h"

namespace ctl {
namespace {

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

const std::string& Ledger::aim(const Image& target) {
  aim_ = target;
  aimedBody_ = bodyOf(settingLines(*target));
  return aimedBody_;
}

bool Ledger::changed(const ShmData& store) {
  if (fingerprintOf(store) == fingerprint_) return false;
  after_ = bodyBehind(store);
  return sumOf(after_) != sum_;
}

// Most changes arrive where they aimed; that is seen sooner than all of it is written down again.
std::string Ledger::bodyBehind(const ShmData& store) const {
  return aim_ && compare(store, **aim_).empty() ? aimedBody_ : runningBody(store);
}

int Ledger::close(const Home* home, const Revision& revision, const ShmData& store) {
  if (after_.empty()) after_ = bodyBehind(store);
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
