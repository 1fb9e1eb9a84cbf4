// SPDX-License-Identifier: Apache-2.0
// Cursor formatting beside the C library's.
#include "sys/format.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <stdio.h>

#include <random>
#include <string>

#include "sys/text_writer.h"
#include "tests/support/addresses.h"

namespace kestrove::sys {
namespace {

template <typename Put>
std::string textOf(Put put) {
  char buffer[256];
  memset(buffer, '?', sizeof buffer);
  return {buffer, put(buffer)};
}

template <typename... Arguments>
std::string printed(const char* format, Arguments... arguments) {
  char buffer[256];
  snprintf(buffer, sizeof buffer, format, arguments...);
  return buffer;
}

const int32_t kNumbers[] = {0,  1,  9,   10,   99,   100,   255,     256,     999,     1000,      65535,
                            -1, -9, -10, -255, -256, -1000, INT_MAX, INT_MIN, 1234567, 999999999, 1000000000};

TEST(FormatTest, NumbersAreThoseOfPrintf) {
  for (int32_t value : kNumbers) {
    EXPECT_EQ(printed("%d", value), textOf([=](char* at) { return putNumber(at, value); }));
    EXPECT_EQ(printed("%-9d|", value), textOf([=](char* at) { return putText(putNumberColumn<9>(at, value), "|"); }));
    EXPECT_EQ(printed("%-3d|", value), textOf([=](char* at) { return putText(putNumberColumn<3>(at, value), "|"); }));
  }
  EXPECT_EQ("18446744073709551615", textOf([](char* at) { return putUnsigned(at, UINT64_MAX); }));
}

TEST(FormatTest, QuadsAreThoseOfTheLibrary) {
  std::mt19937 random(1);
  for (int i = 0; i < 1000; ++i) {
    in_addr address = {i == 0 ? 0 : i == 1 ? UINT32_MAX : static_cast<uint32_t>(random())};
    EXPECT_EQ(inet_ntoa(address), textOf([=](char* at) { return putQuad(at, address.s_addr); }));
    EXPECT_EQ(printed("%-16s|", inet_ntoa(address)),
              textOf([=](char* at) { return putText(putQuadColumn<16>(at, address.s_addr), "|"); }));
  }
}

// Every pattern of zero groups, with the other groups of every number of digits and the two embedded forms.
TEST(FormatTest, Ip6AddressesAreThoseOfTheLibrary) {
  const uint16_t kGroups[] = {0x1, 0x12, 0x123, 0x1234, 0xffff, 0xabcd};
  std::mt19937 random(2);
  for (unsigned pattern = 0; pattern < 256; ++pattern) {
    for (int round = 0; round < 50; ++round) {
      uint8_t address[16] = {};
      for (unsigned i = 0; i < 8; ++i) {
        if (!(pattern >> i & 1)) continue;
        uint16_t group = kGroups[random() % 6];
        address[2 * i] = static_cast<uint8_t>(group >> 8);
        address[2 * i + 1] = static_cast<uint8_t>(group & 0xff);
      }
      EXPECT_EQ(testing::ip6Text(address), textOf([&](char* at) { return putIp6(at, address); }));
    }
  }
}

TEST(FormatTest, TextColumnsPadAndNeverCut) {
  EXPECT_EQ("ab   |", textOf([](char* at) { return putText(putTextColumn<5>(at, "ab"), "|"); }));
  EXPECT_EQ("abcdef|", textOf([](char* at) { return putText(putTextColumn<5>(at, "abcdef"), "|"); }));
  EXPECT_EQ("   ab|", textOf([](char* at) { return putText(putTextRight<5>(at, "ab"), "|"); }));
  EXPECT_EQ("abcdef|", textOf([](char* at) { return putText(putTextRight<5>(at, "abcdef"), "|"); }));
}

struct Gatherer {
  bool write(const char* data, size_t size) {
    if (failsAfter-- <= 0) return false;
    text.append(data, size);
    return true;
  }
  std::string text;
  int failsAfter = INT_MAX;
};

TEST(TextWriterTest, HandsOnEverythingInOrder) {
  Gatherer target;
  TextWriter out(target);
  std::string expected;
  for (int i = 0; i < 20000; ++i) {
    out.number(i);
    out.text(" text ");
    out.quad(static_cast<uint32_t>(i));
    in_addr address = {static_cast<uint32_t>(i)};
    expected += std::to_string(i) + " text " + inet_ntoa(address);
  }
  std::string big(3 * TextWriter::kCapacity + 5, 'b');
  out.text(big);
  EXPECT_TRUE(out.flush());
  EXPECT_TRUE(expected + big == target.text);
}

TEST(TextWriterTest, FailedTargetGetsNothingMore) {
  Gatherer target;
  target.failsAfter = 1;
  TextWriter out(target);
  std::string piece(TextWriter::kCapacity, 'p');
  for (int i = 0; i < 5; ++i) out.text(piece);
  EXPECT_FALSE(out.good());
  EXPECT_FALSE(out.flush());
  EXPECT_EQ(piece, target.text);
}

}  // namespace
}  // namespace kestrove::sys
