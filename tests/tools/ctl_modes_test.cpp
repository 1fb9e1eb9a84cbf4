// SPDX-License-Identifier: Apache-2.0
// Configuration Mode, Debug Mode and the notifications from the command line.
#include <gmock/gmock.h>

#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kFile[] = "/etc/config/kestrove.conf";

class CtlModesTest : public StoreTest {
 protected:
  int state() const { return static_cast<int>(shm->operationalState); }
};

TEST_F(CtlModesTest, InConfigurationModeChangesTouchTheStoreAlone) {
  ASSERT_EQ(0, ctl("save").status);
  Ran entered = ctl("--json configuration-mode enter");
  EXPECT_EQ("Configuration Mode", entered.json()["state"]);
  EXPECT_EQ(true, entered.json()["changed"]);
  EXPECT_EQ(SHM_STATE_CONFIGURATION, state());
  EXPECT_THAT(ctl("set sysName branch").out, HasSubstr("stored, not saved: the store is in Configuration Mode"));
  EXPECT_THAT(readFile(kFile), Not(HasSubstr("branch")));
}

TEST_F(CtlModesTest, LeavingItSavesNothingAndSaysSo) {
  ASSERT_EQ(0, ctl("save").status);
  ctl("configuration-mode enter");
  ctl("set sysName branch");
  ASSERT_EQ(0, ctl("route add 172.20.0.0/16 192.168.10.3").status);
  Ran left = ctl("configuration-mode leave");
  EXPECT_EQ(0, left.status);
  EXPECT_EQ(SHM_STATE_OPERATIONAL, state());
  EXPECT_THAT(left.out, AllOf(HasSubstr("left Configuration Mode\n"),
                              HasSubstr("not saved: items sysName, routes 172.20.0.0/16 (kestrovectl save)"),
                              HasSubstr("the kernel lacks 172.20.0.0/16"), HasSubstr("the engine has not heard")));
  EXPECT_THAT(readFile(kFile), Not(HasSubstr("branch")));
  EXPECT_EQ(0, ctl("save").status);
  EXPECT_THAT(readFile(kFile), HasSubstr("branch"));
}

TEST_F(CtlModesTest, WhatIsNotSavedIsListed) {
  ASSERT_EQ(0, ctl("save").status);
  ctl("configuration-mode enter");
  EXPECT_EQ(true, ctl("--json configuration-mode leave").json()["saved"]) << "nothing was changed";
  ctl("configuration-mode enter");
  ctl("set sysName branch");
  const Json left = ctl("--json configuration-mode leave").json();
  EXPECT_EQ(false, left["saved"]);
  ASSERT_EQ(1u, left["unsaved"].size());
  EXPECT_EQ("sysName", left["unsaved"][0]["key"]);
  EXPECT_EQ("set sysName branch", left["unsaved"][0]["after"]);
}

TEST_F(CtlModesTest, LeavingItMaySaveAtOnce) {
  ctl("configuration-mode enter");
  ctl("set sysName branch");
  Json left = ctl("--json configuration-mode leave --save").json();
  EXPECT_EQ(true, left["saved"]);
  EXPECT_EQ(false, left["engineTold"]);
  EXPECT_TRUE(left["kernelLacks"].empty());
  EXPECT_THAT(readFile(kFile), HasSubstr("branch"));
}

TEST_F(CtlModesTest, ASaveThatFailsLeavesTheModeAllTheSame) {
  ctl("configuration-mode enter");
  run("rm -rf /etc/config/kestrove.conf; mkdir -p /etc/config/kestrove.conf/in");
  Ran left = ctl("--json configuration-mode leave --save");
  EXPECT_EQ(8, left.status);
  EXPECT_EQ(false, left.json()["saved"]);
  EXPECT_EQ(8, left.json()["error"]["exit"]);
  EXPECT_EQ(SHM_STATE_OPERATIONAL, state());
}

TEST_F(CtlModesTest, TheSecondTimeNothingChanges) {
  EXPECT_EQ(false, ctl("--json configuration-mode leave").json()["changed"]);
  EXPECT_THAT(ctl("debug-mode leave").out, HasSubstr("not in Debug Mode\n"));
  ctl("debug-mode enter");
  EXPECT_EQ(false, ctl("--json debug-mode enter").json()["changed"]);
  EXPECT_EQ(SHM_STATE_DEBUG, state());
}

TEST_F(CtlModesTest, OneModeIsNotOverwrittenByTheOther) {
  ctl("debug-mode enter");
  Ran refused = ctl("configuration-mode enter");
  EXPECT_EQ(1, refused.status);
  EXPECT_THAT(refused.err, HasSubstr("the store is in Debug Mode; leave that first (kestrovectl debug-mode leave)"));
  EXPECT_EQ(0, ctl("configuration-mode leave").status);
  EXPECT_EQ(SHM_STATE_DEBUG, state());
}

TEST_F(CtlModesTest, LeavingDebugModeNamesTheRoutesThatTheKernelLacks) {
  ctl("debug-mode enter");
  ASSERT_EQ(0, ctl("route add 172.20.0.0/16 192.168.10.3").status);
  ASSERT_EQ(0, ctl("route add 172.21.0.0/16 192.168.10.3 --disabled").status);
  Json left = ctl("--json debug-mode leave").json();
  EXPECT_EQ(Json::array({"172.20.0.0/16"}), left["kernelLacks"]);
  EXPECT_FALSE(left.contains("saved")) << "in Debug Mode changes are saved as ever";
  EXPECT_EQ(SHM_STATE_OPERATIONAL, state());
}

TEST_F(CtlModesTest, NotificationsStayWhenTheyAreLookedAt) {
  EXPECT_EQ(0, ctl("notifications set 2 on").status);
  for (int i = 0; i < 2; ++i) {
    Json rows = ctl("--json notifications").json();
    ASSERT_EQ(3u, rows.size());
    EXPECT_EQ(false, rows[0]["on"]);
    EXPECT_EQ(true, rows[1]["on"]);
  }
  EXPECT_EQ(1, getNotificationStatus(2));
  EXPECT_EQ(false, ctl("--json notifications show").json()[1]["on"]);
}

TEST_F(CtlModesTest, ANotificationIsSwitchedOffAlone) {
  for (int n = 1; n <= 3; ++n) setNotificationStatus(n);
  EXPECT_THAT(ctl("notifications set 1 off").out, HasSubstr("notification 1 is off"));
  EXPECT_EQ(6, shm->notificationStatus);
  for (const char* wrong : {"0 on", "4 on", "1 maybe", "1"}) {
    EXPECT_EQ(2, ctl("notifications set " + std::string(wrong)).status) << wrong;
  }
}

}  // namespace
}  // namespace kestrove::testing
