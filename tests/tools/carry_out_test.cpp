// SPDX-License-Identifier: Apache-2.0
// Making the settings of the store those of another one.
#include "tools/ctl/settings/carry_out.h"

#include <gmock/gmock.h>
#include <string.h>

#include "tests/support/addresses.h"
#include "tests/support/random_store.h"
#include "tests/support/records.h"
#include "tests/support/save_counter.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ctl::CarryOptions;
using ctl::carryOut;
using ctl::Image;
using ctl::Outcome;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class CarryOut : public StoreTest {
 protected:
  static FilterRule rule(int priority) {
    FilterRule made = {};
    made.ipVersion = SHM_FAMILY_IPV4;
    made.priority = priority;
    made.target = SHM_TARGET_ACCELERATE;
    made.accel = SHM_ON;
    made.ruleAction = SHM_RULE_ACTIVE;
    return made;
  }
  static void addRules(int first, int last) {
    for (int priority = first; priority <= last; ++priority) {
      FilterRule made = rule(priority);
      ASSERT_EQ(0, addRule(shm->filterTable.ruleCount - 1, &made, 0, 0));
    }
  }
  static std::vector<int> priorities() {
    std::vector<int> all;
    for (int i = 0; i + 1 < shm->filterTable.ruleCount; ++i) all.push_back(shm->filterTable.rule[i].priority);
    return all;
  }
  static std::vector<uint32_t> events() {
    std::vector<uint32_t> ids;
    for (uint32_t i = 0; i < shm->eventLog.writeIndex; ++i) ids.push_back(shm->eventLog.record[i].eventId);
    return ids;
  }
  static std::vector<std::string> failures(const Outcome& outcome) {
    std::vector<std::string> all;
    for (const ctl::Step& step : outcome.steps) {
      if (!step.done) all.push_back(step.line + ": " + step.reason);
    }
    return all;
  }

  static ctl::Session operatorSession() {
    ctl::Session session;
    session.source = 4;
    session.user = "operator";
    return session;
  }

  ctl::Session session_ = operatorSession();
};

TEST_F(CarryOut, WhatIsEqualIsNotTouched) {
  addRules(1, 3);
  const Image target(*shm);
  shm->pendingChanges = 0;
  SaveCounter saves;
  const Outcome outcome = carryOut(session_, *target);
  EXPECT_EQ(ctl::kDone, outcome.exit());
  EXPECT_FALSE(outcome.changed);
  EXPECT_EQ(0, saves.count());
  EXPECT_EQ(0, memcmp(&*target, shm, offsetof(ShmData, pendingChanges)));
  EXPECT_EQ(0u, shm->pendingChanges);
}

TEST_F(CarryOut, ManyChangesAreSavedOnceAndToldToTheEngineOnce) {
  addRules(1, 3);
  shm->config.compression = SHM_OFF;
  shm->config.bannerOperState = SHM_OFF;
  shm->config.lanLinkRate = 1000000;
  Image target(*shm);
  target->config.compression = SHM_ON;
  target->config.bannerOperState = SHM_ON;
  target->config.lanLinkRate = 2000000;
  strcpy(target->config.sysName, "north");
  target->filterTable.rule[1].priority = 9;
  target->routes.slot[0] = {quad("10.0.0.0"), quad("255.0.0.0"), quad("1.2.3.4"), SHM_ROUTE_DISABLED, 1, SHM_NO_SLOT};
  shm->pendingChanges = 0;
  SaveCounter saves;
  const Outcome outcome = carryOut(session_, *target);
  EXPECT_EQ(ctl::kDone, outcome.exit());
  EXPECT_TRUE(outcome.changed && outcome.saved);
  EXPECT_TRUE(outcome.left.empty());
  EXPECT_EQ(1, saves.count());
  EXPECT_EQ(uint32_t{SHM_CHANGE_COMPRESSION | SHM_CHANGE_LAN_RATE | SHM_CHANGE_RULES}, shm->pendingChanges);
  EXPECT_THAT(events(), ElementsAre(SHM_EVENT_COMPRESSION_ON));
  EXPECT_EQ(4u, shm->eventLog.record[0].source);
  EXPECT_STREQ("operator", shm->eventLog.record[0].userName);
  EXPECT_EQ(uint32_t{SHM_STATE_OPERATIONAL}, shm->operationalState);
  EXPECT_THAT(readFile("/etc/config/kestrove.conf"), HasSubstr("SYS_NAME                  north\n"));
}

