// SPDX-License-Identifier: Apache-2.0
// Keywords that fill a field, kind by kind.
#include <arpa/inet.h>
#include <stddef.h>
#include <string.h>

#include "tests/config/config_fixture.h"
#include "tests/support/addresses.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

using ::testing::ValuesIn;

struct Field {
  const char* keyword;
  size_t offset;
  size_t width;
  int limit = 0;
};

void PrintTo(const Field& field, std::ostream* out) { *out << field.keyword; }

#define CONFIG(field) offsetof(ShmData, config) + offsetof(ConfigRecord, field), sizeof(ConfigRecord::field)
#define STORE(field) offsetof(ShmData, field), sizeof(ShmData::field)

char* fieldAt(const Field& field) { return reinterpret_cast<char*>(shm) + field.offset; }

uint32_t numberIn(const Field& field) {
  uint32_t value = 0;
  memcpy(&value, fieldAt(field), field.width);
  return value;
}

// The store but for one field.
std::string surroundings(const Field& field) {
  const char* bytes = reinterpret_cast<const char*>(shm);
  return std::string(bytes, field.offset) +
         std::string(bytes + field.offset + field.width, sizeof(ShmData) - field.offset - field.width);
}

class FieldTest : public StoreTest, public ::testing::WithParamInterface<Field> {
 protected:
  // The number that a value leaves in the field, which was all ones before. Nothing else may change, nothing be said.
  uint32_t numberOf(const std::string& value) {
    memset(fieldAt(GetParam()), 0xff, GetParam().width);
    std::string around = surroundings(GetParam());
    EXPECT_EQ(kNoMessages, load(std::string(GetParam().keyword) + value + "\n"));
    EXPECT_TRUE(around == surroundings(GetParam())) << "another field changed";
    return numberIn(GetParam());
  }
};

std::string nameOf(const ::testing::TestParamInfo<Field>& info) { return info.param.keyword; }

const Field kNumbers[] = {
    {"MANAGEMENT_LINK_SETTING", CONFIG(managementLinkSetting)},
    {"LAN_LINK_SETTING", CONFIG(lanLinkSetting)},
    {"LAN_MTU", CONFIG(lanMaximumTransferUnit)},
    {"LAN_VLAN_ID", CONFIG(lanVlanId)},
    {"LAN_BUF", CONFIG(lanSendBufferSize)},
    {"LAN_RBUF", CONFIG(lanReceiveBufferSize)},
    {"LAN_RATE", CONFIG(lanLinkRate)},
    {"REBOOT_COUNT", CONFIG(kestroveRebootCount)},
    {"WAN_VLAN_ID", CONFIG(wanVlanId)},
    {"INTERNET_BUF", CONFIG(wanSendBufferSize)},
    {"INTERNET_RBUF", CONFIG(wanReceiveBufferSize)},
    {"INTERNET_RATE", CONFIG(wanLinkRate)},
    {"INTERNET_LINK_SETTING", CONFIG(wanLinkSetting)},
    {"INTERNET_MTU", CONFIG(wanMaximumTransferUnit)},
    {"INTERNET_DELAY", CONFIG(wanIpDefaultRtt)},
    {"FTW_CONFIG", CONFIG(failToWireConfig)},
};

class NumberTest : public FieldTest {};
INSTANTIATE_TEST_SUITE_P(Keywords, NumberTest, ValuesIn(kNumbers), nameOf);

TEST_P(NumberTest, TakesDecimalTextAndSaturates) {
  EXPECT_EQ(1500u, numberOf(" 1500"));
  EXPECT_EQ(1500u, numberOf("\t \t1500 and a remark"));
  EXPECT_EQ(7u, numberOf(" +7x"));
  EXPECT_EQ(12u, numberOf(" 012"));
  EXPECT_EQ(0xffffffd6u, numberOf(" -42"));
  EXPECT_EQ(0x7fffffffu, numberOf(" 2147483647"));
  EXPECT_EQ(0x7fffffffu, numberOf(" 2147483648"));
  EXPECT_EQ(0x7fffffffu, numberOf(" 99999999999999999999999"));
  EXPECT_EQ(0x80000000u, numberOf(" -2147483648"));
  EXPECT_EQ(0x80000000u, numberOf(" -99999999999999999999999"));
}

