// SPDX-License-Identifier: Apache-2.0
// kestrovectl diff.
#include <unistd.h>

#include "tests/support/addresses.h"
#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

class CtlDiff : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    unlink("/etc/config/factory.defaults");
    ASSERT_EQ(0, write_shared_memory());
  }
};

TEST_F(CtlDiff, OfAStoreThatWasJustSavedIsEmpty) {
  const Ran same = ctl("diff");
  EXPECT_EQ(0, same.status) << same.err;
  EXPECT_EQ("", same.out);
  EXPECT_EQ(false, ctl("diff running saved --json").json()["changed"]);
}

TEST_F(CtlDiff, SettingsOfAStateAreTheLinesThatMakeThem) {
  const Ran lines = ctl("settings");
  EXPECT_EQ(0, lines.status) << lines.err;
  EXPECT_EQ(lines.out, ctl("settings saved").out);
  EXPECT_THAT(lines.out, ::testing::HasSubstr("\nset sysName \"\"\n"));
  const Json rows = ctl("settings running --json").json();
  EXPECT_EQ((Json{{"section", "items"}, {"key", "lanLinkRate"}, {"line", "set lanLinkRate 0"}}), rows.at(0));
  EXPECT_EQ(2, ctl("settings rev:x").status);
  EXPECT_EQ(5, ctl("settings /tmp/missing").status);
}

TEST_F(CtlDiff, TellsWhatIsNotSavedWithoutTouchingAnything) {
  shm->config.wanLinkRate = 3000000;
  const std::string file = readFile("/etc/config/kestrove.conf");
  const Ran ran = ctl("diff saved running");
  EXPECT_EQ(4, ran.status);
  EXPECT_EQ(
      "--- saved\n"
      "+++ running\n"
      "@@ items @@\n"
      "-set wanLinkRate 0\n"
      "+set wanLinkRate 3000000\n",
      ran.out);
  EXPECT_EQ("", ran.err);
  EXPECT_EQ(file, readFile("/etc/config/kestrove.conf"));
  EXPECT_EQ(0u, shm->eventLog.writeIndex);
}

TEST_F(CtlDiff, NamesWhatTheFileHasNoLineFor) {
  shm->config.managementAddress = quad("10.0.0.7");
  const Ran ran = ctl("diff");
  EXPECT_EQ(4, ran.status);
  EXPECT_NE(std::string::npos, ran.out.find("-set managementAddress 10.0.0.7\n+set managementAddress 0.0.0.0\n"));
  EXPECT_NE(std::string::npos, ran.out.find("a restart takes the factory default: managementAddress\n"));
  EXPECT_EQ(Json::array({"managementAddress"}), ctl("diff --json").json()["unsaved"]);
}

TEST_F(CtlDiff, AsJsonHasBothSidesOfEachChange) {
  shm->config.lanLinkRate = 1000000;
  writeFile("/tmp/other.conf", "LAN_RATE 2000000\n");
  const Json json = ctl("diff running /tmp/other.conf --json").json();
  EXPECT_EQ(true, json["changed"]);
  EXPECT_EQ("set lanLinkRate 1000000\n", json["diff"]["before"].get<std::string>().substr(0, 24));
  EXPECT_EQ((Json{{"section", "items"},
                  {"key", "lanLinkRate"},
                  {"before", "set lanLinkRate 1000000"},
                  {"after", "set lanLinkRate 2000000"}}),
            json["changes"][0]);
}

TEST_F(CtlDiff, RefusesWhatIsNoState) {
  EXPECT_EQ(2, ctl("diff rev:x").status);
  EXPECT_EQ(2, ctl("diff running saved running").status);
  EXPECT_EQ("kestrovectl: rev:x: no revision (rev:N, history lists them)\n", ctl("diff rev:x").err);
  EXPECT_EQ(5, ctl("diff /tmp/missing").status);
  writeFile("/tmp/noise",
            "\x7f"
            "ELF\n");
  EXPECT_EQ("kestrovectl: /tmp/noise: neither a configuration file nor a script\n", ctl("diff /tmp/noise").err);
  EXPECT_EQ("kestrovectl: /tmp: no plain file\n", ctl("diff /tmp").err);
}

}  // namespace
}  // namespace kestrove::testing
