// SPDX-License-Identifier: Apache-2.0
// What may stand in a command line, one step outside each border.
#include "sys/plain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace kestrove::sys {
namespace {

// The characters that may stand in the middle of a word.
template <typename Test>
std::string allowed(Test test, const std::string& before, const std::string& behind) {
  std::string found;
  for (int c = 0; c < 256; ++c) {
    if (test(before + static_cast<char>(c) + behind)) found += static_cast<char>(c);
  }
  return found;
}

constexpr char kLettersAndDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

std::string sorted(std::string text) {
  std::sort(text.begin(), text.end());
  return text;
}

TEST(Plain, CharactersOfEachKind) {
  EXPECT_EQ(sorted(std::string(kLettersAndDigits) + "._-:@"), allowed(plainName, "a", "a"));
  EXPECT_EQ(sorted(std::string(kLettersAndDigits) + "._-:@"), allowed(plainInterface, "a", "a"));
  EXPECT_EQ(sorted(std::string(kLettersAndDigits) + "/._-+:@"), allowed(plainPath, "/", "a"));
  EXPECT_EQ(sorted("0123456789ABCDEFabcdef.:/ "), allowed(plainAddress, "a", "a"));
  EXPECT_EQ("0123456789", allowed(plainPid, "1", "1"));
}

TEST(Plain, OptionIsNoName) {
  for (const char* name : {"-", "-a", "--help", "-1", "-eth0.12"}) {
    EXPECT_FALSE(plainName(name)) << name;
    EXPECT_FALSE(plainInterface(name)) << name;
  }
  EXPECT_TRUE(plainName("a-"));
  EXPECT_FALSE(plainPath("-/etc"));
}

TEST(Plain, NothingIsANameAnAddressAndAPidButNoPath) {
  EXPECT_TRUE(plainName(""));
  EXPECT_TRUE(plainInterface(""));
  EXPECT_TRUE(plainAddress(""));
  EXPECT_TRUE(plainPid(""));
  EXPECT_FALSE(plainPath(""));
  EXPECT_FALSE(plainPath("etc"));
  EXPECT_TRUE(plainPath("/"));
}

TEST(Plain, InterfacesHaveFifteenCharactersOrAVlan) {
  EXPECT_TRUE(plainInterface(std::string(15, 'a')));
  EXPECT_FALSE(plainInterface(std::string(16, 'a')));
  EXPECT_TRUE(plainInterface(std::string(16, 'a') + ".1"));
  EXPECT_TRUE(plainInterface(std::string(16, 'a') + ".4294967295"));
  EXPECT_TRUE(plainInterface(std::string(16, 'a') + ".-2147483648"));
  for (const char* id : {"", "-", "x", "1x", "12345678901", "-12345678901", "--1", "1.-"}) {
    EXPECT_FALSE(plainInterface(std::string(16, 'a') + "." + id)) << id;
  }
  EXPECT_FALSE(plainInterface(std::string(17, 'a') + ".1"));
  EXPECT_FALSE(plainInterface(std::string(16, ';') + ".1"));
  EXPECT_TRUE(plainName(std::string(300, 'a')));
}

TEST(Plain, PidsAreThoseOfProcessesThatMayBeSignalled) {
  for (const char* pid : {"2", "02", "4194304", "2147483647", "00000000000000000000002"}) EXPECT_TRUE(plainPid(pid));
  for (const char* pid : {"0", "1", "00", "01", "-1", "+2", " 2", "2 ", "2147483648", "4294967295", "4294967298",
                          "18446744073709551615", "18446744073709551618", "340282366920938463463374607431768211458"}) {
    EXPECT_FALSE(plainPid(pid)) << pid;
  }
}

}  // namespace
}  // namespace kestrove::sys
