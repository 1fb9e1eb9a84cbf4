// SPDX-License-Identifier: Apache-2.0
// A carrying out on its way: for its parts, which stand in carry_*.cpp. The store is held all the time.
#pragma once

#include <set>
#include <string>
#include <unordered_set>

#include "tools/ctl/settings/carry_out.h"

namespace ctl {

class Carrying {
 public:
  Carrying(const Session& session, const ShmData& before, const ShmData& target, const CarryOptions& options,
           const Difference& wanted);

  // Tries one change and notes what came of it; false when it failed, or is not tried any more.
  bool attempt(const SettingChange& change, const std::function<int()>& make);
  // Notes a change that cannot be made.
  void cannot(const SettingChange& change, const std::string& reason);
  // Takes back that a change was made.
  void failed(const SettingChange& change, const std::string& reason);
  void note(const std::string& text) { outcome.notes.push_back(text); }

  std::vector<const SettingChange*> changesOf(const std::string& section) const;
  bool any(const std::string& section) const;
  const SettingChange* changeOf(const std::string& section, const std::string& key) const;
  bool made(const std::string& section, const std::string& key) const { return made_.contains(section + " " + key); }

  bool follows() const { return before.operationalState != SHM_STATE_CONFIGURATION; }
  bool debugging() const { return before.operationalState == SHM_STATE_DEBUG; }

  const Session& session;
  const ShmData& before;
  const ShmData& target;
  const CarryOptions& options;
  const Difference& wanted;
  Outcome outcome;
  std::vector<Gap> gaps = {};     // of the rules
  uint32_t marks = 0;             // for the engine
  bool addressesChanged = false;  // so that gateways may have come or gone
  bool modeChanged = false;       // everything was applied anew

 private:
  bool stopped_ = false;
  std::unordered_set<std::string> made_;  // not the rules, which are many
};

// The parts, in their order.
void removeRules(Carrying& carrying);  // in Configuration Mode
void removeRoutes(Carrying& carrying);
// In Configuration Mode:
void setItems(Carrying& carrying);
void keepVlanIds(Carrying& carrying);
void changeUsers(Carrying& carrying);
void changeAddresses(Carrying& carrying);
void addRoutes(Carrying& carrying);
void addRules(Carrying& carrying);
void driveAddressEvents(Carrying& carrying);
// Outside of it again:
void changeMode(Carrying& carrying);
void setNames(Carrying& carrying);
void applyRoutes(Carrying& carrying);
void logEvents(Carrying& carrying);
void actOnSystem(Carrying& carrying);

// Whether the mode of operation is to be changed: its transition then applies addresses and routes.
bool changesMode(const Carrying& carrying);
// A line of a configuration file, for values that the store may hold and no setter takes.
bool loadKeyword(const std::string& keyword, const std::string& value);

}  // namespace ctl
