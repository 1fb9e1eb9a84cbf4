// SPDX-License-Identifier: Apache-2.0
// What a manager reads, and what becomes of it while the agent, the store or its lock is away.
#include <sys/shm.h>

#include <chrono>

#include "tests/snmp/manager.h"
#include "tests/snmp/snmp_fixture.h"
#include "tests/support/peer.h"
#include "tools/snmp/objects.h"

namespace kestrove::testing {
namespace {

class SnmpReadTest : public SnmpTest {};

TEST_F(SnmpReadTest, TablesHaveTheRowsThatAreThere) {
  EXPECT_EQ(1, walked(".7.1.2"));
  shm->filterTable.ruleCount = SHM_RULES;
  EXPECT_EQ(SHM_RULES, walked(".7.1.2"));
  shm->filterTable.ruleCount = -1;
  EXPECT_EQ("No Such Instance currently exists at this OID\n", get(".7.1.2.1"));
  shm->routes.slot[5].inUse = 1;
  shm->routes.slot[5].destination = inet_addr("10.1.0.0");
  EXPECT_EQ("10.1.0.0\n", ask("snmpwalk", "public", std::string(kObjects) + ".8.1.2"));
  strcpy(shm->config.users[0].username, "admin");
  shm->config.userCount = 1;
  EXPECT_EQ("\"admin\"\n", ask("snmpwalk", "public", std::string(kObjects) + ".10"));
  EXPECT_EQ(SHM_QOS_ROWS, walked(".12.1.2"));
  EXPECT_EQ(SHM_TASKS, walked(".13"));
}

TEST_F(SnmpReadTest, CountersOfSixtyFourBitsAreWhole) {
  shm->qos[0].bytesSent = 0x123456789ABCDEF0;
  EXPECT_EQ("1311768467463790320\n", get(".12.1.3.1"));
}

TEST_F(SnmpReadTest, WithoutAStoreThereIsNothingAndWithANewOneItsValues) {
  dropStore();
  EXPECT_TRUE(eventually([] { return get(kWanRate) != "4096000\n"; }));
  makeStore();
  shm->config.wanLinkRate = 64000;
  EXPECT_TRUE(eventually([] { return get(kWanRate) == "64000\n"; }));
}

TEST_F(SnmpReadTest, AStoreThatCannotBeUsedIsNamed) {
  dropStore();
  EXPECT_TRUE(said("there is no store (shm-init builds it): managers are shown nothing"));
  const int foreign = shmget(SHM_KEY, 4096, IPC_CREAT | 0600);
  ASSERT_NE(-1, foreign);
  EXPECT_TRUE(said("the segment under the store's key is no store: managers are shown nothing"));
  EXPECT_EQ(0, shmctl(foreign, IPC_RMID, nullptr));
  agent_.reset();
  makeStore();
  setStoreMode(0);
  agent_ = std::make_unique<Program>(withoutRight("-ipc_owner", {KESTROVE_SNMP, "--master", "/tmp/agentx"}));
  EXPECT_TRUE(said("the store: Permission denied: managers are shown nothing"));
  setStoreMode(0600);
  shm->config.wanLinkRate = 64000;
  EXPECT_TRUE(eventually([] { return get(kWanRate) == "64000\n"; }));
}

TEST_F(SnmpReadTest, AStoppedHolderOfTheLockDoesNotStopReading) {
  strcpy(shm->config.sysName, "a name");
  ASSERT_EQ(0, shm_lock());
  EXPECT_EQ("4096000\n", get(kWanRate));
  EXPECT_EQ("\"a name\"\n", get(".3.1.0"));
  EXPECT_THAT(set(kWanRate, "u 2048000"), ::testing::HasSubstr("resourceUnavailable"));
  EXPECT_EQ(0, shm_unlock());
}

std::vector<Oid> columnsOf(const snmp::Table& table) {
  std::vector<Oid> columns;
  for (oid column = 2; column < table.columns.size() + 2; ++column) {
    columns.push_back({1, 3, 6, 1, 4, 1, 32473, 1, 1, table.arc, 1, column});
  }
  return columns;
}

void fillTables() {
  shm->filterTable.ruleCount = SHM_RULES;
  for (RouteEntry& slot : shm->routes.slot) slot.inUse = 1;
  for (Route6Entry& slot : shm->routes6.slot) slot.inUse = 1;
  shm->config.userCount = SHM_USERS;
}

TEST_F(SnmpReadTest, FullTablesAreReadWhole) {
  fillTables();
  Manager manager("127.0.0.1:1161");
  const auto before = std::chrono::steady_clock::now();
  for (const snmp::Table& table : snmp::tables()) {
    EXPECT_EQ(static_cast<long>(table.most * table.columns.size()), manager.walk(columnsOf(table))) << table.name;
  }
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - before;
  printf("full tables: %.2f s\n", time.count());
  if (getenv("KESTROVE_MASTER_KILLS")) {
    EXPECT_LT(time.count(), 2);
  }
}

// Fields that need the lock, one after the other: whoever wants it in between gets it many times over.
TEST_F(SnmpReadTest, WhoWaitsForTheLockGetsItWhileAWalkGoesOn) {
  shm->filterTable.ruleCount = SHM_RULES;
  Program walk(
      {"/bin/sh", "-c",
       "exec snmpbulkwalk -v2c -c public -Cr50 -t 30 127.0.0.1:1161 " + std::string(kObjects) + ".7.1.7 >/tmp/walk"});
  ASSERT_TRUE(eventually([] { return !readFile("/tmp/walk").empty(); }));
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(0, shm_lock());
    ASSERT_EQ(0, shm_unlock());
  }
  EXPECT_TRUE(walk.lives());
  EXPECT_EQ(0, walk.status());
}

// As many times as somebody asks: KESTROVE_MASTER_KILLS. Times are held then alone, on a machine that does nothing
// else.
TEST_F(SnmpReadTest, AMasterThatWasKilledGetsItsSubagentBack) {
  const char* asked = getenv("KESTROVE_MASTER_KILLS");
  for (int i = asked ? atoi(asked) : 3; i > 0; --i) {
    master_->end(SIGKILL);
    startMaster(kConfiguration);
    const time_t before = time(nullptr);
    ASSERT_TRUE(answers());
    if (asked) {
      printf("registered again within %ld s\n", static_cast<long>(time(nullptr) - before));
      ASSERT_LE(time(nullptr) - before, 20);
    }
  }
}

TEST_F(SnmpReadTest, ItEndsWhenItIsTold) { EXPECT_EQ(0, agent_->end()); }

}  // namespace
}  // namespace kestrove::testing
