// SPDX-License-Identifier: Apache-2.0
// When the caller's PATH is followed.
#include "sys/search_path.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

namespace {
bool startedWithMoreRights = false;
}

// In place of the C library's: as it is in a setuid program.
extern "C" char* secure_getenv(const char* name) noexcept { return startedWithMoreRights ? nullptr : getenv(name); }

namespace kestrove::sys {
namespace {

class SearchPath : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(0, mkdir("/etc/mine", 0755));
    ASSERT_EQ(0, mkdir("/etc/theirs", 0755));
    ASSERT_EQ(0, mkdir("/etc/theirs/below", 0755));
    ASSERT_EQ(0, chmod("/etc/theirs", 0777));
  }
  void TearDown() override { startedWithMoreRights = false; }

  static bool trusted(const std::string& path) {
    setenv("PATH", path.c_str(), 1);
    return searchPathIsTrusted();
  }
};

TEST_F(SearchPath, FoldersOfRootAreTrusted) {
  for (const char* path :
       {"/usr/sbin:/usr/bin:/sbin:/bin", "/etc/mine", "/etc/mine/", "//etc//mine", "/", "/usr/bin:/"}) {
    EXPECT_TRUE(trusted(path)) << path;
  }
}

TEST_F(SearchPath, RelativeAndEmptyEntriesAreNot) {
  for (const char* path :
       {"", ":", "/usr/bin:", ":/usr/bin", "/usr/bin::/bin", ".", "bin", "/usr/bin:./bin", "~/bin"}) {
    EXPECT_FALSE(trusted(path)) << path;
  }
}

TEST_F(SearchPath, FoldersThatOthersMayWriteAreNot) {
  EXPECT_FALSE(trusted("/etc/theirs"));
  EXPECT_FALSE(trusted("/usr/bin:/etc/theirs"));
  EXPECT_FALSE(trusted("/etc/theirs/below")) << "it can be put aside for another";
  EXPECT_FALSE(trusted("/tmp"));
  for (mode_t mode : {0775u, 0757u, 01777u}) {
    ASSERT_EQ(0, chmod("/etc/mine", mode));
    EXPECT_FALSE(trusted("/etc/mine")) << mode;
  }
}

TEST_F(SearchPath, FoldersOfRootWhereOthersCanOnlyAddAreTrusted) {
  ASSERT_EQ(0, mkdir("/tmp/mine", 0755));
  EXPECT_TRUE(trusted("/tmp/mine")) << "/tmp is sticky";
}

TEST_F(SearchPath, FoldersOfOthersAreNot) {
  if (chown("/etc/mine", 1, 1) != 0) GTEST_SKIP() << "this sandbox knows one user, and everything is root's";
  EXPECT_FALSE(trusted("/etc/mine"));
}

TEST_F(SearchPath, LinksAreJudgedByWhereTheyLead) {
  ASSERT_EQ(0, symlink("/etc/mine", "/etc/to-mine"));
  ASSERT_EQ(0, symlink("/etc/theirs", "/etc/to-theirs"));
  EXPECT_TRUE(trusted("/etc/to-mine"));
  EXPECT_FALSE(trusted("/etc/to-theirs"));
}

TEST_F(SearchPath, MissingFoldersCountAsTheOneTheyWouldBeMadeIn) {
  EXPECT_TRUE(trusted("/etc/mine/no/such"));
  EXPECT_FALSE(trusted("/etc/theirs/no"));
  EXPECT_FALSE(trusted("/tmp/no/such"));
}

TEST_F(SearchPath, WhatIsNoFolderIsNot) {
  EXPECT_FALSE(trusted("/etc/passwd"));
  EXPECT_FALSE(trusted("/etc/passwd/x"));
  EXPECT_FALSE(trusted("/" + std::string(5000, 'x')));
}

TEST_F(SearchPath, NoPathOfAProgramWithMoreRightsThanItsCallerIs) {
  startedWithMoreRights = true;
  EXPECT_FALSE(trusted("/usr/bin:/bin"));
}

TEST_F(SearchPath, NoneIsTheSystemsOwn) {
  unsetenv("PATH");
  EXPECT_TRUE(searchPathIsTrusted());
  startedWithMoreRights = true;
  EXPECT_TRUE(searchPathIsTrusted());
  clearenv();
  EXPECT_TRUE(searchPathIsTrusted());
}

TEST_F(SearchPath, IsReplacedForAScopeAlone) {
  setenv("PATH", ".:/usr/bin", 1);
  {
    TrustedSearchPath path;
    EXPECT_STREQ(kSystemFolders, getenv("PATH"));
    TrustedSearchPath inner;
    EXPECT_STREQ(kSystemFolders, getenv("PATH"));
  }
  EXPECT_STREQ(".:/usr/bin", getenv("PATH"));
}

TEST_F(SearchPath, IsKeptWhenTrusted) {
  setenv("PATH", "/etc/mine:/usr/bin", 1);
  TrustedSearchPath path;
  EXPECT_STREQ("/etc/mine:/usr/bin", getenv("PATH"));
}

TEST_F(SearchPath, EveryPathOfTheEnvironmentCounts) {
  char first[] = "PATH=/usr/bin", other[] = "OTHER=x", second[] = "PATH=/etc/theirs";
  char* environment[] = {first, other, second, nullptr};
  char** before = environ;
  environ = environment;
  {
    TrustedSearchPath path;
    EXPECT_STREQ("PATH=/usr/sbin:/usr/bin:/sbin:/bin", environment[0]);
    EXPECT_STREQ("OTHER=x", environment[1]);
    EXPECT_STREQ("PATH=/usr/sbin:/usr/bin:/sbin:/bin", environment[2]);
  }
  EXPECT_STREQ("PATH=/usr/bin", environment[0]);
  EXPECT_STREQ("PATH=/usr/sbin:/usr/bin:/sbin:/bin", environment[2]) << "the second never comes back";
  environ = before;
}

}  // namespace
}  // namespace kestrove::sys
