// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <gtest/gtest.h>
#include <string.h>

#include "kestrove/errors.h"
#include "kestrove/segment.h"

namespace {

constexpr const char* kTexts[] = {
    "Normal successful completion",
    "Error attaching to shared memory",
    "System error",
    "Invalid argument",
    "Object is read-only",
    "Logging is disabled",
    "The table is full",
    "The requested entity does not exist",
    "The entity already exists",
    "Error opening file",
    "Error reading or writing file",
    "Attempt to access beyond end of file",
    "The given value does not fall in the allowed range",
    "Invalid Ip Address: Must contain 4 octets, each >=0  and <=255",
    "Invalid Ip Address: Must contain 4 octets separated by 3 dots",
    "Invalid Ip Address Subnet Mask",
    "Invalid IPv6 Address",
    "Kestrove has failed to init too many times consecutively",
    "We already rebooted because we couldn't start kestrove too many times",
    "No such user exists in the system",
    "Incorrect password",
    "Unknown error",
};

std::string printed(uint32_t code, int error, const char* prefix) {
  shm_errno = code;
  testing::internal::CaptureStderr();
  errno = error;
  shm_perror(prefix);
  return testing::internal::GetCapturedStderr();
}

TEST(Errors, EveryRowHasItsText) {
  for (int row = 0; row <= 21; ++row) EXPECT_STREQ(kTexts[row], shm_strerror(row)) << row;
}

TEST(Errors, LastTwoRowsAndEverythingOutsideHaveNoText) {
  for (int code : {22, 23, 24, 100, -1, INT32_MAX, INT32_MIN}) EXPECT_EQ(nullptr, shm_strerror(code)) << code;
}

TEST(Errors, PrintsPrefixAndTextForMostCodes) {
  EXPECT_EQ("here: Invalid argument\n", printed(3, ENOENT, "here"));
  EXPECT_EQ("here: Unknown error\n", printed(21, ENOENT, "here"));
  EXPECT_EQ("here: Normal successful completion\n", printed(0, ENOENT, "here"));
}

TEST(Errors, SystemErrorPrintsWhatTheSystemSays) {
  EXPECT_EQ("here: No such file or directory\n", printed(2, ENOENT, "here"));
}

TEST(Errors, FileErrorsPrintTheSystemsReasonBehindTheText) {
  EXPECT_EQ("here: Error opening file: Permission denied\n", printed(9, EACCES, "here"));
  EXPECT_EQ("here: Error reading or writing file: No space left on device\n", printed(10, ENOSPC, "here"));
}

TEST(Errors, CodesWithoutTextPrintAsTheFormatterShowsNull) {
  EXPECT_EQ("here: (null)\n", printed(22, 0, "here"));
  EXPECT_EQ("here: (null)\n", printed(23, 0, "here"));
  EXPECT_EQ("here: (null)\n", printed(0xFFFFFFFFu, 0, "here"));
}

TEST(Errors, NoPrefixPrintsNothing) { EXPECT_EQ("", printed(3, 0, nullptr)); }

constexpr MessageEntry kEntries[] = {{1, "one"}, {5, "five"}, {1, "one again"}, {9, "other"}};

TEST(MessageTables, FirstEntryOfACodeWins) {
  MessageTable table = {4, 9, kEntries};
  EXPECT_STREQ("one", shm_getMessage(&table, 1));
  EXPECT_STREQ("five", shm_getMessage(&table, 5));
  EXPECT_STREQ("other", shm_getMessage(&table, 9));
}

TEST(MessageTables, UnknownCodesTakeTheDefault) {
  MessageTable table = {4, 5, kEntries};
  EXPECT_STREQ("five", shm_getMessage(&table, 77));
  EXPECT_STREQ("five", shm_getMessage(&table, -1));
}

TEST(MessageTables, MissingDefaultGivesTheLastEntry) {
  MessageTable table = {4, 42, kEntries};
  EXPECT_STREQ("other", shm_getMessage(&table, 42));
  EXPECT_STREQ("other", shm_getMessage(&table, 77));
}

TEST(MessageTables, NothingToSearchIsAnInvalidArgument) {
  MessageTable empty = {0, 1, kEntries};
  for (const MessageTable* table :
       {static_cast<const MessageTable*>(nullptr), static_cast<const MessageTable*>(&empty)}) {
    shm_errno = 99;
    EXPECT_EQ(nullptr, shm_getMessage(table, 1));
    EXPECT_EQ(uint32_t{SHM_EINVAL}, shm_errno);
  }
}

}  // namespace