TEST_F(CarryOut, OneRuleAmongManyIsOneStep) {
  addRules(1, 200);
  Image target(*shm);
  FilterRule* rules = target->filterTable.rule;
  memmove(rules + 101, rules + 100, sizeof(FilterRule) * 101);
  rules[100] = rule(1000);
  rules[100].bandwidth = rules[0].bandwidth;
  ++target->filterTable.ruleCount;
  const Outcome outcome = carryOut(session_, *target);
  EXPECT_EQ(1u, outcome.steps.size());
  EXPECT_EQ(1000, shm->filterTable.rule[100].priority);
  EXPECT_EQ(202, shm->filterTable.ruleCount);
  EXPECT_EQ(0, memcmp(target->filterTable.rule, shm->filterTable.rule, sizeof(FilterRule) * 202));
}

TEST_F(CarryOut, RulesComeGoAndChangeInTheirPlaces) {
  addRules(1, 9);
  Image target(*shm);
  FilterRule* rules = target->filterTable.rule;
  const int wanted[] = {10, 2, 3, 30, 31, 5, 8, 9, 11};
  const FilterRule model = rules[0], last = rules[9];
  for (int i = 0; i < 9; ++i) {
    rules[i] = model;
    rules[i].priority = wanted[i];
  }
  rules[9] = last;
  EXPECT_EQ(ctl::kDone, carryOut(session_, *target).exit());
  EXPECT_THAT(priorities(), ::testing::ElementsAreArray(wanted));
}

TEST_F(CarryOut, AFullTableOfRulesIsReplacedByAnother) {
  for (int i = 0; i < SHM_RULES - 1; ++i) shm->filterTable.rule[i] = rule(i + 1);
  shm->filterTable.rule[SHM_RULES - 1] = rule(8);
  shm->filterTable.ruleCount = SHM_RULES;
  Image target(*shm);
  for (int i = 0; i < SHM_RULES - 1; ++i) {
    target->filterTable.rule[i].priority = 20000 - i;
    target->filterTable.rule[i].bandwidth = static_cast<int32_t>(shm->config.minRate);
  }
  const Outcome outcome = carryOut(session_, *target);
  EXPECT_EQ(ctl::kDone, outcome.exit());
  EXPECT_TRUE(outcome.left.empty());
}

TEST_F(CarryOut, WhatTheLibraryRefusesIsNamedAndTheRestIsMade) {
  shm->config.lanMaximumTransferUnit = 1500;
  shm->config.fileBuffering = SHM_OFF;
  shm->config.bannerOperState = SHM_ON;
  Image target(*shm);
  target->config.bannerOperState = SHM_OFF;
  target->config.fileBuffering = 7;  // no setter takes it, and the file has no line for it
  const Outcome outcome = carryOut(session_, *target);
  EXPECT_EQ(9, outcome.exit());
  EXPECT_THAT(failures(outcome), ElementsAre("set fileBuffering 7: Invalid argument"));
  EXPECT_EQ(SHM_OFF, shm->config.bannerOperState);
  EXPECT_EQ(1u, outcome.left.changes.size());
  EXPECT_EQ("fileBuffering", ctl::outcomeJson(outcome)["failed"][0]["key"]);
}

TEST_F(CarryOut, AfterAnErrorNothingMoreIsTriedWhereThatIsWanted) {
  shm->config.fileBuffering = SHM_OFF;
  Image target(*shm);
  target->config.fileBuffering = 7;
  strcpy(target->config.sysName, "north");
  const Outcome outcome = carryOut(session_, *target, {.stopOnError = true});
  EXPECT_EQ(ctl::kRefused, outcome.exit());
  EXPECT_FALSE(outcome.changed);
  EXPECT_STREQ("", shm->config.sysName);
  EXPECT_THAT(failures(outcome), ElementsAre("set fileBuffering 7: Invalid argument", "set sysName north: not tried"));
}

TEST_F(CarryOut, AValueThatOnlyAFileCanGiveComesBack) {
  shm->config.lanLinkRate = 100000;
  shm->config.compression = SHM_ON;
  Image target(*shm);
  target->config.lanLinkRate = 5000;  // below what the item accepts
  target->config.compression = 3;
  EXPECT_EQ(ctl::kDone, carryOut(session_, *target).exit());
  EXPECT_EQ(5000u, shm->config.lanLinkRate);
  EXPECT_EQ(3, shm->config.compression);
}

