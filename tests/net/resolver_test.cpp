// SPDX-License-Identifier: Apache-2.0
// The name server's file.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr char kResolverFile[] = "/etc/resolv.conf";

class NameServer : public StoreTest {};

TEST_F(NameServer, IsTheOnlyLineOfTheFile) {
  writeFile(kResolverFile, "search here\nnameserver 1.1.1.1\n");
  EXPECT_EQ(0, changeDnsServerIp(quad("10.20.30.40")));
  EXPECT_EQ("nameserver 10.20.30.40", readFile(kResolverFile));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(NameServer, ChangeDrivesTheOperatingModes) {
  shm->config.opModeState = 0;
  save_shared_memory();
  unlink(shm->config.configFileName);
  EXPECT_EQ(0, changeDnsServerIp(1));
  EXPECT_TRUE(fileExists(shm->config.configFileName)) << "the state machine saves what it went through";
}

TEST_F(NameServer, ResultOfTheOperatingModesDoesNotMatter) {
  shm->config.opModeState = 77;
  EXPECT_EQ(0, changeDnsServerIp(quad("1.2.3.4")));
}

TEST_F(NameServer, FileThatCannotBeOpenedIsAFailure) {
  unlink(kResolverFile);
  ASSERT_EQ(0, mkdir(kResolverFile, 0755));
  shm_errno = 99;
  EXPECT_EQ(-1, changeDnsServerIp(1));
  EXPECT_EQ(99u, shm_errno);
  EXPECT_FALSE(fileExists(shm->config.configFileName)) << "no event";
}

TEST_F(NameServer, FileThatCannotBeWrittenIsAFailure) {
  unlink(kResolverFile);
  ASSERT_EQ(0, symlink("/dev/full", kResolverFile));
  EXPECT_EQ(-1, changeDnsServerIp(1));
  EXPECT_FALSE(fileExists(shm->config.configFileName)) << "no event";
}

TEST_F(NameServer, CanBeRemoved) {
  writeFile(kResolverFile, "nameserver 1.1.1.1\n");
  EXPECT_EQ(0, removeResolvConf());
  EXPECT_FALSE(fileExists(kResolverFile));
  EXPECT_EQ(-1, removeResolvConf());
  ASSERT_EQ(0, mkdir(kResolverFile, 0755));
  EXPECT_EQ(-1, removeResolvConf()) << "a folder is no file";
  rmdir(kResolverFile);
}

TEST(NameServerWithoutAStore, NothingIsWritten) {
  writeFile(kResolverFile, "nameserver 1.1.1.1\n");
  EXPECT_FAILS_WITH(SHM_EATTACH, changeDnsServerIp(1));
  EXPECT_EQ("nameserver 1.1.1.1\n", readFile(kResolverFile));
}

}  // namespace
}  // namespace kestrove::testing
