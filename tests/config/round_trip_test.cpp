// Random stores, saved and read back.
#include <string.h>

#include <memory>
#include <random>

#include "tests/support/random_store.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr char kFile[] = "/etc/config/kestrove.conf";
constexpr unsigned kSeeds = 1000;

TEST(RoundTripTest, RandomStoresComeBackInEveryFieldThatTheFileCarries) {
  auto saved = std::make_unique<ShmData>();
  ::testing::internal::CaptureStdout();  // IPv6 rules are announced there
  for (unsigned seed = 0; seed < kSeeds && !::testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    drawStore(seed);
    EXPECT_EQ(0, write_shared_memory());
    memcpy(saved.get(), shm, sizeof *shm);
    std::string text = readFile(kFile);
    makeFreshStore();
    EXPECT_EQ(0, load_shared_memory(kFile));
    expectSameStore(*saved);
    EXPECT_EQ(0, write_shared_memory());
    EXPECT_TRUE(text == readFile(kFile)) << "the second file differs";
  }
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
    memcpy(shm->config.configFileName, kFile, sizeof kFile);
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