TEST_P(NumberTest, IsZeroWithoutDigits) {
  EXPECT_EQ(0u, numberOf(""));
  EXPECT_EQ(0u, numberOf(" "));
  EXPECT_EQ(0u, numberOf(" eleven"));
  EXPECT_EQ(0u, numberOf(" - 5"));
  EXPECT_EQ(0u, numberOf(" 0x10"));
}

const Field kBytes[] = {
    {"LAN_CONGESTION", CONFIG(lanCongestionControl)},
    {"SNMP_VERSION", CONFIG(snmpVersion)},
    {"GLOBAL_CONGESTION_CONTROL", CONFIG(wanCongestionControl)},
    {"INTERNET_CONGESTION", CONFIG(wanCongestionControl)},
};

class ByteTest : public FieldTest {};
INSTANTIATE_TEST_SUITE_P(Keywords, ByteTest, ValuesIn(kBytes), nameOf);

TEST_P(ByteTest, TakesTheLowEightBits) {
  EXPECT_EQ(3u, numberOf(" 3"));
  EXPECT_EQ(255u, numberOf(" 255"));
  EXPECT_EQ(4u, numberOf(" 260"));
  EXPECT_EQ(0xfeu, numberOf(" -2"));
  EXPECT_EQ(255u, numberOf(" 99999999999"));
  EXPECT_EQ(0u, numberOf(""));
}

const Field kSwitches[] = {
    {"SSHD", CONFIG(sshdOperState)},
    {"BANNER", CONFIG(bannerOperState)},
    {"SINGLE_INTERFACE", CONFIG(singleInterfaceMode)},
    {"PBR", CONFIG(pbrOperState)},
    {"BRIDGING", CONFIG(transparentBridgeOperState)},
    {"COMPRESSION", CONFIG(compression)},
    {"EVENT_LOGGING", CONFIG(loggingOperState)},
    {"CONFIG_BY_SNMP", CONFIG(snmpOperState)},
    {"CONFIG_BY_WEB", CONFIG(httpOperState)},
    {"CONFIG_BY_SERIAL", CONFIG(cliOperState)},
    {"KESTROVE_OP_STATE", CONFIG(kestroveOperState)},
};

class SwitchTest : public FieldTest {};
INSTANTIATE_TEST_SUITE_P(Keywords, SwitchTest, ValuesIn(kSwitches), nameOf);

TEST_P(SwitchTest, OneIsOnZeroIsOffAnythingElseIsThree) {
  EXPECT_EQ(1u, numberOf(" 1"));
  EXPECT_EQ(2u, numberOf(" 0"));
  EXPECT_EQ(3u, numberOf(" 2"));
  EXPECT_EQ(3u, numberOf(" 7"));
  EXPECT_EQ(3u, numberOf(" -1"));
  EXPECT_EQ(3u, numberOf(" 257"));
  EXPECT_EQ(2u, numberOf(""));
  EXPECT_EQ(2u, numberOf(" on"));
  EXPECT_EQ(1u, numberOf(" 1 yes"));
}

const Field kAddresses[] = {
    {"LAN_ADDR", CONFIG(lanIpAddress)},          {"LAN_MASK", CONFIG(lanIpAddressMask)},
    {"LAN_GATEWAY", CONFIG(lanGateway)},         {"INTERNET_ADDR", CONFIG(wanIpAddress)},
    {"INTERNET_MASK", CONFIG(wanIpAddressMask)}, {"INTERNET_GATEWAY", CONFIG(wanGateway)},
};

class AddressTest : public FieldTest {};
INSTANTIATE_TEST_SUITE_P(Keywords, AddressTest, ValuesIn(kAddresses), nameOf);

TEST_P(AddressTest, TakesADottedQuad) {
  EXPECT_EQ(quad("192.168.1.10"), numberOf(" 192.168.1.10"));
  EXPECT_EQ(quad("10.1.0.1"), numberOf(" 010.001.0000.1 "));
  EXPECT_EQ(0u, numberOf(" 0.0.0.0"));
  EXPECT_EQ(quad("1.2.3.4"), numberOf("\t1.2.3.00000000000004"));
}

TEST_P(AddressTest, KeepsTheFieldWhenTheValueIsNone) {
  for (const char* value : {"", " 1.2.3", " 1.2.3.256", " 1.2.3.4.5", " 1..2.3", " 1.2.3.4 remark", " 1.2.3.4  ",
                            " name", " 1.2.3.-4", " 1.2.3.", " 1.2.3.99999999999999"}) {
    EXPECT_EQ(0xffffffffu, numberOf(value)) << value;
  }
}

