// SPDX-License-Identifier: Apache-2.0
// What a manager may set.
#include "kestrove/codes.h"
#include "tests/snmp/snmp_fixture.h"
#include "tests/support/lock_watch.h"
#include "tools/ctl/item_names.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class SnmpSetTest : public SnmpTest {};

TEST_F(SnmpSetTest, ScalarsAreReadAndSet) {
  EXPECT_EQ("2048000\n", set(kWanRate, "u 2048000"));
  EXPECT_EQ(2048000u, +shm->config.wanLinkRate);
  EXPECT_EQ("\"a name\"\n", set(".3.1.0", "s \"a name\""));
  EXPECT_STREQ("a name", shm->config.sysName);
  EXPECT_EQ("1\n", set(".1.9.0", "i 1"));
  EXPECT_EQ(1, events(SHM_EVENT_COMPRESSION_ON, SHM_SOURCE_SNMP_V2));
}

TEST_F(SnmpSetTest, WhatIsNoValueIsRefusedAndNothingChanges) {
  EXPECT_THAT(set(kWanRate, "u 5"), HasSubstr("wrongValue"));
  EXPECT_THAT(set(kWanRate, "i 2048000"), HasSubstr("wrongType"));
  EXPECT_THAT(set(".3.1.0", "s " + std::string(257, 'x')), HasSubstr("wrongLength"));
  EXPECT_THAT(set(".3.1.0", "x 610062"), HasSubstr("wrongValue"));
  EXPECT_THAT(set(".1.99.0", "u 1"), HasSubstr("noCreation"));
  EXPECT_EQ(4096000u, +shm->config.wanLinkRate);
  EXPECT_STREQ("", shm->config.sysName);
  EXPECT_FALSE(fileExists("/etc/config/kestrove.conf"));
}

TEST_F(SnmpSetTest, OfTwoValuesOneIsWrongAndBothStay) {
  EXPECT_THAT(set(kWanRate, "u 2048000 " + std::string(kObjects) + ".1.4.0 u 5"), HasSubstr("wrongValue"));
  EXPECT_EQ(4096000u, +shm->config.wanLinkRate);
}

TEST_F(SnmpSetTest, SwitchedOffItReadsAndSetsNothing) {
  shm->config.snmpOperState = SHM_OFF;
  EXPECT_THAT(set(kWanRate, "u 2048000"), HasSubstr("noAccess"));
  EXPECT_EQ("4096000\n", get(kWanRate));
}

TEST_F(SnmpSetTest, TablesAndWhatIsNoItemCannotBeSet) {
  for (const char* place : {".5.1.0", ".7.1.2.1", ".7.1.2.5", ".10.1.2.1"}) {
    EXPECT_THAT(set(place, "u 1"), ::testing::AnyOf(HasSubstr("notWritable"), HasSubstr("noCreation"))) << place;
  }
}

// Each item by what its row says of it: the first value that it takes.
std::string groupOf(const ctl::ItemRow& row) {
  return row.family == ctl::ItemFamily::kConfig ? ".1." : row.family == ctl::ItemFamily::kNetwork ? ".2." : ".3.";
}

std::string valueFor(const ctl::ItemRow& row) {
  switch (row.form) {
    case ctl::ItemForm::kSwitch: return "i 1";
    case ctl::ItemForm::kAddress: return "a 255.255.255.0";
    case ctl::ItemForm::kText: return "s text";
    case ctl::ItemForm::kNumber: break;
  }
  const std::string range = ctl::rangeText(row);
  return "u " + (isdigit(range[0]) ? std::to_string(atol(range.c_str())) : "1");
}

bool runsPrograms(const ctl::ItemRow& row) { return *row.action || row.modeEvent != 0 || row.dropsWanArp; }

TEST_F(SnmpSetTest, EveryItemThatRunsNoProgramIsSetAndNoOther) {
  LockWatch watch;
  for (const char* program : {"/sbin/FtwWdgCtl", "/usr/bin/apacheConfig.sh", "/usr/bin/snmpdConfig.sh",
                              "/usr/bin/sshdConfig.sh", "/sbin/reboot"}) {
    watch.instead(program);
  }
  int set_ = 0;
  int refused = 0;
  for (const ctl::ItemRow& row : ctl::itemRows()) {
    const std::string answer = set(groupOf(row) + std::to_string(row.id) + ".0", valueFor(row));
    if (row.id == SHM_TEXT_WEB_SESSION && row.family == ctl::ItemFamily::kText) {
      EXPECT_THAT(answer, HasSubstr("noCreation"));
    } else if (!*row.range || runsPrograms(row)) {
      EXPECT_THAT(answer, HasSubstr("notWritable")) << row.name;
      ++refused;
    } else {
      EXPECT_THAT(answer, Not(HasSubstr("Reason"))) << row.name << " " << valueFor(row);
      ++set_;
    }
  }
  EXPECT_GT(set_, 20);
  EXPECT_GT(refused, 15);
  EXPECT_THAT(watch.seen(), IsEmpty());
}

}  // namespace
}  // namespace kestrove::testing
