// SPDX-License-Identifier: Apache-2.0
// Whole scripts: checked, applied, refused, and what is left of them in the store and in its file.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <sstream>

#include "tests/support/random_store.h"
#include "tests/tools/programs.h"
#include "tests/tools/random_script.h"
#include "tests/tools/terminal.h"
#include "tools/ctl/home.h"
#include "tools/ctl/script/lost.h"
#include "tools/ctl/settings/difference.h"
#include "tools/ctl/settings/lines.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char kConfig[] = "/etc/config/kestrove.conf";
constexpr char kFile[] = "/tmp/script";

// An appliance with its bridge and the names of its ports.
class CtlApplyTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    ASSERT_EQ(0, run("ip link show br0 || ip link add br0 type bridge; ip link set br0 up; ip link set eth0 up; ip "
                     "link set eth1 up")
                     .status);
    unlink(kConfig);
    name();
  }

  // Values that the setters take, as the factory gives them.
  static void name() {
    shm->config.lanLinkRate = shm->config.wanLinkRate = 10000000;
    shm->config.lanMaximumTransferUnit = shm->config.wanMaximumTransferUnit = 1500;
    strcpy(shm->config.wanInterfaceName, "eth0");
    strcpy(shm->config.lanInterfaceName, "eth1");
    strcpy(shm->config.managementInterfaceName, "eth2");
    strcpy(shm->config.bridgeRouterPhysicalName, "eth1");
  }

  static Ran apply(const std::string& script, const std::string& options = "") {
    writeFile(kFile, script);
    return ctl("apply " + options + " " + kFile);
  }
  static Json applyJson(const std::string& script, const std::string& options = "") {
    return apply(script, "--json " + options).json();
  }
  static std::vector<ctl::SettingLine> settings() { return ctl::settingLines(*shm); }
  static timespec written() {
    struct stat facts = {};
    stat(kConfig, &facts);
    return facts.st_mtim;
  }
};

constexpr char kScript[] =
    "# a branch\n"
    "set rateLimit WAN 2048\n"
    "ip add 192.168.7.1 255.255.255.0 -b\n"
    "set compression on\n"
    "\n"
    "route add 10.1.0.0 255.255.0.0 192.168.7.254 -n\n"
    "rule add 1 -ipVersion 4 -sa 10.1.0.0/255.255.0.0 -proto TCP -srcPort 5 -p 3 -bw 512 \n";

TEST_F(CtlApplyTest, AScriptIsAppliedLineByLine) {
  const Ran ran = apply(kScript);
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(ran.out,
              AllOf(HasSubstr("/tmp/script:2: changed: wanLinkRate 2048000 = rateLimit WAN 2048\n"),
                    HasSubstr("/tmp/script:3: changed: ip add 192.168.7.1"), HasSubstr("script: 5 settings changed")));
  EXPECT_EQ(2048000u, shm->config.wanLinkRate);
  EXPECT_EQ(1, shm->managementAddressCount);
  EXPECT_EQ(2, shm->filterTable.ruleCount);
  EXPECT_EQ(uint32_t{SHM_STATE_OPERATIONAL}, shm->operationalState);
  EXPECT_THAT(readFile(kConfig), AllOf(HasSubstr("INTERNET_RATE"), HasSubstr("2048000")));
}

TEST_F(CtlApplyTest, TheSecondTimeNothingIsWrittenNorLogged) {
  ASSERT_EQ(0, apply(kScript).status);
  const timespec before = written();
  const int events = getEventCount();
  const Json second = applyJson(kScript);
  EXPECT_EQ(false, second["changed"]);
  EXPECT_THAT(second["changes"], IsEmpty());
  EXPECT_EQ(events, getEventCount());
  EXPECT_EQ(before.tv_nsec, written().tv_nsec);
  EXPECT_EQ(before.tv_sec, written().tv_sec);
  EXPECT_THAT(apply(kScript).out, HasSubstr("script: nothing changed"));
}

TEST_F(CtlApplyTest, ACheckChangesNothingAndPredictsTheWhole) {
  const std::vector<ctl::SettingLine> before = settings();
  const Json predicted = applyJson(kScript, "--check --diff");
  EXPECT_EQ(true, predicted["changed"]);
  EXPECT_THAT(predicted["diff"]["after"].get<std::string>(), HasSubstr("set wanLinkRate 2048000\n"));
  EXPECT_EQ(before, settings());
  EXPECT_FALSE(fileExists(kConfig));
  EXPECT_EQ(0, getEventCount());
  const Json made = applyJson(kScript, "--diff");
  EXPECT_EQ(predicted["diff"], made["diff"]);
  EXPECT_EQ(predicted["changes"], made["changes"]);
}

