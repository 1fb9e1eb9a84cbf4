// SPDX-License-Identifier: Apache-2.0
// The history on both sides of a change: what others did before it, and what it did itself.
#pragma once

#include <optional>
#include <string>

#include "kestrove/segment.h"
#include "tools/ctl/history/revisions.h"
#include "tools/ctl/settings/image.h"

namespace ctl {

// Tells apart two states of the tables that settings are made from; it also differs where no setting does.
std::string fingerprintOf(const ShmData& store);

class Ledger {
 public:
  // With the attached store held, in front of the change: notes what was changed past kestrovectl.
  void open(const Home* home);
  // The settings that the change is to lead to, as they stand in a file.
  const std::string& aim(const Image& target);
  // Behind it, still held: whether a setting is another one.
  bool changed(const ShmData& store = *shm);
  // Notes the change; its number, or 0 where it could not be written.
  int close(const Home* home, const Revision& revision, const ShmData& store = *shm);

  const std::string& before() const { return before_; }    // the settings in front of the change
  const std::string& missing() const { return missing_; }  // why a revision could not be written

 private:
  int add(const Home* home, const Revision& revision, const std::string& body, const std::string& fingerprint);

  std::string bodyBehind(const ShmData& store) const;

  std::optional<Image> aim_;
  std::string aimedBody_;
  std::string before_;       // empty until somebody needs it
  std::string sum_;          // of the settings before
  std::string fingerprint_;  // of the tables before
  std::string after_;        // empty where the tables are the same
  std::string missing_;
};

std::string runningBody(const ShmData& store = *shm);

}  // namespace ctl
