// SPDX-License-Identifier: Apache-2.0
// Texts and their unified difference.
#include "tools/ctl/preview/unified.h"

#include <gtest/gtest.h>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ctl::preview::unifiedDifference;

std::string numbers(int first, int last) {
  std::string text;
  for (int i = first; i <= last; ++i) text += std::to_string(i) + "\n";
  return text;
}

std::string hunks(const std::string& before, const std::string& after) {
  const std::string text = unifiedDifference("a", before, "b", after);
  return text.starts_with("--- a\n+++ b\n") ? text.substr(12) : text;
}

TEST(Unified, EqualTextsHaveNone) { EXPECT_EQ("", unifiedDifference("a", "x\ny\n", "b", "x\ny\n")); }

TEST(Unified, ThreeLinesStandAroundAChange) {
  EXPECT_EQ("@@ -2,7 +2,7 @@\n 2\n 3\n 4\n-5\n+five\n 6\n 7\n 8\n",
            hunks(numbers(1, 9), numbers(1, 4) + "five\n" + numbers(6, 9)));
}

TEST(Unified, NearChangesShareAHunkAndFarOnesDoNot) {
  const std::string near = "@@ -1,8 +1,6 @@\n-1\n 2\n 3\n 4\n 5\n 6\n 7\n-8\n";
  EXPECT_EQ(near, hunks(numbers(1, 8), numbers(2, 7)));
  const std::string far = "@@ -1,4 +1,3 @@\n-1\n 2\n 3\n 4\n@@ -6,4 +5,3 @@\n 6\n 7\n 8\n-9\n";
  EXPECT_EQ(far, hunks(numbers(1, 9), numbers(2, 8)));
}

TEST(Unified, FromNothingAndToNothing) {
  EXPECT_EQ("@@ -0,0 +1,2 @@\n+1\n+2\n", hunks("", "1\n2\n"));
  EXPECT_EQ("@@ -1 +0,0 @@\n-1\n", hunks("1\n", ""));
}

TEST(Unified, ALastLineWithoutALineFeedIsNamed) {
  EXPECT_EQ("@@ -1 +1 @@\n-1\n\\ No newline at end of file\n+1\n", hunks("1", "1\n"));
}

}  // namespace
}  // namespace kestrove::testing