TEST_F(CtlApplyTest, AWrongLineInTheMiddleLeavesEverything) {
  const std::vector<ctl::SettingLine> before = settings();
  const Ran ran = apply("set mtu WAN 1400\nset mtu WAN fast\nset mtu LAN 1400\nrule delete 0\n");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err, AllOf(HasSubstr("/tmp/script:2: fast: wanMaximumTransferUnit takes 576..1500 bytes\n"),
                             HasSubstr("/tmp/script:4: rule delete 0: no line that says how a setting shall be\n"),
                             HasSubstr("/tmp/script: 2 lines are not taken; nothing is changed")));
  EXPECT_EQ(before, settings());
  const Json json = applyJson("frobnicate\n");
  EXPECT_EQ(2, json["error"]["exit"]);
  EXPECT_EQ(1, json["complaints"][0]["line"]);
}

TEST_F(CtlApplyTest, ALineThatTheStoreRefusesLeavesEverything) {
  const std::vector<ctl::SettingLine> before = settings();
  const char* script = "set mtu WAN 1400\nset mtu LAN 9000\nrule add 7 -d\n";
  const Ran ran = apply(script);
  EXPECT_EQ(1, ran.status);
  EXPECT_THAT(ran.err, AllOf(HasSubstr("/tmp/script:2: lanMaximumTransferUnit takes 576..1500 bytes: "),
                             HasSubstr("/tmp/script:3: "), HasSubstr("nothing is changed")));
  EXPECT_EQ(before, settings());
  EXPECT_EQ(9, apply(script, "--skip-refused").status) << "the rest is applied";
  EXPECT_EQ(1400u, shm->config.wanMaximumTransferUnit);
}

TEST_F(CtlApplyTest, OneRunTellsWhatMakesNoSenseAndWhatIsRefused) {
  const Ran ran = apply("frobnicate\nset mtu WAN 9000\nrule add 1 -proto BAD\nrule add 2 -d\n");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err,
              AllOf(HasSubstr("script:1: frobnicate: no such command\n/tmp/script:2: wanMaximumTransferUnit takes"),
                    HasSubstr("\n/tmp/script:3: BAD: -proto takes ANY|TCP|UDP\n"), Not(HasSubstr("script:4:")),
                    HasSubstr("3 lines are not taken")));
  EXPECT_EQ(1, shm->filterTable.ruleCount);
}

TEST_F(CtlApplyTest, WhatIsNoScriptIsRefused) {
  EXPECT_EQ(5, ctl("apply /tmp").status);
  EXPECT_EQ(5, ctl("apply /tmp/none").status);
  EXPECT_EQ(5, ctl("apply /dev/zero").status);
  EXPECT_EQ(0, apply("").status);
  EXPECT_EQ(2, apply("", "--replace").status) << "nothing would be left";
  EXPECT_EQ(2, apply(kScript, "--replace --merge").status);
  std::string noise(300000, '\0');
  for (size_t i = 0; i < noise.size(); ++i) noise[i] = static_cast<char>(i * 37 % 253);
  const Ran ran = apply(noise);
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("the rest was not looked at"));
}

TEST_F(CtlApplyTest, ScriptsComeFromStandardInput) {
  const Ran ran = ctl("apply -", "set mtu WAN 1400\n");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(ran.out, HasSubstr("-:1: changed: wanMaximumTransferUnit 1400 = mtu WAN 1400\n"));
  EXPECT_EQ(1400u, shm->config.wanMaximumTransferUnit);
}

TEST_F(CtlApplyTest, ReplacingTakesAwayTheRest) {
  ASSERT_EQ(0, apply(kScript).status);
  const Ran ran = apply("set compression off\nrule add 1 -ipVersion Any -proto UDP -d\n", "--replace");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(ran.out, HasSubstr("taken away: route add 10.1.0.0/16 192.168.7.254 --disabled\n"));
  EXPECT_EQ(0, shm->managementAddressCount);
  EXPECT_EQ(17u, shm->filterTable.rule[0].proto);
  EXPECT_EQ(2, shm->filterTable.ruleCount);
  EXPECT_EQ(2048000u, shm->config.wanLinkRate);
}