TEST_F(StoreTest, AddressThatDoesNotParseLeavesTheParsersCode) {
  load("LAN_ADDR 1.2.3.256\n");
  EXPECT_EQ(uint32_t(SHM_EOCTET), shm_errno);
  load("LAN_ADDR 1.2.3\n");
  EXPECT_EQ(uint32_t(SHM_EDOTS), shm_errno);
  load("LAN_ADDR\n");
  EXPECT_EQ(uint32_t(SHM_EINVAL), shm_errno);
}

const Field kTexts[] = {
    {"LAN_NAME", CONFIG(lanInterfaceName), 14},
    {"PHYSICAL_LAN_NAME", CONFIG(physicalLanInterfaceName), 14},
    {"REAL_LAN_NAME", CONFIG(bridgeRouterPhysicalName), 14},
    {"INTERNET_NAME", CONFIG(wanInterfaceName), 14},
    {"PHYSICAL_WAN_NAME", CONFIG(physicalWanInterfaceName), 14},
    {"MANAGEMENT_NAME", CONFIG(managementInterfaceName), 14},
    {"ADMIN_USERNAME", STORE(oldAdminUsername), 30},
    {"ADMIN_PASSWORD", STORE(oldAdminPassword), 30},
    {"KESTROVE_VERSION", CONFIG(kestroveFullVersion), 63},
    {"DRELM_VERSION", CONFIG(drelmFullVersion), 63},
    {"KESTROVE_CONFIG", CONFIG(configFileName), 127},
    {"DDUP_OPTIONS", STORE(ddupStartupOptions), 256},
    {"SYS_NAME", CONFIG(sysName), 256},
    {"SYS_LOCATION", CONFIG(sysLocation), 256},
    {"SYS_CONTACT", CONFIG(sysContact), 256},
    {"SYS_DESCRIPTION", CONFIG(sysDescription), 256},
};

class TextTest : public FieldTest {
 protected:
  // The whole field, which was full of Z before.
  std::string fieldAfter(const std::string& value) {
    memset(fieldAt(GetParam()), 'Z', GetParam().width);
    std::string around = surroundings(GetParam());
    messages_ = load("\n" + std::string(GetParam().keyword) + " " + value + "\n");
    EXPECT_TRUE(around == surroundings(GetParam())) << "another field changed";
    return {fieldAt(GetParam()), GetParam().width};
  }
  size_t limit() const { return static_cast<size_t>(GetParam().limit); }
  // What stands behind the limit is never touched.
  std::string expected(const std::string& text) const {
    std::string field(GetParam().width, 'Z');
    return field.replace(0, limit(), text + std::string(limit() - text.size(), '\0'));
  }
  std::vector<std::string> messages_;
};
INSTANTIATE_TEST_SUITE_P(Keywords, TextTest, ValuesIn(kTexts), nameOf);

TEST_P(TextTest, ShorterThanItsLimitIsFilledUpWithZeros) {
  EXPECT_EQ(expected("a  b\tc"), fieldAfter("a  b\tc"));
  EXPECT_EQ(expected(""), fieldAfter(""));
  EXPECT_EQ(expected(std::string(limit() - 1, 'x')), fieldAfter(std::string(limit() - 1, 'x')));
  EXPECT_EQ(kNoMessages, messages_);
}

TEST_P(TextTest, LosesOneBlankAtItsEndAndNoMore) {
  EXPECT_EQ(expected("end"), fieldAfter("end\t"));
  EXPECT_EQ(expected("end "), fieldAfter("end  "));
  EXPECT_EQ(expected("# no comment"), fieldAfter("# no comment"));
}

TEST_P(TextTest, AsLongAsItsLimitHasNoTerminator) {
  EXPECT_EQ(expected(std::string(limit(), 'x')), fieldAfter(std::string(limit(), 'x')));
  EXPECT_EQ(kNoMessages, messages_);
}

TEST_P(TextTest, LongerThanItsLimitIsCutAndReported) {
  EXPECT_EQ(expected(std::string(limit(), 'x')), fieldAfter(std::string(limit() + 1, 'x')));
  EXPECT_EQ(std::vector<std::string>{"err: /tmp/input.conf: line 2: Warning: truncated value for " +
                                     std::string(GetParam().keyword) + " parameter, max length " +
                                     std::to_string(GetParam().limit) + ".\n"},
            messages_);
}

}  // namespace
}  // namespace kestrove::testing
