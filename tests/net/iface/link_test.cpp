// SPDX-License-Identifier: Apache-2.0
// Link settings and link status through the MII tool.

#include <gmock/gmock.h>
#include <sys/mount.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Link : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    strcpy(shm->config.lanInterfaceName, "lan9");
    strcpy(shm->config.wanInterfaceName, "eth0.13");
    strcpy(shm->config.physicalLanInterfaceName, "eth1");
    strcpy(shm->config.physicalWanInterfaceName, "eth0");
    strcpy(shm->config.managementInterfaceName, "eth2");
    strcpy(shm->config.bridgeRouterPhysicalName, "eth5");
  }
  int status(int kind) { return getLinkStatus(kind, first_, second_, third_); }
  char first_[256] = "one";
  char second_[256] = "two";
  char third_[256] = "three";
};

TEST_F(Link, EachSettingGoesToItsInterface) {
  shm->config.lanLinkSetting = 1;
  shm->config.wanLinkSetting = 20;
  shm->config.managementLinkSetting = 40;
  EXPECT_EQ(0, setSystemLinkSetting(0));
  EXPECT_EQ(0, setSystemLinkSetting(1));
  EXPECT_EQ(0, setSystemLinkSetting(3));
  EXPECT_THAT(shellLines(), ElementsAre("/usr/bin/mii-diag -R eth5 > /dev/null 2>&1",
                                        "/usr/bin/mii-diag -F 20 eth0.13 > /dev/null 2>&1",
                                        "/usr/bin/mii-diag -F 40 eth2 > /dev/null 2>&1"));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Link, CodesPassAsNumbers) {
  for (uint32_t code : {80u, 100u, 120u, 140u, 0u}) {
    clearRecords();
    shm->config.lanLinkSetting = code;
    EXPECT_EQ(0, setSystemLinkSetting(0));
    EXPECT_THAT(shellLines(), ElementsAre("/usr/bin/mii-diag -F " + std::to_string(code) + " eth5 > /dev/null 2>&1"));
  }
}

TEST_F(Link, OtherNumbersAreRefused) {
  for (int which : {2, 4, 5, -1}) EXPECT_FAILS_WITH(SHM_EINVAL, setSystemLinkSetting(which));
  EXPECT_THAT(shellLines(), IsEmpty());
}

TEST_F(Link, FailingToolIsIgnored) {
  answer("mii-diag", "rubbish", 1);
  EXPECT_EQ(0, setSystemLinkSetting(0));
}

TEST_F(Link, NameThatIsNotPlainReachesNoShell) {
  memcpy(shm->config.bridgeRouterPhysicalName, ";reboot;reboot;r", 16);
  EXPECT_EQ(0, setSystemLinkSetting(0));
  EXPECT_EQ(-1, status(0));
  EXPECT_THAT(shellLines(), IsEmpty());
}

TEST_F(Link, StatusLinesCrossOver) {
  answer("mii-diag", "Speed: 100\nDuplex: full\nMode: one: two\nfurther: line\n");
  EXPECT_EQ(0, status(1));
  EXPECT_STREQ("100", first_);
  EXPECT_STREQ("two", second_);
  EXPECT_STREQ("full", third_);
  EXPECT_THAT(shellLines(), ElementsAre("/usr/bin/mii-diag -t eth0.13 > /tmp/mii.out"));
  EXPECT_FALSE(fileExists("/tmp/mii.out"));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Link, NumberZeroMeansFive) {
  answer("mii-diag", "a: 1\nb: 2\nc: 3");
  EXPECT_EQ(0, status(0));
  EXPECT_EQ(0, status(5));
  EXPECT_EQ(0, status(3));
  EXPECT_EQ(0, status(4));
  EXPECT_THAT(shellLines(),
              ElementsAre("/usr/bin/mii-diag -t eth5 > /tmp/mii.out", "/usr/bin/mii-diag -t eth5 > /tmp/mii.out",
                          "/usr/bin/mii-diag -t eth2 > /tmp/mii.out", "/usr/bin/mii-diag -t br0 > /tmp/mii.out"));
  EXPECT_STREQ("3", second_);
}

