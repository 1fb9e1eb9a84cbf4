// The two addresses given as text.

#include <gmock/gmock.h>

#include "kestrove/kestrove.h"
#include "tests/iface/support.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char kFile[] = "/etc/config/kestrove.conf";
constexpr uint32_t kInterfaceBit = 0x40;

class TextSetters : public StoreTest {
 protected:
  int gateway(const char* text) { return setinBandWanGateway(strcpy(text_, text)); }
  int management(const char* text) { return setManagementIP(strcpy(text_, text)); }
  char text_[64];
};

TEST_F(TextSetters, GatewayIsStoredSavedAndMarked) {
  EXPECT_EQ(0, gateway("192.168.10.254"));
  EXPECT_EQ(v4("192.168.10.254"), shm->config.wanGateway);
  EXPECT_EQ(kInterfaceBit, shm->pendingChanges);
  EXPECT_THAT(readFile(kFile), HasSubstr("192.168.10.254"));
}

TEST_F(TextSetters, GatewayThatIsNoAddressStillSavesMarksAndSucceeds) {
  for (const char* text : {"", "1.2.3", "1.2.3.256", "rubbish"}) {
    shm->pendingChanges = 0;
    writeFile(kFile, "");
    EXPECT_EQ(0, gateway(text)) << text;
    EXPECT_EQ(0u, shm->config.wanGateway);
    EXPECT_EQ(kInterfaceBit, shm->pendingChanges);
    EXPECT_NE("", readFile(kFile));
  }
}

TEST_F(TextSetters, ManagementAddressIsStoredSavedAndMarked) {
  EXPECT_EQ(0, management("010.0.0.9"));
  EXPECT_EQ(v4("10.0.0.9"), shm->config.managementAddress);
  EXPECT_EQ(kInterfaceBit, shm->pendingChanges & kInterfaceBit);
  EXPECT_NE("", readFile(kFile));
}

TEST_F(TextSetters, ManagementTextThatIsNoAddressFailsAfterTheSave) {
  EXPECT_EQ(-1, management("1.2.3"));
  EXPECT_EQ(0u, shm->config.managementAddress);
  EXPECT_EQ(kInterfaceBit, shm->pendingChanges);
  EXPECT_NE("", readFile(kFile));
}

TEST_F(TextSetters, ConfigurationModeOnlyStores) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(0, gateway("192.168.10.254"));
  EXPECT_EQ(0, management("10.0.0.9"));
  EXPECT_EQ(-1, management("1.2.3"));
  EXPECT_EQ(v4("192.168.10.254"), shm->config.wanGateway);
  EXPECT_EQ(0u, shm->pendingChanges);
  EXPECT_FALSE(fileExists(kFile));
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

TEST(TextSettersWithoutStore, FailToAttach) {
  char text[] = "10.0.0.9";
  EXPECT_FAILS_WITH(SHM_EATTACH, setinBandWanGateway(text));
  EXPECT_FAILS_WITH(SHM_EATTACH, setManagementIP(text));
}

}  // namespace
}  // namespace kestrove::testing