TEST_F(CarryOut, InConfigurationModeOfSomebodyElseEverythingIsOnlyStored) {
  shm->routes.slot[0] = {quad("10.0.0.0"), quad("255.0.0.0"), quad("1.2.3.4"), SHM_ROUTE_DISABLED, 1, SHM_NO_SLOT};
  Image target(*shm);
  target->routes.slot[0].inUse = SHM_NO_SLOT;
  target->config.compression = SHM_ON;
  shm->operationalState = SHM_STATE_CONFIGURATION;
  SaveCounter saves;
  const Outcome outcome = carryOut(session_, *target);
  EXPECT_EQ(9, outcome.exit());
  EXPECT_EQ("the store is in Configuration Mode", outcome.unsavedReason);
  EXPECT_THAT(failures(outcome),
              ElementsAre("- route add 10.0.0.0/8 1.2.3.4 --disabled: in Configuration Mode no route is removed"));
  EXPECT_EQ(SHM_ON, shm->config.compression);
  EXPECT_EQ(0, saves.count());
  EXPECT_THAT(events(), IsEmpty());
  EXPECT_EQ(uint32_t{SHM_STATE_CONFIGURATION}, shm->operationalState);
}

TEST_F(CarryOut, AUserThatComesBackHasThePasswordThatWasKept) {
  UserAccount account = {};
  strcpy(account.username, "operator");
  account.superUser = SHM_ON;
  ASSERT_EQ(0, addUser(&account, "Secret_99"));
  const Image with(*shm);
  const std::string passwords = readFile("/etc/passwd");
  const size_t at = passwords.find("operator:");
  ASSERT_NE(std::string::npos, at);
  const std::string line = passwords.substr(at, passwords.find('\n', at) - at);
  ASSERT_EQ(1, removeUser("operator"));
  CarryOptions options;
  options.passwordLines["operator"] = line;
  EXPECT_EQ(ctl::kDone, carryOut(session_, *with, options).exit());
  EXPECT_EQ(1, shm->config.adminUserCount);
  EXPECT_EQ(1, authenticateUser("operator", "Secret_99"));
}

TEST_F(CarryOut, AUserWhoseRightsChangeKeepsThePassword) {
  UserAccount account = {};
  strcpy(account.username, "operator");
  account.superUser = SHM_ON;
  ASSERT_EQ(0, addUser(&account, "Secret_99"));
  Image target(*shm);
  target->config.users[0].superUser = SHM_OFF;
  EXPECT_EQ(ctl::kDone, carryOut(session_, *target).exit());
  EXPECT_EQ(int32_t{SHM_OFF}, shm->config.users[0].superUser);
  EXPECT_EQ(0, shm->config.adminUserCount);
  EXPECT_EQ(1, authenticateUser("operator", "Secret_99"));
}

TEST_F(CarryOut, ASaveThatFailsIsToldAndTheStoreHasTheChange) {
  Image target(*shm);
  strcpy(target->config.sysName, "north");
  strcpy(shm->config.configFileName, "/nowhere/kestrove.conf");
  const Outcome outcome = carryOut(session_, *target);
  EXPECT_EQ(ctl::kNotSaved, outcome.exit());
  EXPECT_EQ("/nowhere/kestrove.conf: No such file or directory", outcome.unsavedReason);
  EXPECT_STREQ("north", shm->config.sysName);
}

// No addresses: there are no ports here. No modes: their transitions rename ports and build VLANs.
Image drawn(unsigned seed) {
  drawStore(seed);
  shm->operationalState = SHM_STATE_OPERATIONAL;
  shm->ip6Count = shm->managementAddressCount = 0;
  ConfigRecord& config = shm->config;
  config.singleInterfaceMode = config.pbrOperState = SHM_OFF;
  config.lanVlanId = config.wanVlanId = 0;
  for (auto* field :
       {&config.compression, &config.loggingOperState, &config.snmpOperState, &config.httpOperState,
        &config.cliOperState, &config.kestroveOperState, &config.sshdOperState, &config.bannerOperState}) {
    if (*field == 0) *field = SHM_OFF;
  }
  strcpy(config.configFileName, "/etc/config/kestrove.conf");
  return Image(*shm);
}

TEST_F(CarryOut, FromAnyStoreToAnyOtherAndBack) {
  for (unsigned seed = 0; seed < 12; ++seed) {
    const Image other = drawn(1000 + seed);
    const Image first = drawn(seed);
    const Outcome there = carryOut(session_, *other);
    EXPECT_THAT(failures(there), IsEmpty()) << "seed " << seed;
    EXPECT_EQ("", differenceText(there.left, false)) << "seed " << seed;
    const Outcome back = carryOut(session_, *first);
    EXPECT_EQ("", differenceText(back.left, false)) << "seed " << seed;
    EXPECT_EQ(ctl::settingLines(*first), ctl::settingLines(*shm));
    EXPECT_FALSE(carryOut(session_, *first).changed);
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace kestrove::testing
