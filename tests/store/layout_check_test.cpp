// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "kestrove/errors.h"
#include "kestrove/library.h"
#include "kestrove/segment.h"

namespace {

constexpr uint64_t kOtherHash = 0x0123456789abcdefu;

struct Answer {
  int result;
  std::string message;
};

Answer ask(const char* version, uint64_t layoutHash) {
  char message[KESTROVE_CHECK_BYTES] = "untouched";
  int result = kestrove_check_layout(version, layoutHash, message, sizeof message);
  return {result, message};
}

std::string refusal(const std::string& version, const char* layoutHash, const char* reason) {
  return "libkestrove 1.1.0 with layout 58a2cb6260745e64 does not serve a program built for " + version +
         " with layout " + layoutHash + ": " + reason + ".";
}

void expectRefusal(const char* version, uint64_t layoutHash, const std::string& message) {
  shm_errno = SHM_OK;
  Answer answer = ask(version, layoutHash);
  EXPECT_EQ(-1, answer.result) << message;
  EXPECT_EQ(message, answer.message);
  EXPECT_EQ(static_cast<uint32_t>(SHM_EINVAL), shm_errno) << message;
}

TEST(LayoutCheck, HeadersSayWhatTheLibrarySays) {
  EXPECT_STREQ(kestrove_version(), KESTROVE_HEADER_VERSION);
  EXPECT_EQ(kestrove_layout_hash(), KESTROVE_LAYOUT_HASH);
}

TEST(LayoutCheck, ProgramOfTheseHeadersIsServed) {
  char message[KESTROVE_CHECK_BYTES] = "untouched";
  shm_errno = SHM_EFULL;
  EXPECT_EQ(0, kestrove_check_headers(message, sizeof message));
  EXPECT_STREQ("", message);
  EXPECT_EQ(static_cast<uint32_t>(SHM_EFULL), shm_errno);
}

TEST(LayoutCheck, OtherPatchIsServed) { EXPECT_EQ(0, ask("1.1.9", KESTROVE_LAYOUT_HASH).result); }

TEST(LayoutCheck, OlderHeadersAreServed) { EXPECT_EQ(0, ask("1.0.0", KESTROVE_LAYOUT_HASH).result); }

TEST(LayoutCheck, OtherLayoutIsRefused) {
  expectRefusal("1.0.0", kOtherHash, refusal("1.0.0", "0123456789abcdef", "the layouts of the store differ"));
}

TEST(LayoutCheck, NewerHeadersAreRefused) {
  expectRefusal("1.2.0", KESTROVE_LAYOUT_HASH,
                refusal("1.2.0", "58a2cb6260745e64", "the library is older than the headers"));
}

TEST(LayoutCheck, OtherMajorVersionIsRefusedWhateverTheLayout) {
  for (const char* version : {"0.9.0", "2.0.0"}) {
    expectRefusal(version, KESTROVE_LAYOUT_HASH, refusal(version, "58a2cb6260745e64", "the major versions differ"));
  }
}

TEST(LayoutCheck, WhatIsNoVersionIsRefused) {
  constexpr char kReason[] = "the program does not name the version of its headers";
  expectRefusal(nullptr, KESTROVE_LAYOUT_HASH, refusal("no version", "58a2cb6260745e64", kReason));
  for (const char* version : {"", "1", "1.0", "1.0.", "1.0.0.", "1.0.0 ", " 1.0.0", "+1.0.0", "-1.0.0", "1..0", "1.0.x",
                              "99999.0.0", "1,0,0"}) {
    expectRefusal(version, KESTROVE_LAYOUT_HASH, refusal(version, "58a2cb6260745e64", kReason));
  }
}

TEST(LayoutCheck, LongestMessageFitsItsBuffer) {
  Answer answer = ask(std::string(1000, '7').c_str(), ~uint64_t{0});
  EXPECT_EQ(-1, answer.result);
  EXPECT_TRUE(answer.message.ends_with("of its headers.")) << answer.message;
}

TEST(LayoutCheck, MessageIsCutToItsBuffer) {
  char message[12] = "untouched!!";
  EXPECT_EQ(-1, kestrove_check_layout("2.0.0", 0, message, 5));
  EXPECT_EQ(std::string("libk\0ched!!", 12), std::string(message, sizeof message)) << message;
}

TEST(LayoutCheck, NoBufferAsksForNoMessage) {
  char message[] = "untouched";
  for (int size : {0, -1}) {
    EXPECT_EQ(-1, kestrove_check_layout("2.0.0", 0, message, size));
    EXPECT_EQ(0, kestrove_check_headers(message, size));
  }
  EXPECT_STREQ("untouched", message);
  EXPECT_EQ(-1, kestrove_check_layout("2.0.0", 0, nullptr, 100));
  EXPECT_EQ(0, kestrove_check_headers(nullptr, 100));
}

}  // namespace
