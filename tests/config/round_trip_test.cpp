// SPDX-License-Identifier: Apache-2.0
// Random stores, saved and read back.
#include <string.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/config_span.h"
#include "tests/support/files.h"
#include "tests/support/random_store.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr unsigned kSeeds = 1000;

TEST(RoundTripTest, RandomStoresComeBackInEveryFieldThatTheFileCarries) {
  auto saved = std::make_unique<ShmData>();
  ::testing::internal::CaptureStdout();  // IPv6 rules are announced there
  for (unsigned seed = 0; seed < kSeeds && !::testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    drawStore(seed);
    EXPECT_EQ(0, write_shared_memory());
    memcpy(saved.get(), shm, sizeof *shm);
    std::string text = readFile(kConfigFile);
    makeFreshStore();
    EXPECT_EQ(0, load_shared_memory(kConfigFile));
    expectSameStore(*saved);
    EXPECT_EQ(0, write_shared_memory());
    EXPECT_TRUE(text == readFile(kConfigFile)) << "the second file differs";
  }
  dropStore();
  ::testing::internal::GetCapturedStdout();
}

// What may make something else of a value: ends of lines and columns, comments, keywords, empty and overlong texts.
std::string oddText(std::mt19937& random, size_t width) {
  static const std::vector<std::string> pieces = {"\n",
                                                  "\r",
                                                  " ",
                                                  "\t",
                                                  "#",
                                                  std::string(1, '\0'),
                                                  "\n\n",
                                                  "\nSSHD 1\n",
                                                  "\r\nPBR 1",
                                                  "\nADMIN_USERNAME mallory\n",
                                                  " 1 0 0",
                                                  "\t1 1 1",
                                                  "\nUSER_ACCOUNT mallory 1 0 0\n",
                                                  "name",
                                                  "alice",
                                                  "\v\f",
                                                  "\xff",
                                                  "'\"`$;"};
  std::string text;
  while (text.size() < width && random() % 8 != 0) {
    text += random() % 4 == 0 ? std::string(1, static_cast<char>(random())) : pieces[random() % pieces.size()];
  }
  text.resize(width);
  return text;
}

// This store, saved and read back into a fresh one.
std::unique_ptr<ShmData> readBack() {
  EXPECT_EQ(0, write_shared_memory());
  makeFreshStore();
  EXPECT_EQ(0, load_shared_memory(kConfigFile));
  auto store = std::make_unique<ShmData>();
  memcpy(store.get(), shm, sizeof *shm);
  return store;
}

constexpr ConfigSpan kTextFields[] = {CONFIG_SPAN(lanInterfaceName), CONFIG_SPAN(wanInterfaceName),
                                      CONFIG_SPAN(sysName), CONFIG_SPAN(sysLocation), CONFIG_SPAN(sysContact)};

// Whatever bytes a text holds, saved and read back it changes no other byte of the store.
TEST(RoundTripTest, AnyTextComesBackAsItselfAtMost) {
  ::testing::internal::CaptureStdout();
  std::mt19937 random(1);
  for (unsigned seed = 0; seed < 200 && !::testing::Test::HasFailure(); ++seed) {
    for (const ConfigSpan& field : kTextFields) {
      SCOPED_TRACE(field.name + std::to_string(seed));
      drawStore(seed);
      memset(fieldOf(*shm, field), 0, field.width);
      auto empty = readBack();
      drawStore(seed);
      const std::string text = oddText(random, field.width);
      memcpy(fieldOf(*shm, field), text.data(), field.width);
      auto odd = readBack();
      memset(fieldOf(*odd, field), 0, field.width);
      memset(fieldOf(*empty, field), 0, field.width);
      EXPECT_EQ(0, memcmp(empty.get(), odd.get(), sizeof *odd)) << ::testing::PrintToString(text);
    }
  }
  dropStore();
  ::testing::internal::GetCapturedStdout();
}

// The account of a slot leaves the table.
void takeOff(ShmData& store, int slot) {
  ConfigRecord& config = store.config;
  if (config.users[slot].superUser == SHM_ON) --config.adminUserCount;
  memmove(config.users + slot, config.users + slot + 1,
          static_cast<size_t>(SHM_USERS - 1 - slot) * sizeof(UserAccount));
  config.users[SHM_USERS - 1] = {};
  --config.userCount;
}

