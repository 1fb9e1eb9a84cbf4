// SPDX-License-Identifier: Apache-2.0
// What the monitor has the servers told: their addresses, once for each change.
#include <arpa/inet.h>
#include <sys/mount.h>

#include <fstream>

#include "tests/monitor/monitor_fixture.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kScript[] = "/usr/bin/apacheConfig.sh";
constexpr char kTells[] = "#!/bin/sh\necho \"$*\" >> /tmp/told\n";

class MonitorServersTest : public MonitorTest {
 protected:
  void SetUp() override {
    MonitorTest::SetUp();
    shm->config.httpOperState = SHM_ON;
    instead(kScript, kTells);
  }

  static void instead(const std::string& path, const std::string& script, mode_t mode = 0755) {
    const std::string file = "/tmp/" + path.substr(path.rfind('/') + 1);
    writeFile(file, script);
    ASSERT_EQ(0, chmod(file.c_str(), mode));
    ASSERT_EQ(0, mount(file.c_str(), path.c_str(), nullptr, MS_BIND, nullptr));
  }
  void watch() { start({"--task", "kestrove=", "--task", "httpd="}); }
  static void useAddresses(const Words& addresses) {
    shm_lock();
    int count = 0;
    for (const std::string& address : addresses) {
      ManagementAddress& entry = shm->managementAddress[count++];
      entry = {};
      entry.ipVersion = 4;
      entry.status = SHM_ADDRESS_APPLIED;
      inet_pton(AF_INET, address.c_str(), &entry.address);
    }
    shm->managementAddressCount = count;
    shm_unlock();
  }
  static Words told() {
    Words lines;
    std::ifstream file("/tmp/told");
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }
  static bool toldTimes(size_t times) {
    return eventually([&] { return told().size() >= times; });
  }
  // The helper has gone round so often since.
  static void rounds(int count) {
    for (int i = 0; i < count; ++i) {
      unlink("/tmp/metrics.prom");
      ASSERT_TRUE(eventually([] { return fileExists("/tmp/metrics.prom"); }));
    }
  }
};

TEST_F(MonitorServersTest, AreToldAtFirstAndOfEachChangeOnce) {
  useAddresses({"192.0.2.1"});
  watch();
  ASSERT_TRUE(toldTimes(1));
  useAddresses({"192.0.2.1", "192.0.2.2"});
  ASSERT_TRUE(toldTimes(2));
  rounds(3);
  useAddresses({});
  ASSERT_TRUE(toldTimes(3));
  EXPECT_THAT(told(), ElementsAre("192.0.2.1", "192.0.2.1 192.0.2.2", ""));
  EXPECT_TRUE(said("the servers are told of the management addresses: none"));
}

TEST_F(MonitorServersTest, AreNotToldAgainByAnotherMonitor) {
  useAddresses({"192.0.2.1"});
  watch();
  ASSERT_TRUE(toldTimes(1));
  ASSERT_TRUE(eventually([] { return fileExists("/tmp/monitor/monitor.addresses"); }));
  monitor_->end(SIGKILL);
  watch();
  rounds(3);
  useAddresses({"192.0.2.2"});
  ASSERT_TRUE(toldTimes(2));
  EXPECT_THAT(told(), ElementsAre("192.0.2.1", "192.0.2.2"));
}

TEST_F(MonitorServersTest, HearNothingOfWhatIsOnlyCollectedOrBeingLoaded) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  watch();
  rounds(3);
  useAddresses({"192.0.2.1"});
  rounds(3);
  EXPECT_THAT(told(), IsEmpty());
  useAddresses({"192.0.2.2"});
  shm->operationalState = SHM_STATE_OPERATIONAL;
  ASSERT_TRUE(toldTimes(1));
  EXPECT_THAT(told(), ElementsAre("192.0.2.2"));
}

TEST_F(MonitorServersTest, HearOfNoAddressThatIsNotInUse) {
  useAddresses({"192.0.2.1", "192.0.2.2"});
  shm->managementAddress[0].status = SHM_ADDRESS_KEPT;
  watch();
  ASSERT_TRUE(toldTimes(1));
  shm->managementAddress[0].status = SHM_ADDRESS_APPLIED;
  ASSERT_TRUE(toldTimes(2));
  EXPECT_THAT(told(), ElementsAre("192.0.2.2", "192.0.2.1 192.0.2.2"));
}

TEST_F(MonitorServersTest, AWebServerThatWasOffIsToldWhenItIsOn) {
  shm->config.httpOperState = SHM_OFF;
  useAddresses({"192.0.2.1"});
  watch();
  ASSERT_TRUE(toldTimes(1));
  EXPECT_EQ(0, setKestroveConfigItem(SHM_ITEM_WEB, SHM_ON, 0, "--"));
  ASSERT_TRUE(toldTimes(2));
  EXPECT_EQ(0, setKestroveConfigItem(SHM_ITEM_WEB, SHM_OFF, 0, "--"));
  rounds(3);
  EXPECT_EQ(0, setKestroveConfigItem(SHM_ITEM_WEB, SHM_ON, 0, "--"));
  rounds(3);
  EXPECT_THAT(told(), ElementsAre("192.0.2.1", "192.0.2.1"));
}

TEST_F(MonitorServersTest, AComplaintOfTheirScriptsIsSaidOnce) {
  instead(kScript, std::string(kTells) + "echo no room >&2; exit 1\n");
  watch();
  ASSERT_TRUE(toldTimes(1));
  useAddresses({"192.0.2.1"});
  ASSERT_TRUE(toldTimes(2));
  EXPECT_TRUE(said("warning: telling the servers: no room"));
  rounds(3);
  EXPECT_EQ(1, times("telling the servers: no room"));
  EXPECT_EQ(2u, told().size());
}

TEST_F(MonitorServersTest, AScriptThatAMachineDoesNotHaveIsNotMissed) {
  instead("/usr/bin/sshdConfig.sh", "", 0644);
  watch();
  ASSERT_TRUE(toldTimes(1));
  ASSERT_TRUE(eventually([] { return fileExists("/tmp/monitor/monitor.addresses"); }));
  for (const char* path : {kScript, "/usr/bin/snmpdConfig.sh"}) instead(path, "", 0644);
  useAddresses({"192.0.2.1"});
  rounds(3);
  EXPECT_EQ(0, times("telling the servers"));
  EXPECT_EQ(1, times("the servers are told"));
}

TEST_F(MonitorServersTest, AScriptThatHangsStopsNothingElse) {
  instead(kScript, std::string(kTells) + "exec sleep 1000\n");
  watch();
  ASSERT_TRUE(toldTimes(1));
  useAddresses({"192.0.2.1"});
  rounds(3);
  EXPECT_EQ(1u, told().size());
  EXPECT_EQ(0, monitor_->end());
}

}  // namespace
}  // namespace kestrove::testing
