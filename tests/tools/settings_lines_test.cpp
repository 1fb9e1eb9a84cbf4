// SPDX-License-Identifier: Apache-2.0
// The settings of a store as lines, and back.
#include "tools/ctl/settings/lines.h"

#include <string.h>

#include "tests/support/addresses.h"
#include "tests/support/random_store.h"
#include "tests/support/store.h"
#include "tools/ctl/settings/difference.h"
#include "tools/ctl/settings/quoting.h"

namespace kestrove::testing {
namespace {

using ctl::Image;
using ctl::settingLines;

std::vector<std::string> textsOf(const ShmData& store, const std::string& section) {
  std::vector<std::string> texts;
  for (const ctl::SettingLine& line : settingLines(store)) {
    if (line.section == section) texts.push_back(line.text);
  }
  return texts;
}

using Texts = std::vector<std::string>;

// What no line carries: stamps of log-ins, and what became of routes and addresses.
void forgetWhatIsNoSetting() {
  for (UserAccount& account : shm->config.users) {
    account.lastLoginSeconds = account.lastLoginMicroseconds = account.lastPasswdChange = 0;
  }
  for (ManagementAddress& entry : shm->managementAddress) entry.status = 0;
  for (RouteEntry& route : shm->routes.slot) {
    if (route.inUse == 1 && route.status == SHM_ROUTE_INACTIVE) route.status = SHM_ROUTE_ACTIVE;
  }
  for (Route6Entry& route : shm->routes6.slot) {
    if (route.inUse == 1 && route.status == SHM_ROUTE_INACTIVE) route.status = SHM_ROUTE_ACTIVE;
  }
  shm->config.kestroveRebootCount = 0;
}

class SettingLines : public StoreTest {};

TEST_F(SettingLines, ComeBackAsTheStoreThatTheyAreOf) {
  for (unsigned seed = 0; seed < 100; ++seed) {
    drawStore(seed);
    forgetWhatIsNoSetting();
    const Image made = ctl::imageFromLines(settingLines(*shm));
    expectSameStore(*made);
    EXPECT_EQ(settingLines(*shm), settingLines(*made)) << "seed " << seed;
    if (HasFailure()) return;
  }
}

TEST_F(SettingLines, KeepWhatIsNoSettingOfTheStoreThatTheyReplace) {
  strcpy(shm->config.unitId, "unit");
  shm->config.wanIpDefaultRtt = 12;
  shm->config.lanLinkRate = 1000000;
  const Image made = ctl::imageFromLines({{"items", "lanLinkRate", "set lanLinkRate 2000000"}}, *shm);
  EXPECT_STREQ("unit", made->config.unitId);
  EXPECT_EQ(12u, made->config.wanIpDefaultRtt);
  EXPECT_EQ(2000000u, made->config.lanLinkRate);
  EXPECT_EQ(1, made->filterTable.ruleCount);
}

TEST_F(SettingLines, NameAnItemByItsWordAndATextInQuotes) {
  shm->config.compression = SHM_ON;
  shm->config.lanIpAddress = quad("10.0.0.1");
  strcpy(shm->config.sysName, "Berlin \"two\"");
  const Texts items = textsOf(*shm, "items");
  auto has = [&items](const char* text) { return std::find(items.begin(), items.end(), text) != items.end(); };
  EXPECT_TRUE(has("set compression on"));
  EXPECT_TRUE(has("set lanIpAddress 10.0.0.1"));
  EXPECT_TRUE(has("set sysName \"Berlin \\\"two\\\"\""));
  EXPECT_FALSE(has("set snmpOperState unset"));
}

TEST_F(SettingLines, SayOfARuleWhatIsNotUsual) {
  FilterRule rule = {};
  rule.ipVersion = SHM_FAMILY_IPV4;
  rule.srcAddr = quad("10.1.0.0");
  rule.srcMask = quad("255.255.0.0");
  rule.proto = SHM_PROTO_TCP;
  rule.destPort = 80;
  rule.destPortEnd = 90;
  rule.target = SHM_TARGET_DROP;
  rule.priority = 8;
  rule.bandwidth = 512000;
  rule.accel = SHM_ON;
  rule.ruleAction = SHM_RULE_ACTIVE;
  ASSERT_EQ(0, addRule(0, &rule, 0, 0));
  EXPECT_EQ(Texts{"rule add last --from 10.1.0.0/16 --proto tcp --dport 80 --dport-end 90 --kbps 512 --target drop"},
            textsOf(*shm, "rules"));
}

TEST_F(SettingLines, LeaveTheModeOutThatNobodyHasSet) {
  shm->config.singleInterfaceMode = shm->config.pbrOperState = 0;
  EXPECT_EQ(Texts{}, textsOf(*shm, "interfaces"));
  shm->config.singleInterfaceMode = SHM_ON;
  shm->config.lanVlanId = 10;
  shm->config.wanVlanId = 20;
  shm->config.pbrOperState = SHM_OFF;
  EXPECT_EQ((Texts{"mode single 10 20", "mode pbr off"}), textsOf(*shm, "interfaces"));
}

TEST_F(SettingLines, OfADamagedStoreEndWithItsTables) {
  shm->config.userCount = 1000000;
  shm->filterTable.ruleCount = -3;
  shm->routes.slot[0].inUse = 1;
  shm->routes.slot[0].next = 0;
  shm->routes.head = 0;
  EXPECT_EQ(size_t{SHM_USERS}, textsOf(*shm, "users").size());
  EXPECT_EQ(Texts{}, textsOf(*shm, "rules"));
  EXPECT_EQ(size_t{SHM_ROUTES}, textsOf(*shm, "routes").size());
}

TEST_F(SettingLines, ThatMakeNoSenseAreRefusedWithTheirWord) {
  auto reasonOf = [](const char* section, const char* text) {
    try {
      ctl::imageFromLines({{section, "", text}});
    } catch (const ctl::Refusal& refusal) {
      EXPECT_EQ(ctl::kUsage, refusal.exit());
      return std::string(refusal.what());
    }
    return std::string("taken");
  };
  EXPECT_EQ("lanLinkRat: no setting", reasonOf("items", "set lanLinkRat 1"));
  EXPECT_EQ("set lanLinkRate: a word is missing", reasonOf("items", "set lanLinkRate"));
  EXPECT_EQ("--colour: no option of a rule", reasonOf("rules", "rule add last --colour red"));
  EXPECT_EQ("colours: no section of settings", reasonOf("colours", "set a b"));
  EXPECT_EQ("set sysName \"a: a quote does not end", reasonOf("items", "set sysName \"a"));
}

TEST(Quoting, BringsEveryByteBack) {
  std::string all;
  for (int byte = 1; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(Texts{all}, ctl::wordsIn(ctl::quoted(all)));
  EXPECT_EQ((Texts{"", "plain", "a b"}), ctl::wordsIn(ctl::quoted("") + " plain\t" + ctl::quoted("a b")));
  EXPECT_EQ("plain-1.2/3", ctl::quoted("plain-1.2/3"));
}

}  // namespace
}  // namespace kestrove::testing