TEST_F(CtlApplyTest, LostNamesWhatAScriptCannotHold) {
  ASSERT_EQ(0, ctl("set sysName branch").status);
  ASSERT_EQ(0, ctl("rule add 0 --proto tcp --dport 80").status);
  const Ran ran = ctl("lost");
  EXPECT_EQ(4, ran.status);
  EXPECT_THAT(ran.out, AllOf(HasSubstr("set sysName branch\n"), HasSubstr("a script has no texts"),
                             HasSubstr("a destination port is not written without a source port")));
  const Json lost = ctl("--json lost").json()["lost"];
  EXPECT_EQ("items", lost[0]["section"]);
  EXPECT_EQ(5, ctl("lost /tmp/none").status);
}

// What the library accepts, so that nothing of it is refused on its way back.
void drawUsable(unsigned seed) {
  const Json ignored = ctl("apply --merge --json -", drawScript(seed)).json();
  ctl("-", "set sysName branch" + std::to_string(seed % 5) + "\nrule add 0 --proto 47 --kbps 300\n" +
               "rule add 0 --proto tcp --dport " + std::to_string(1 + seed % 65535) + "\n" + "set wanLinkRate " +
               std::to_string(100000 + seed) + "\nset lanLinkSetting 120\n");
}

// A change of mode may take the bridge away, and with it what the kernel would take of an address.
std::string withoutModes(const std::string& script) {
  std::string rest;
  std::istringstream lines(script);
  for (std::string line; std::getline(lines, line);) {
    const bool mode =
        line.starts_with("set interfaceMode") || line.starts_with("set prb") || line.starts_with("set pbr ");
    if (!mode) rest += line + "\n";
  }
  return rest;
}

TEST_F(CtlApplyTest, WhatIsNotLostComesBackFromASavedScript) {
  for (unsigned seed = 0; seed < scriptRounds(3); ++seed) {
    SCOPED_TRACE(seed);
    drawUsable(seed);
    const ctl::Image before(*shm);
    const Json lost = ctl("--json lost").json()["lost"];
    ASSERT_EQ(0, __saveCliState("round"));
    makeFreshStore();
    name();
    const Ran ran = ctl("apply --replace --skip-refused /usr/local/apache2/htdocs/state-round.txt");
    ASSERT_THAT(ran.status, ::testing::AnyOf(0, 9)) << ran.err;
    Json differs = Json::array();
    for (const ctl::SettingChange& change : ctl::compare(*shm, *before).changes) {
      if (change.section != "interfaces" || change.key == "mode" || change.key == "pbr")
        differs.push_back(change.section + " " + change.key);
    }
    Json named = Json::array();
    for (const Json& one : lost) {
      const std::string section = one["section"], key = one["key"];
      if (section != "interfaces" || key == "mode" || key == "pbr") named.push_back(section + " " + key);
    }
    EXPECT_EQ(named, differs);
    if (HasFailure()) return;
  }
}

// A line that is left out the first time may find its place the second time.
bool refuses(const Json& made) {
  return std::ranges::any_of(made["lines"], [](const Json& line) { return line.contains("error"); });
}

TEST_F(CtlApplyTest, WhatACheckPredictsIsWhatIsDone) {
  unsigned kept = 0;
  for (unsigned seed = 0; seed < scriptRounds(4); ++seed) {
    SCOPED_TRACE(seed);
    const std::string script = seed % 4 ? withoutModes(drawScript(seed)) : drawScript(seed);
    const std::string joining = seed % 2 ? "--skip-refused --diff" : "--skip-refused --diff --replace";
    if (script.empty()) continue;
    const ctl::Image before(*shm);
    const std::string file = readFile(kConfig);
    const Json predicted = applyJson(script, joining + " --check");
    EXPECT_EQ(0, memcmp(&*before, shm, sizeof *shm)) << "a check leaves the store alone";
    EXPECT_EQ(file, readFile(kConfig));
    const Json made = applyJson(script, joining);
    if (!made["failed"].empty()) continue;  // the kernel refuses what it could not be asked for before
    ++kept;
    EXPECT_EQ(predicted["diff"], made["diff"]) << script;
    EXPECT_EQ(predicted["changes"], made["changes"]);
    if (!refuses(made)) {
      EXPECT_EQ(false, applyJson(script, joining)["changed"]) << script;
    }
    if (HasFailure()) return;
  }
  EXPECT_GE(kept, scriptRounds(4) / 2) << "rounds in which the kernel took everything";
}

