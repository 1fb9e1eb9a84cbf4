// SPDX-License-Identifier: Apache-2.0
#include "lifecycle/short_version.h"

#include <gtest/gtest.h>

using kestrove::shortVersion;

namespace {

TEST(ShortVersion, EndsBeforeTheThirdDot) {
  EXPECT_EQ("4.1.10", shortVersion("4.1.10.5"));
  EXPECT_EQ("4.1.2", shortVersion("4.1.2.23"));
  EXPECT_EQ("1.2.3", shortVersion("1.2.3."));
  EXPECT_EQ("1.2.3", shortVersion("1.2.3.4.5"));
}

TEST(ShortVersion, DropsAThirdFieldThatIsZero) {
  EXPECT_EQ("4.1", shortVersion("4.1.0.23"));
  EXPECT_EQ("5.2", shortVersion("5.2.0.7"));
}

TEST(ShortVersion, KeepsAThirdFieldThatOnlyHoldsAZero) {
  EXPECT_EQ("4.1.00", shortVersion("4.1.00.1"));
  EXPECT_EQ("4.1.01", shortVersion("4.1.01.1"));
  EXPECT_EQ("4.1.", shortVersion("4.1..1"));
}

TEST(ShortVersion, IsEmptyWithoutThreeDots) {
  for (const char* full : {"", "5", "5.2", "5.2.1", ".."}) EXPECT_EQ("", shortVersion(full));
}

}  // namespace
