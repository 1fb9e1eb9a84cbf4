// SPDX-License-Identifier: Apache-2.0
#include "tests/support/store.h"
#include "tests/support/files.h"

#include <stdlib.h>
#include <string.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

namespace kestrove::testing {
namespace {

constexpr uint32_t kOrdinaryMinRate = 10000;
constexpr uint32_t kOrdinaryMinMtu = 576;

void layOutTables() {
  for (RouteEntry& slot : shm->routes.slot) slot.inUse = slot.next = SHM_NO_SLOT;
  for (Route6Entry& slot : shm->routes6.slot) slot.inUse = slot.next = SHM_NO_SLOT;
  shm->filterTable.ruleCount = 1;
  FilterRule& rule = shm->filterTable.rule[0];
  rule.ipVersion = 4;
  rule.target = 1;
  rule.priority = 8;
  rule.bandwidth = kOrdinaryMinRate;
  rule.accel = 1;
  rule.ruleAction = 3;
}

}  // namespace

void makeStore() {
  for (const char* folder : {"/var/lock", "/etc/config", "/var/log", "/var/log/kestrove"}) mkdir(folder, 0755);
  ASSERT_EQ(0, create_lock_file());
  int id = shmget(SHM_KEY, SHM_SIZE, IPC_CREAT | IPC_EXCL | 0666);
  ASSERT_NE(-1, id) << "a segment is left from before";
  shm = static_cast<ShmData*>(shmat(id, nullptr, 0));
  ASSERT_NE(reinterpret_cast<void*>(-1), static_cast<void*>(shm));
  shm->operationalState = SHM_STATE_OPERATIONAL;
  shm->config.minRate = kOrdinaryMinRate;
  shm->config.minMtu = kOrdinaryMinMtu;
  strcpy(shm->config.configFileName, kConfigFile);
  strcpy(shm->config.eventLogFileName, kEventFile);
  layOutTables();
  shm_errno = 0;
}

void dropStore() {
  int id = shmget(SHM_KEY, 1, 0);
  if (id != -1) shmctl(id, IPC_RMID, nullptr);
  if (shm) shmdt(shm);
  while (shm && shm_lock_count > 0) shm_unlock();
  shm = nullptr;
  shm_lock_count = 0;
}

void setStoreMode(unsigned short mode) {
  const int id = shmget(SHM_KEY, 1, 0);
  struct shmid_ds facts = {};
  ASSERT_EQ(0, shmctl(id, IPC_STAT, &facts));
  facts.shm_perm.mode = mode;
  ASSERT_EQ(0, shmctl(id, IPC_SET, &facts));
}

void StoreTest::SetUp() { makeStore(); }
void StoreTest::TearDown() { dropStore(); }

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

void writeFile(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text;
  ASSERT_TRUE(file.good()) << path;
}

bool fileExists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

}  // namespace kestrove::testing
