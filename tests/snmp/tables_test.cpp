// SPDX-License-Identifier: Apache-2.0
// The objects and their order, in every width, without an agent.
#include <gmock/gmock.h>

#include <cstring>

#include "tests/support/store.h"
#include "tests/tools/programs.h"
#include "tools/snmp/module.h"
#include "tools/snmp/setting.h"
#include "tools/snmp/wire.h"

namespace kestrove::testing {
namespace {

using snmp::Found;
using snmp::Place;

class SnmpTablesTest : public StoreTest {
 protected:
  std::optional<Found> at(const Place& place) const { return tree_.at(place, *shm); }
  // Everything, as a walk finds it.
  std::vector<Place> walk() const {
    std::vector<Place> places;
    Place place;
    while (const auto found = tree_.behind(place, *shm)) places.push_back(place = found->place());
    return places;
  }
  snmp::Refused set(const Place& place, long value) const {
    const auto found = at(place);
    const auto* bytes = reinterpret_cast<const uint8_t*>(&value);
    const int type = snmp::typeOf(found->leaf->field->kind);
    const snmp::Refused refused = snmp::check(*found, type, sizeof value, *shm);
    return refused ? refused : snmp::set(*found, {bytes, sizeof value}, SHM_SOURCE_SNMP_V3);
  }

  snmp::Tree tree_;
};

TEST_F(SnmpTablesTest, AWalkFindsEachPlaceOnceInOrderAndEachIsThere) {
  shm->routes.slot[7].inUse = shm->routes.slot[9].inUse = 1;
  const std::vector<Place> places = walk();
  EXPECT_GT(places.size(), 150u);
  EXPECT_EQ(places.end(), std::ranges::adjacent_find(places, std::greater_equal<>()));
  for (const Place& place : places) EXPECT_TRUE(at(place)) << ::testing::PrintToString(place);
  EXPECT_THAT(places, ::testing::IsSupersetOf({Place{8, 1, 2, 8}, Place{8, 1, 2, 10}}));
  EXPECT_THAT(places, ::testing::Not(::testing::Contains(Place{8, 1, 2, 9})));
}

TEST_F(SnmpTablesTest, BehindAPlaceThatIsNoneComesTheNext) {
  shm->filterTable.ruleCount = 3;
  EXPECT_EQ((Place{7, 1, 2, 3}), tree_.behind(Place{7, 1, 2, 2}, *shm)->place());
  EXPECT_EQ((Place{7, 1, 2, 3}), tree_.behind(Place{7, 1, 2, 2, 99}, *shm)->place());
  EXPECT_EQ((Place{7, 1, 3, 1}), tree_.behind(Place{7, 1, 2, 3}, *shm)->place());
  EXPECT_EQ((Place{7, 1, 3, 1}), tree_.behind(Place{7, 1, 2, UINT32_MAX}, *shm)->place());
  EXPECT_EQ((Place{7, 1, 2, 1}), tree_.behind(Place{7, 1}, *shm)->place());
  EXPECT_EQ((Place{1, 1, 0}), tree_.behind(Place{}, *shm)->place());
  EXPECT_FALSE(tree_.behind(Place{99}, *shm));
  EXPECT_FALSE(at({7, 1, 2, 4}));
  EXPECT_FALSE(at({7, 1, 2, 0}));
  EXPECT_FALSE(at({7, 1, 1, 1}));
  EXPECT_FALSE(at({1, 1, 1}));
  EXPECT_FALSE(at({1, 1}));
}

TEST_F(SnmpTablesTest, ADamagedCountOfRulesEndsAtTheTable) {
  for (const int32_t count : {INT32_MIN, -1}) {
    shm->filterTable.ruleCount = count;
    EXPECT_FALSE(at({7, 1, 2, 1}));
  }
  shm->filterTable.ruleCount = INT32_MAX;
  EXPECT_TRUE(at({7, 1, 2, SHM_RULES}));
  EXPECT_FALSE(at({7, 1, 2, SHM_RULES + 1}));
}

TEST_F(SnmpTablesTest, ATextWithoutAnEndEndsWithItsField) {
  memset(shm->config.sysName, 'x', sizeof shm->config.sysName);
  EXPECT_EQ(sizeof shm->config.sysName, bytesOf(*at({3, 1, 0}), *shm).size());
}

TEST_F(SnmpTablesTest, ValuesGoThroughTheLibrary) {
  shm->config.snmpOperState = SHM_ON;
  EXPECT_EQ(snmp::kNoError, set({1, 2, 0}, 2048000));
  EXPECT_EQ(2048000u, +shm->config.wanLinkRate);
  EXPECT_EQ(snmp::kWrongValue, set({1, 2, 0}, 1));
  EXPECT_EQ(snmp::kNotWritable, set({1, 6, 0}, 1));
  EXPECT_EQ(snmp::kNoError, set({1, 11, 0}, SHM_OFF));
  EXPECT_EQ(snmp::kNoAccess, set({1, 2, 0}, 1024000));
  EXPECT_EQ(uint32_t{SHM_SOURCE_SNMP_V3}, +shm->eventLog.record[0].source);
}

TEST(SnmpModuleTest, IsTheDocument) {
  EXPECT_EQ(readFile(KESTROVE_MODULE), snmp::moduleText()) << "kestrove-snmp --module >" KESTROVE_MODULE;
}

#ifdef KESTROVE_SMILINT
TEST(SnmpModuleTest, IsClean) {
  const Ran lint = run("SMIPATH=" KESTROVE_MODULES " " KESTROVE_SMILINT " -l 6 " KESTROVE_MODULE);
  EXPECT_EQ("", lint.out + lint.err);
}
#endif

#ifdef KESTROVE_SNMP
TEST(SnmpProgramTest, PrintsItsModuleAndRefusesNonsense) {
  EXPECT_EQ(snmp::moduleText(), run(KESTROVE_SNMP " --module").out);
  EXPECT_EQ(2, run(KESTROVE_SNMP " --nonsense").status);
  EXPECT_EQ(0, run(KESTROVE_SNMP " --help").status);
}
#endif

}  // namespace
}  // namespace kestrove::testing
