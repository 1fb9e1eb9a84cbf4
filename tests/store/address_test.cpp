// SPDX-License-Identifier: Apache-2.0
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/store.h"

namespace {

using kestrove::testing::maskOf;
using kestrove::testing::quad;

constexpr uint32_t kUntouched = 0x5A5A5A5Au;

struct Parsed {
  int result;
  uint32_t code;
  std::string text;
  uint32_t address;
};

template <int (*Parse)(char*, uint32_t*)>
Parsed parsed(const char* text) {
  char buffer[64];
  strcpy(buffer, text);
  uint32_t address = kUntouched;
  shm_errno = 0;
  int result = Parse(buffer, &address);
  return {result, shm_errno, buffer, address};
}

struct Good {
  const char* text;
  const char* plain;
};

TEST(Ipv4Text, PlainFormReplacesTheText) {
  for (const Good& row : {Good{"192.168.001.010", "192.168.1.10"},
                          {"010.001.000.001", "10.1.0.1"},
                          {"1.2.3.4", "1.2.3.4"},
                          {"0.0.0.0", "0.0.0.0"},
                          {"000.000.000.000", "0.0.0.0"},
                          {"255.255.255.255", "255.255.255.255"},
                          {"0000000000255.1.1.1", "255.1.1.1"}}) {
    Parsed parse = parsed<parseIpv4Address>(row.text);
    EXPECT_EQ(0, parse.result) << row.text;
    EXPECT_EQ(row.plain, parse.text);
    EXPECT_EQ(quad(row.plain), parse.address);
    EXPECT_EQ(0u, parse.code);
  }
}

struct Bad {
  const char* text;
  uint32_t code;
};

TEST(Ipv4Text, EachFaultHasItsCodeAndLeavesTheOutput) {
  for (const Bad& row : {Bad{"1.2.3", SHM_EDOTS},
                         {"1", SHM_EDOTS},
                         {"abc", SHM_EDOTS},
                         {"1..2.3", SHM_EOCTET},
                         {".1.2.3", SHM_EOCTET},
                         {"1.2.3.", SHM_EOCTET},
                         {"1.2.3.256", SHM_EOCTET},
                         {"256.1.1.1", SHM_EOCTET},
                         {"1.2.3.4.5", SHM_EOCTET},
                         {"1.2.3.4 ", SHM_EOCTET},
                         {" 1.2.3.4", SHM_EOCTET},
                         {"1.+2.3.4", SHM_EOCTET},
                         {"1.-2.3.4", SHM_EOCTET},
                         {"0x1.2.3.4", SHM_EOCTET},
                         {"a.2", SHM_EOCTET},
                         {"99999999999999999999.1.1.1", SHM_EOCTET},
                         {"4294967297.1.1.1", SHM_EOCTET},
                         {"", SHM_EINVAL}}) {
    Parsed parse = parsed<parseIpv4Address>(row.text);
    EXPECT_EQ(-1, parse.result) << row.text;
    EXPECT_EQ(row.code, parse.code) << row.text;
    EXPECT_EQ(kUntouched, parse.address) << row.text;
  }
}

TEST(Ipv4Text, OctetsBeforeABadOneAreRewritten) {
  EXPECT_EQ("10.1.300.01", parsed<parseIpv4Address>("010.001.300.01").text);
  EXPECT_EQ("10.1", parsed<parseIpv4Address>("010.1").text);
}

TEST(Ipv4Text, NullPointersAreRefused) {
  char text[] = "010.1.1.1";
  uint32_t address = kUntouched;
  EXPECT_FAILS_WITH(SHM_EINVAL, parseIpv4Address(nullptr, &address));
  EXPECT_FAILS_WITH(SHM_EINVAL, parseIpv4Address(text, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, validateManagementAddress(nullptr, &address));
  EXPECT_FAILS_WITH(SHM_EINVAL, validateManagementAddress(text, nullptr));
  EXPECT_STREQ("010.1.1.1", text);
  EXPECT_EQ(kUntouched, address);
}

TEST(Netmask, RunsOfOnesAreValid) {
  for (int ones = 0; ones <= 32; ++ones) {
    uint32_t mask = maskOf(ones);
    EXPECT_EQ(0, validateNetmask(&mask)) << ones;
  }
}

TEST(Netmask, HolesAreAnInvalidArgument) {
  for (const char* text : {"255.0.255.0", "0.255.0.0", "255.253.0.0", "254.255.0.0", "0.0.0.1", "255.255.255.127",
                           "128.128.0.0", "1.0.0.0", "255.255.0.255"}) {
    uint32_t mask = quad(text);
    EXPECT_FAILS_WITH(SHM_EINVAL, validateNetmask(&mask));
  }
  EXPECT_FAILS_WITH(SHM_EINVAL, validateNetmask(nullptr));
}

TEST(ManagementAddressText, UnicastIsAccepted) {
  for (const char* text : {"223.255.255.255", "0.0.0.1", "1.0.0.0", "126.255.255.255", "128.0.0.0", "10.0.0.1"}) {
    Parsed parse = parsed<validateManagementAddress>(text);
    EXPECT_EQ(0, parse.result) << text;
    EXPECT_EQ(quad(text), parse.address);
  }
}

TEST(ManagementAddressText, EverythingElseZeroesTheOutput) {
  for (const Bad& row : {Bad{"0.0.0.0", SHM_EINVAL},
                         {"127.0.0.1", SHM_EINVAL},
                         {"127.255.255.255", SHM_EINVAL},
                         {"224.0.0.0", SHM_EINVAL},
                         {"224.0.0.1", SHM_EINVAL},
                         {"255.255.255.255", SHM_EINVAL},
                         {"", SHM_EINVAL},
                         {"1.2.3", SHM_EDOTS},
                         {"1.2.3.256", SHM_EOCTET}}) {
    Parsed parse = parsed<validateManagementAddress>(row.text);
    EXPECT_EQ(-1, parse.result) << row.text;
    EXPECT_EQ(row.code, parse.code) << row.text;
    EXPECT_EQ(0u, parse.address) << row.text;
  }
}

TEST(Ipv6Text, IsParsedIntoSixteenBytes) {
  uint8_t expected[16] = {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  uint8_t out[16];
  EXPECT_EQ(0, parseIpv6Address("2001:db8::1", out));
  EXPECT_EQ(0, memcmp(expected, out, sizeof out));
}

TEST(Ipv6Text, AnythingElseHasItsCode) {
  uint8_t out[16];
  for (const char* text : {"", "1.2.3.4", "2001:db8::1/64", "2001:db8::1%eth0", "g::", "1:2:3:4:5:6:7:8:9", " ::1"}) {
    EXPECT_FAILS_WITH(SHM_EIPV6, parseIpv6Address(text, out));
  }
  EXPECT_FAILS_WITH(SHM_EINVAL, parseIpv6Address(nullptr, out));
  EXPECT_FAILS_WITH(SHM_EINVAL, parseIpv6Address("::1", nullptr));
}

TEST(Ipv6Text, ShortBufferFailsEvenWhereTheTextFits) {
  uint8_t loopback[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  char buf[46] = "";
  shm_errno = 99;
  EXPECT_EQ(0, ipv6_to_a(loopback, buf, 46));
  EXPECT_STREQ("::1", buf);
  buf[0] = '\0';
  EXPECT_EQ(-1, ipv6_to_a(loopback, buf, 45));
  EXPECT_STREQ("::1", buf);
  EXPECT_EQ(-1, ipv6_to_a(loopback, buf, 3));
  EXPECT_EQ(-1, ipv6_to_a(loopback, buf, 0));
  EXPECT_EQ(-1, ipv6_to_a(loopback, buf, -1));
  EXPECT_EQ(99u, shm_errno);
  EXPECT_FAILS_WITH(SHM_EINVAL, ipv6_to_a(nullptr, buf, 46));
  EXPECT_FAILS_WITH(SHM_EINVAL, ipv6_to_a(loopback, nullptr, 46));
}

TEST(Prefix, IsTheNumberOfLeadingOnes) {
  for (int ones = 1; ones <= 32; ++ones) {
    EXPECT_EQ(ones, netMaskCIDRNumber(maskOf(ones))) << ones;
  }
}

TEST(Prefix, ZeroAndHolesHaveNoneAndNoCode) {
  shm_errno = 99;
  for (const char* text : {"0.0.0.0", "255.0.255.0", "0.0.0.1", "127.255.255.255", "255.255.255.253"}) {
    EXPECT_EQ(-1, netMaskCIDRNumber(quad(text))) << text;
  }
  EXPECT_EQ(99u, shm_errno);
}

TEST(Subnet, IsNetworkAndPrefix) {
  char text[19];
  EXPECT_EQ(0, getCIDRSubnet(quad("10.1.2.3"), quad("255.255.0.0"), text, 19));
  EXPECT_STREQ("10.1.0.0/16", text);
  EXPECT_EQ(0, getCIDRSubnet(quad("255.255.255.255"), quad("255.255.255.255"), text, 19));
  EXPECT_STREQ("255.255.255.255/32", text);
}

TEST(Subnet, ShortBufferAndOddMaskLeaveTheText) {
  char text[19] = "kept";
  shm_errno = 99;
  EXPECT_EQ(-1, getCIDRSubnet(quad("10.1.2.3"), quad("255.0.0.0"), text, 18));
  EXPECT_EQ(-1, getCIDRSubnet(quad("10.1.2.3"), quad("255.0.0.0"), text, -1));
  EXPECT_EQ(-1, getCIDRSubnet(quad("10.1.2.3"), 0, text, 19));
  EXPECT_EQ(-1, getCIDRSubnet(quad("10.1.2.3"), quad("255.0.255.0"), text, 19));
  EXPECT_STREQ("kept", text);
  EXPECT_EQ(99u, shm_errno);
  EXPECT_FAILS_WITH(SHM_EINVAL, getCIDRSubnet(1, quad("255.0.0.0"), nullptr, 19));
}

TEST(DottedText, StandsInNetworkOrder) {
  EXPECT_STREQ("10.1.2.3", ipv4_to_a(quad("10.1.2.3")));
  EXPECT_STREQ("0.0.0.0", ipv4_to_a(0));
}

TEST(Bounds, BothEndsBelong) {
  EXPECT_EQ(0, validateIntInBounds(3, 3, 5));
  EXPECT_EQ(0, validateIntInBounds(5, 3, 5));
  EXPECT_FAILS_WITH(SHM_ERANGE, validateIntInBounds(2, 3, 5));
  EXPECT_FAILS_WITH(SHM_ERANGE, validateIntInBounds(6, 3, 5));
  EXPECT_FAILS_WITH(SHM_ERANGE, validateIntInBounds(4, 5, 3));
}

}  // namespace
