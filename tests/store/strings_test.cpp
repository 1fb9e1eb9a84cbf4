// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string.h>

#include "kestrove/text.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

using kestrove::testing::syslogLines;
using ::testing::ElementsAre;

namespace {

TEST(StringCopy, TakesUpTo255Characters) {
  std::string text(255, 'x');
  char field[256] = "old";
  EXPECT_EQ(0, stringCopy(field, text.c_str()));
  EXPECT_EQ(text, field);
  EXPECT_EQ(0, stringCopy(field, ""));
  EXPECT_STREQ("", field);
}

TEST(StringCopy, LongerTextLeavesTheFieldAndIsLogged) {
  std::string text(256, 'x');
  char field[256] = "old";
  EXPECT_FAILS_WITH(SHM_ERANGE, stringCopy(field, text.c_str()));
  EXPECT_STREQ("old", field);
  EXPECT_THAT(syslogLines(), ElementsAre("warning: Trying to write over memory:'old' '" + text + "'\n"));
}

TEST(StringCopy, FieldWithoutTerminatorIsLoggedToItsWidth) {
  char field[256];
  memset(field, 'y', sizeof field);
  EXPECT_FAILS_WITH(SHM_ERANGE, stringCopy(field, std::string(300, 'x').c_str()));
  EXPECT_THAT(syslogLines(), ElementsAre("warning: Trying to write over memory:'" + std::string(256, 'y') + "' '" +
                                         std::string(300, 'x') + "'\n"));
}

TEST(StringCopy, NullIsRefused) {
  char field[256] = "old";
  EXPECT_FAILS_WITH(SHM_EINVAL, stringCopy(field, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, stringCopy(nullptr, "x"));
  EXPECT_STREQ("old", field);
}

}  // namespace
