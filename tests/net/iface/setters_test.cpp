// SPDX-License-Identifier: Apache-2.0
// The two addresses given as text.

#include <gmock/gmock.h>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/files.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr uint32_t kInterfaceBit = 0x40;

class TextSetters : public StoreTest {
 protected:
  int gateway(const char* text) { return setinBandWanGateway(strcpy(text_, text)); }
  int management(const char* text) { return setManagementIP(strcpy(text_, text)); }
  char text_[64];
};

TEST_F(TextSetters, GatewayIsStoredSavedAndMarked) {
  EXPECT_EQ(0, gateway("192.168.10.254"));
  EXPECT_EQ(quad("192.168.10.254"), shm->config.wanGateway);
  EXPECT_EQ(kInterfaceBit, shm->pendingChanges);
  EXPECT_THAT(readFile(kConfigFile), HasSubstr("192.168.10.254"));
}

TEST_F(TextSetters, GatewayThatIsNoAddressStillSavesMarksAndSucceeds) {
  for (const char* text : {"", "1.2.3", "1.2.3.256", "rubbish"}) {
    shm->pendingChanges = 0;
    writeFile(kConfigFile, "");
    EXPECT_EQ(0, gateway(text)) << text;
    EXPECT_EQ(0u, shm->config.wanGateway);
    EXPECT_EQ(kInterfaceBit, shm->pendingChanges);
    EXPECT_NE("", readFile(kConfigFile));
  }
}

TEST_F(TextSetters, ManagementAddressIsStoredSavedAndMarked) {
  EXPECT_EQ(0, management("010.0.0.9"));
  EXPECT_EQ(quad("10.0.0.9"), shm->config.managementAddress);
  EXPECT_EQ(kInterfaceBit, shm->pendingChanges & kInterfaceBit);
  EXPECT_NE("", readFile(kConfigFile));
}

TEST_F(TextSetters, ManagementTextThatIsNoAddressFailsAfterTheSave) {
  EXPECT_EQ(-1, management("1.2.3"));
  EXPECT_EQ(0u, shm->config.managementAddress);
  EXPECT_EQ(kInterfaceBit, shm->pendingChanges);
  EXPECT_NE("", readFile(kConfigFile));
}

TEST_F(TextSetters, ConfigurationModeOnlyStores) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(0, gateway("192.168.10.254"));
  EXPECT_EQ(0, management("10.0.0.9"));
  EXPECT_EQ(-1, management("1.2.3"));
  EXPECT_EQ(quad("192.168.10.254"), shm->config.wanGateway);
  EXPECT_EQ(0u, shm->pendingChanges);
  EXPECT_FALSE(fileExists(kConfigFile));
  EXPECT_THAT(shellLines(), IsEmpty());
}

TEST_F(TextSetters, DebugModeMarksAllTheSame) {
  shm->operationalState = SHM_STATE_DEBUG;
  EXPECT_EQ(0, gateway("rubbish"));
  EXPECT_EQ(kInterfaceBit, shm->pendingChanges);
}

TEST_F(TextSetters, NullIsRefused) {
  EXPECT_FAILS_WITH(SHM_EINVAL, setinBandWanGateway(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, setManagementIP(nullptr));
  EXPECT_EQ(0u, shm->pendingChanges);
}

TEST_F(TextSetters, DeadEngineLeavesTheParsersCode) {
  shm->taskPids[4] = 4194304;  // no process has that number
  EXPECT_FAILS_WITH(SHM_EDOTS, management("1.2.3"));
  EXPECT_FAILS_WITH(SHM_EOCTET, management("1.2.3.256"));
  EXPECT_FAILS_WITH(SHM_EINVAL, management(""));
  EXPECT_EQ(0, management("10.0.0.9"));
  EXPECT_EQ(0, gateway("rubbish"));
}

TEST_F(TextSetters, FailedSaveLeavesTheParsersCode) {
  strcpy(shm->config.configFileName, "/no/such/folder/file");
  EXPECT_FAILS_WITH(SHM_EDOTS, management("1.2.3"));
  shm_errno = 0;
  EXPECT_EQ(0, management("10.0.0.9"));
  EXPECT_EQ(uint32_t(SHM_ESYSTEM), shm_errno) << "not on disk";
}

TEST_F(TextSetters, TextIsRewritten) {
  EXPECT_EQ(0, gateway("192.168.001.010"));
  EXPECT_STREQ("192.168.1.10", text_);
  EXPECT_EQ(0, management("010.000.0.09"));
  EXPECT_STREQ("10.0.0.9", text_);
}

TEST_F(TextSetters, TextMayLieInTheStore) {
  strcpy(shm->config.sysName, "010.0.0.9");
  EXPECT_EQ(0, setManagementIP(shm->config.sysName));
  EXPECT_EQ(quad("10.0.0.9"), shm->config.managementAddress);
  EXPECT_STREQ("10.0.0.9", shm->config.sysName);
  EXPECT_THAT(readFile(kConfigFile), HasSubstr("10.0.0.9"));
  strcpy(shm->config.sysName, "192.168.010.254");
  EXPECT_EQ(0, setinBandWanGateway(shm->config.sysName));
  EXPECT_EQ(quad("192.168.10.254"), shm->config.wanGateway);
  EXPECT_STREQ("192.168.10.254", shm->config.sysName);
}

TEST(TextSettersWithoutStore, ParseAndRewriteTheText) {
  char text[] = "010.0.0.9";
  EXPECT_EQ(0, setinBandWanGateway(text));
  EXPECT_STREQ("10.0.0.9", text);
  strcpy(text, "010.0.0.9");
  EXPECT_EQ(0, setManagementIP(text));
  EXPECT_STREQ("10.0.0.9", text);
  char bad[] = "010.2.3";
  EXPECT_EQ(0, setinBandWanGateway(bad));
  EXPECT_STREQ("10.2.3", bad);
  EXPECT_FAILS_WITH(SHM_EDOTS, setManagementIP(bad));
  char empty[] = "";
  EXPECT_FAILS_WITH(SHM_EINVAL, setManagementIP(empty));
  EXPECT_EQ(0, shm_lock_count);
}

}  // namespace
}  // namespace kestrove::testing