TEST_F(CtlApplyTest, ReplacingByWhatAStoreSavedIsThatStoreAgain) {
  for (unsigned seed = 0; seed < scriptRounds(3); ++seed) {
    SCOPED_TRACE(seed);
    apply(withoutModes(drawScript(seed)), "--skip-refused");
    ASSERT_EQ(0, __saveCliState("pair"));
    const std::vector<ctl::SettingLine> tables = settings();
    apply("set mtu WAN 1500\n" + withoutModes(drawScript(seed + 300000)), "--skip-refused --replace");
    const Ran ran = ctl("apply --replace /usr/local/apache2/htdocs/state-pair.txt");
    EXPECT_EQ(0, ran.status) << ran.err << ran.out;
    for (const ctl::SettingChange& change : ctl::compare(tables, settings()).changes) {
      EXPECT_TRUE(change.section == "items" || change.section == "interfaces" || change.section == "addresses6" ||
                  change.section == "rules")
          << change.section << " " << change.key;
    }
    if (HasFailure()) return;
  }
}

// Whether a kestrovectl is at the lock of the history. This process, which holds it, is none, and neither is the one
// forked from it until it has become one.
bool anotherWaitsForHistory() {
  const Ran found = run(R"(for one in /proc/[0-9]*; do
      case $(readlink $one/exe) in */kestrovectl) ls -l $one/fd;; esac
    done 2>/dev/null)");
  return found.out.find(" -> /var/lib/kestrove/lock") != std::string::npos;
}

// The time that a change waits for another one counts, so that the bar is due with the first step.
TEST_F(CtlApplyTest, ABarShowsHowFarALongScriptIsOnATerminalAlone) {
  ASSERT_EQ(0, ctl("set sysName start").status);
  writeFile(kFile, "set mtu WAN 1400\nset mtu LAN 1400\nrule add 1 -ipVersion Any -proto UDP -d\n");
  const std::optional<ctl::Home> home = ctl::Home::find();
  ASSERT_TRUE(home);
  std::optional<ctl::HomeLock> lock = ctl::HomeLock::wait(*home, 10);
  ASSERT_TRUE(lock);
  Terminal terminal({"apply", kFile});
  bool waits = false;
  for (int i = 0; i < 1000 && !waits; ++i) waits = anotherWaitsForHistory() || usleep(10000) != 0;
  ASSERT_TRUE(waits);
  usleep(600000);
  lock.reset();
  EXPECT_TRUE(terminal.says("[..............................] 0 of 3")) << terminal.heard();
  EXPECT_TRUE(terminal.says("\r\x1b[K")) << "it is taken away again";
  EXPECT_TRUE(terminal.says("3 settings changed"));
  EXPECT_EQ(0, terminal.end());
}

int newestRevision() { return ctl("--json history 1").json()[0]["revision"]; }

TEST_F(CtlApplyTest, ARollbackBehindAReplacementIsTheStoreBefore) {
  ASSERT_EQ(0, ctl("set sysName start").status);
  unsigned kept = 0;
  for (unsigned seed = 0; seed < scriptRounds(3); ++seed) {
    SCOPED_TRACE(seed);
    const bool modes = seed % 4 == 3;
    const std::string first = drawScript(seed + 500000), second = drawScript(seed + 600000);
    apply("set mtu WAN 1500\n" + (modes ? first : withoutModes(first)), "--skip-refused --replace");
    const std::vector<ctl::SettingLine> before = settings();
    const int revision = newestRevision();
    const Ran replaced =
        apply("set mtu WAN 1400\n" + (modes ? second : withoutModes(second)), "--skip-refused --replace");
    EXPECT_NE(before, settings());
    const Ran back = ctl("rollback " + std::to_string(revision));
    if (back.status == 9) continue;  // the kernel refuses an address that went with its interface
    ++kept;
    EXPECT_EQ(0, back.status) << back.err << replaced.out;
    EXPECT_EQ("", differenceText(ctl::compare(before, settings()), false)) << first << "---\n" << second;
    EXPECT_EQ(before, settings());
    if (HasFailure()) return;
  }
  EXPECT_GE(kept, scriptRounds(3) / 2) << "rounds in which the kernel took everything";
}

}  // namespace
}  // namespace kestrove::testing
