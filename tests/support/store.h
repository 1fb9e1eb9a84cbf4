// SPDX-License-Identifier: Apache-2.0
// A store of its own for each test.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "kestrove/kestrove.h"

namespace kestrove::testing {

// Makes the lock file and a zeroed segment laid out as a fresh one is: empty route tables, the default rule alone,
// minRate and minMtu of an ordinary product, configuration file /etc/config/kestrove.conf, state 1 (Operational).
void makeStore();

// Deletes the segment and forgets the attachment and the lock of this process.
void dropStore();

// Lets only those use the segment whom that mode allows.
void setStoreMode(unsigned short mode);

// A fixture over makeStore: shm is attached, unlocked, and dropped at the end.
class StoreTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
};

std::string readFile(const std::string& path);  // empty when it cannot be read
void writeFile(const std::string& path, const std::string& text);
bool fileExists(const std::string& path);

// The result is -1 and the code the one given.
#define EXPECT_FAILS_WITH(expectedCode, call)              \
  do {                                                     \
    shm_errno = 99;                                        \
    EXPECT_EQ(-1, (call));                                 \
    EXPECT_EQ(uint32_t(expectedCode), shm_errno) << #call; \
  } while (0)

}  // namespace kestrove::testing