TEST_F(Link, NumbersWithoutANameAreRefused) {
  for (int kind : {2, 6, -1}) EXPECT_FAILS_WITH(SHM_EINVAL, status(kind));
  EXPECT_THAT(shellLines(), IsEmpty());
}

TEST_F(Link, FewerThanThreeUsableLinesFail) {
  for (const char* text : {"", "a: 1\n", "a: 1\nb: 2\n", "a: 1\nno colon\nc: 3\n"}) {
    answer("mii-diag", text);
    EXPECT_EQ(-1, status(1)) << text;
    EXPECT_FALSE(fileExists("/tmp/mii.out"));
  }
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Link, TextBehindALateColonIsEmpty) {
  answer("mii-diag", "a:\nb: \nc:");
  EXPECT_EQ(0, status(1));
  EXPECT_STREQ("", first_);
  EXPECT_STREQ("", second_);
  EXPECT_STREQ("", third_);
}

TEST_F(Link, LinesAreReadInPiecesOf255) {
  answer("mii-diag", "a: " + std::string(252, 'x') + ": second\n: third\n");
  EXPECT_EQ(0, status(1));
  EXPECT_EQ(std::string(252, 'x'), first_);
  EXPECT_STREQ("second", third_);
  EXPECT_STREQ("third", second_);
}

TEST_F(Link, OldOutputIsNotTakenForNew) {
  writeFile("/tmp/mii.out", "a: 1\nb: 2\nc: 3\n");
  strcpy(shm->config.wanInterfaceName, "");
  EXPECT_EQ(-1, status(1));
  EXPECT_FALSE(fileExists("/tmp/mii.out"));
}

TEST_F(Link, EmptyNameRunsAsItIs) {
  strcpy(shm->config.wanInterfaceName, "");
  shm->config.wanLinkSetting = 20;
  EXPECT_EQ(0, setSystemLinkSetting(1));
  EXPECT_EQ(-1, status(1));
  EXPECT_THAT(shellLines(),
              ElementsAre("/usr/bin/mii-diag -F 20  > /dev/null 2>&1", "/usr/bin/mii-diag -t  > /tmp/mii.out"));
}

TEST_F(Link, LinkInPlaceOfTheOutputIsNotFollowed) {
  answer("mii-diag", "a: 1\nb: 2\nc: 3\n");
  writeFile("/tmp/victim", "precious");
  ASSERT_EQ(0, symlink("/tmp/victim", "/tmp/mii.out"));
  EXPECT_EQ(0, status(1));
  EXPECT_EQ("precious", readFile("/tmp/victim"));
}

TEST_F(Link, FileInPlaceOfTheOutputThatCannotBeRemovedIsNotOverwritten) {
  answer("mii-diag", "a: 1\nb: 2\nc: 3\n");
  writeFile("/tmp/victim", "precious");
  writeFile("/tmp/mii.out", "");
  ASSERT_EQ(0, mount("/tmp/victim", "/tmp/mii.out", nullptr, MS_BIND, nullptr));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, status(1));
  EXPECT_EQ("precious", readFile("/tmp/victim"));
  EXPECT_THAT(shellLines(), IsEmpty());
  ASSERT_EQ(0, umount("/tmp/mii.out"));
}

TEST_F(Link, NullIsRefused) {
  EXPECT_FAILS_WITH(SHM_EINVAL, getLinkStatus(1, nullptr, second_, third_));
  EXPECT_FAILS_WITH(SHM_EINVAL, getLinkStatus(1, first_, nullptr, third_));
  EXPECT_FAILS_WITH(SHM_EINVAL, getLinkStatus(1, first_, second_, nullptr));
}

TEST(LinkWithoutStore, FailsToAttach) {
  char text[256];
  EXPECT_FAILS_WITH(SHM_EATTACH, setSystemLinkSetting(0));
  EXPECT_FAILS_WITH(SHM_EATTACH, getLinkStatus(0, text, text, text));
  EXPECT_THAT(shellLines(), IsEmpty());
}

}  // namespace
}  // namespace kestrove::testing
