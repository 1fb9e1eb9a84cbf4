// SPDX-License-Identifier: Apache-2.0
// The default gateway of the kernel, as its table tells it.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/mount.h>

#include <ostream>
#include <string>

#include "kestrove/kestrove.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr char kHeading[] = "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";
constexpr char kNetFolder[] = "/proc/self/net";
constexpr char kRouteFile[] = "/proc/self/net/route";

struct Gateway {
  int result;
  std::string text;
};
bool operator==(const Gateway& a, const Gateway& b) { return a.result == b.result && a.text == b.text; }
void PrintTo(const Gateway& gateway, std::ostream* out) { *out << gateway.result << " \"" << gateway.text << '"'; }

Gateway defaultGateway() {
  char text[128] = "kept";
  int result = GetDefaultGW(text);
  return {result, text};
}

// A routing table of our own in place of the kernel's.
class RoutingTable : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(0, mount("none", kNetFolder, "tmpfs", 0, nullptr)); }
  void TearDown() override { umount2(kNetFolder, MNT_DETACH); }
  Gateway with(const std::string& lines) {
    writeFile(kRouteFile, lines);
    return defaultGateway();
  }
};

const Gateway kNone = {0, "kept"};

TEST_F(RoutingTable, DefaultRouteGivesTheKernelsText) {
  EXPECT_EQ((Gateway{1, "0101A8C0"}),
            with(std::string(kHeading) + "eth0\t0001A8C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\n" +
                 "eth0\t00000000\t0101A8C0\t0003\t0\t0\t0\t00000000\t0\t0\t0\n"));
}

TEST_F(RoutingTable, FirstDefaultRouteWins) {
  EXPECT_EQ((Gateway{1, "0101A8C0"}), with("eth0 00000000 0101A8C0\neth1 00000000 0201A8C0\n"));
}

TEST_F(RoutingTable, NumbersAreReadAsDecimal) {
  EXPECT_EQ((Gateway{1, "0101A8C0"}), with("eth0 0A000000 0101A8C0\n"));
  EXPECT_EQ((Gateway{1, "0101A8C0"}), with("eth0 C0A80000 0101A8C0\n"));  // no decimal digits at all
  EXPECT_EQ(kNone, with("eth0 10000000 0101A8C0\n"));
  EXPECT_EQ(kNone, with("eth0 00000000 00A8C001\n"));
  EXPECT_EQ(kNone, with("eth0 00000000 FE01A8C0\n"));
}

TEST_F(RoutingTable, IncompleteLinesAreSkipped) {
  EXPECT_EQ(kNone, with(""));
  EXPECT_EQ(kNone, with(kHeading));
  EXPECT_EQ(kNone, with("\n \t\r\neth0\neth0 00000000\neth0 00000000 00000000\neth0 0000000g 0101A8C0\n"));
  EXPECT_EQ((Gateway{1, "0101a8c0"}), with("\neth0\neth0 00000000 0101a8c0"));
}

TEST_F(RoutingTable, LinesAreReadInPiecesOf127Characters) {
  std::string front = "eth0 00000000 00000000";
  std::string filled = front + std::string(127 - front.size(), ' ');
  EXPECT_EQ((Gateway{1, "0101A8C0"}), with(filled + "eth1 00000000 0101A8C0\n"));
}

TEST_F(RoutingTable, MissingFileIsNoRoute) { EXPECT_EQ(kNone, defaultGateway()); }

TEST_F(RoutingTable, NullIsRefused) { EXPECT_FAILS_WITH(SHM_EINVAL, GetDefaultGW(nullptr)); }

TEST(DefaultGateway, IsThatOfTheKernelsTable) {
  char text[128] = "kept";
  EXPECT_EQ(0, GetDefaultGW(text));
  ASSERT_EQ(0, system("ip addr add 10.9.8.7/24 dev lo && ip route add default via 10.9.8.1 dev lo"));
  EXPECT_EQ(1, GetDefaultGW(text));
  EXPECT_STREQ("0108090A", text);
}

}  // namespace
}  // namespace kestrove::testing
