// SPDX-License-Identifier: Apache-2.0
// The dump: texts at their borders, damaged tables, streams, the lock.
#include <random>

#include "tests/dump/dump_fixture.h"
#include "tests/support/peer.h"

namespace kestrove::testing {
namespace {

class Dump : public StoreTest {};

TEST_F(Dump, UsersWithoutNameAreLeftOut) {
  EXPECT_EQ(
      "  userCount: \t\t\t0\n"
      "  adminUserCount: \t\t0\n"
      "  User Accounts:\n"
      "Username                         superUser  lastLogin  lastPasswdChange\n"
      "-------------------------------  ---------  ---------  ----------------\n",
      section("Users"));
}

TEST_F(Dump, TextsEndAtTheirFields) {
  ConfigRecord& config = shm->config;
  struct Text {
    const char* label;
    char* place;
    size_t width;
  };
  const Text texts[] = {{"unitId", config.unitId, 256},
                        {"httpEncryptedId", config.httpEncryptedId, 256},
                        {"ddupStartupOptions", shm->ddupStartupOptions, 256},
                        {"physicalLanInterfaceName", config.physicalLanInterfaceName, 16},
                        {"lanInterfaceName", config.lanInterfaceName, 16},
                        {"physicalWanInterfaceName", config.physicalWanInterfaceName, 16},
                        {"wanInterfaceName", config.wanInterfaceName, 16},
                        {"sysName", config.sysName, 256},
                        {"sysLocation", config.sysLocation, 256},
                        {"sysContact", config.sysContact, 256},
                        {"sysDescription", config.sysDescription, 256}};
  for (const Text& text : texts) memset(text.place, 'x', text.width);
  for (const Text& text : texts) EXPECT_EQ(std::string(text.width, 'x'), value(text.label)) << text.label;
  memset(config.kestroveFullVersion, 'f', 64);
  memset(config.kestroveVersion, 's', 64);
  memset(config.drelmFullVersion, 'F', 64);
  memset(config.drelmVersion, 'S', 64);
  EXPECT_EQ(std::string(64, 'f') + " (" + std::string(64, 's') + ")", value("kestroveVersion"));
  EXPECT_EQ(std::string(64, 'F') + " (" + std::string(64, 'S') + ")", value("drelmVersion"));
  memset(config.configFileName, 'c', 128);
  memset(config.eventLogFileName, 'e', 128);
  EXPECT_EQ("Config file: \t\t\t" + std::string(128, 'c') + "\nEvent log file: \t\t" + std::string(128, 'e') + "\n",
            section("Files"));
}

TEST_F(Dump, EmptyRouteTablesHaveTheirHeadings) {
  EXPECT_EQ("Dest Addr          Dest Mask          Next Hop           Row Status\n** No entries **\n",
            printed(printRouteInfo));
  EXPECT_EQ(
      "Destination Address/Prefix                 \n   Next Hop                                Row Status\n"
      "** No entries **\n",
      printed(printRoute6Info));
  shm->routes.head = SHM_NO_SLOT;
  shm->routes6.head6 = 1024;
  EXPECT_EQ(1, countLines(printed(printRouteInfo), "** No entries **"));
  EXPECT_EQ(1, countLines(printed(printRoute6Info), "** No entries **"));
}

TEST_F(Dump, SinglePrintersHaveNoSectionHeading) {
  EXPECT_EQ(std::string::npos, printed(printRouteInfo).find("-->"));
  EXPECT_EQ(std::string::npos, printed(printRoute6Info).find("-->"));
  EXPECT_EQ(std::string::npos, printed(printEventLog).find("-->"));
}

TEST_F(Dump, DamagedChainsEnd) {
  putRoute(7, "10.0.0.0", "255.0.0.0", "10.0.0.1", 3, 7);
  shm->routes.head = 7;
  putRoute6(7, "2001:db8::", 32, "fe80::1", 3, 4000);
  shm->routes6.head6 = 7;
  EXPECT_EQ(SHM_ROUTES, countLines(printed(printRouteInfo), "10.0.0.0 "));
  EXPECT_EQ(1, countLines(printed(printRoute6Info), "2001:db8::/32 \n"));
  shm->routes6.slot[7].next = 8;
  EXPECT_EQ(1, countLines(printed(printRoute6Info), "::/")) << "slot 8 is not in use";
}

TEST_F(Dump, DamagedRuleCountsAreShownAndBounded) {
  shm->filterTable.ruleCount = -1;
  EXPECT_EQ(0u, section("Filter Table").find("  ruleCount: \t\t-1\n"));
  EXPECT_EQ(3, countLines(section("Filter Table"), "\n"));
  shm->filterTable.ruleCount = INT32_MAX;
  EXPECT_EQ(0u, section("Filter Table").find("  ruleCount: \t\t2147483647\n"));
  EXPECT_EQ(3 + 8192 * 3 - 1, countLines(section("Filter Table"), "\n"));
}

TEST_F(Dump, LongIpv6TextsFit) {
  putRoute6(0, "1111:2222:3333:4444:5555:6666:7777:8888", 4294967295u, "::ffff:255.255.255.255", 3, SHM_NO_SLOT);
  EXPECT_NE(std::string::npos, printed(printRoute6Info)
                                   .find("1111:2222:3333:4444:5555:6666:7777:8888/-1 \n"
                                         "   ::ffff:255.255.255.255                  Active\n"));
}

TEST_F(Dump, HasThreeNames) {
  putRoute(0, "10.0.0.0", "255.0.0.0", "10.0.0.1", 3, SHM_NO_SLOT);
  logEvent(2, 0, "--");
  EXPECT_EQ(dump(), printed(printSharedMemory));
  EXPECT_EQ(dump(), printed(printTelemetry));
}

TEST_F(Dump, GoesToStandardOutputWithoutAStream) {
  putRoute(0, "10.0.0.0", "255.0.0.0", "10.0.0.1", 3, SHM_NO_SLOT);
  logEvent(2, 0, "--");
  for (int (*print)(FILE*) : {dumpSharedMemory, printSharedMemory, printTelemetry, printRouteInfo, printRoute6Info}) {
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(0, print(nullptr));
    EXPECT_EQ(printed(print), ::testing::internal::GetCapturedStdout());
  }
}

TEST_F(Dump, EndsWithAnEmptyLine) {
  const std::string whole = dump();
  EXPECT_EQ("  ** No events **\n\n", whole.substr(whole.size() - 19));
}

TEST_F(Dump, TakesNoLockOfItsOwn) {
  Peer holder([](const Peer::Line& line) {
    shm_lock();
    line.say('x');
    return line.hear();
  });
  holder.line().hear();
  EXPECT_FALSE(dump().empty());
  EXPECT_EQ(0, shm_lock_count);
  holder.line().say('\0');
  holder.join();
}

TEST_F(Dump, LeavesTheStoreAsItIs) {
  putRoute(0, "10.0.0.0", "255.0.0.0", "10.0.0.1", 3, SHM_NO_SLOT);
  logEvent(2, 0, "--");
  const std::string before(reinterpret_cast<char*>(shm), sizeof(ShmData));
  dump();
  EXPECT_TRUE(before == std::string(reinterpret_cast<char*>(shm), sizeof(ShmData)));
}

TEST_F(Dump, AttachesByItself) {
  const std::string attached = dump();
  for (int (*print)(FILE*) : {dumpSharedMemory, printRouteInfo, printRoute6Info, printEventLog}) {
    shm_detach();
    shm = nullptr;
    printed(print);
    EXPECT_NE(nullptr, shm);
  }
  EXPECT_EQ(attached, dump());
}

TEST_F(Dump, WithoutStoreFails) {
  dropStore();
  for (int (*print)(FILE*) : {dumpSharedMemory, printSharedMemory, printTelemetry, printRouteInfo, printRoute6Info}) {
    EXPECT_FAILS_WITH(SHM_EATTACH, print(stdout));
  }
}

TEST_F(Dump, IntoAFullDiskStillGivesZero) {
  FILE* full = fopen("/dev/full", "w");
  EXPECT_EQ(0, dumpSharedMemory(full));
  fclose(full);
}

// Codes, counts, heads, chains and texts all wrong at once.
TEST_F(Dump, OfRandomBytesEnds) {
  FILE* nowhere = fopen("/dev/null", "w");
  for (uint32_t seed = 1; seed <= 10; ++seed) {
    std::mt19937 numbers(seed);
    auto* word = reinterpret_cast<uint32_t*>(shm);
    for (size_t i = 0; i < sizeof(ShmData) / sizeof *word; ++i) word[i] = static_cast<uint32_t>(numbers());
    for (RouteEntry& slot : shm->routes.slot) slot.inUse = 1;
    for (Route6Entry& slot : shm->routes6.slot) slot.inUse = 1;
    shm->routes.head %= SHM_ROUTES;
    EXPECT_EQ(0, dumpSharedMemory(nowhere));
  }
  memset(shm, 0xFF, sizeof(ShmData));
  EXPECT_EQ(0, dumpSharedMemory(nowhere));
  fclose(nowhere);
}

TEST_F(Dump, FactsAboutTheSegment) {
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(0, printSharedMemoryStats());
  EXPECT_EQ(
      "Accessing shared memory by key 6001\n"
      "Shared memory key: 6001\n"
      "Size: 1308576\n"
      "Number of attached processes: 1\n",
      ::testing::internal::GetCapturedStdout());
}

TEST_F(Dump, FactsNeedASegment) {
  dropStore();
  shm_errno = 42;
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(-1, printSharedMemoryStats());
  EXPECT_EQ("Error getting shared memory ID: No such file or directory\n", ::testing::internal::GetCapturedStderr());
  EXPECT_EQ(42u, shm_errno);
}

}  // namespace
}  // namespace kestrove::testing