int slotOf(const ShmData& store, const std::string& name) {
  for (int slot = 0; slot < store.config.userCount; ++slot) {
    if (strncmp(store.config.users[slot].username, name.c_str(), sizeof(UserAccount::username)) == 0) return slot;
  }
  return -1;
}

// An account with any name comes back under what a column can hold of that, or not at all; with its own values, and
// beside the others as they were.
TEST(RoundTripTest, AnyUserNameComesBackAsItselfAtMost) {
  ::testing::internal::CaptureStdout();
  std::mt19937 random(2);
  int back = 0;
  for (unsigned seed = 0; seed < 1000 && !::testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    drawStore(seed);
    if (shm->config.userCount == 0) continue;
    const int slot = static_cast<int>(random() % static_cast<unsigned>(shm->config.userCount));
    const UserAccount account = shm->config.users[slot];
    takeOff(*shm, slot);
    auto without = readBack();
    drawStore(seed);
    std::string name = oddText(random, sizeof account.username);
    if (seed % 2) name = ("alice" + name).substr(0, sizeof account.username);
    memcpy(shm->config.users[slot].username, name.data(), name.size());
    auto odd = readBack();
    const int found = slotOf(*odd, name.substr(0, name.find_first_of(std::string(" \t\n\0", 4))));
    if (found >= 0) {
      ++back;
      EXPECT_EQ(account.superUser, odd->config.users[found].superUser);
      EXPECT_EQ(account.lastLoginSeconds, odd->config.users[found].lastLoginSeconds);
      EXPECT_EQ(account.lastPasswdChange, odd->config.users[found].lastPasswdChange);
      takeOff(*odd, found);
    }
    EXPECT_EQ(0, memcmp(without.get(), odd.get(), sizeof *odd)) << ::testing::PrintToString(name);
  }
  EXPECT_GT(back, 100);
  dropStore();
  ::testing::internal::GetCapturedStdout();
}

constexpr char kEveryTable[] =
    "USER_ACCOUNT someone 1 0 0\nMANAGEMENT_ADDR_6 fd00::1 64\nMANAGEMENT_ADDR 4 10.1.1.1 255.0.0.0 4\n"
    "MANAGEMENT_ADDR 6 fd00::2 64 4\nROUTE 10.1.0.0 255.255.0.0 10.0.0.1 1\nROUTE6 2001:db8:: 32 fd00::3 1\n"
    "SELEC_ACCEL_ANY 6 0 0 80 80 1 NONE 20000 1 3\nBRIDGE_ADDR 10.2.2.2\nBRIDGE_MASK 255.255.0.0\nSYS_NAME name\n";

// Whatever stands in the store, a save and a load keep to their tables and come back.
TEST(RoundTripTest, StoresOfRandomBytesAreSavedAndLoadedWithoutHarm) {
  makeStore();
  writeFile("/tmp/input.conf", kEveryTable);
  for (unsigned seed = 0; seed < 100; ++seed) {
    std::mt19937 random(seed);
    uint32_t words[sizeof(ShmData) / sizeof(uint32_t)];
    for (uint32_t& word : words) word = static_cast<uint32_t>(random());
    memcpy(static_cast<void*>(shm), words, sizeof *shm);
    memcpy(shm->config.configFileName, kConfigFile, sizeof kConfigFile);
    if (seed % 2) shm->filterTable.ruleCount = static_cast<int32_t>(random() % 8192);
    shm->routes.head = shm->routes6.head6 = seed;
    for (RouteEntry& slot : shm->routes.slot) slot.inUse = 1, slot.next %= 1100;
    for (Route6Entry& slot : shm->routes6.slot) slot.inUse = 1, slot.next %= 1100;
    EXPECT_EQ(0, write_shared_memory());
    uint32_t state = shm->operationalState;
    EXPECT_EQ(0, load_shared_memory("/tmp/input.conf"));
    EXPECT_EQ(state, shm->operationalState);
    EXPECT_EQ(0, memcmp(shm->config.sysName, "name", 5));
  }
  dropStore();
}

}  // namespace
}  // namespace kestrove::testing
