// SPDX-License-Identifier: Apache-2.0
// Fields of the store, which every program can reach, as texts, inputs and outputs of the utilities.
#include <arpa/inet.h>
#include <stdlib.h>
#include <string.h>

#include "tests/support/addresses.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

class StorePointers : public StoreTest {
 protected:
  char* name() { return shm->config.sysName; }
  uint32_t* address() { return &shm->config.lanIpAddress; }
};

TEST_F(StorePointers, AddressesAreReadFromTextsOfTheStoreIntoItsFields) {
  strcpy(name(), "010.1.2.3");
  EXPECT_EQ(0, parseIpv4Address(name(), address()));
  EXPECT_STREQ("10.1.2.3", name());
  EXPECT_EQ(quad("10.1.2.3"), *address());
  EXPECT_EQ(0, validateManagementAddress(name(), address()));
  EXPECT_EQ(quad("10.1.2.3"), *address());
  *address() = quad("255.255.0.0");
  EXPECT_EQ(0, validateNetmask(address()));
  strcpy(name(), "2001:db8::1");
  EXPECT_EQ(0, parseIpv6Address(name(), shm->ip6Address[0].address));
  EXPECT_EQ(0, ipv6_to_a(shm->ip6Address[0].address, name(), 256));
  EXPECT_STREQ("2001:db8::1", name());
}

// The text ends where its number begins.
TEST_F(StorePointers, OutputsThatLieOverTheirInputs) {
  auto* over = static_cast<uint32_t*>(static_cast<void*>(name()));
  for (auto parse : {parseIpv4Address, validateManagementAddress}) {
    strcpy(name(), "10.1.2.3");
    EXPECT_EQ(0, parse(name(), over));
    EXPECT_EQ(quad("10.1.2.3"), *over);
  }
  strcpy(name(), "127.0.0.1");
  EXPECT_FAILS_WITH(SHM_EINVAL, validateManagementAddress(name(), over));
  EXPECT_EQ(0u, *over);
  strcpy(name(), "2001:db8::1");
  EXPECT_EQ(0, parseIpv6Address(name(), name()));
  EXPECT_EQ(0, ipv6_to_a(name(), name(), 256));
  EXPECT_STREQ("2001:db8::1", name());
  strcpy(name(), "%Y %Y");
  time_t when = 0;
  formatTime(shm->config.sysLocation, name(), name(), &when);
  EXPECT_STREQ("1970 1970", shm->config.sysLocation);
  EXPECT_STREQ("00:00:00", name());
  strcpy(name(), "%Y %Y");
  formatTime(name(), nullptr, name(), &when);
  EXPECT_STREQ("1970 1970", name());
  strcpy(name(), "%%");
  getSystemTime(name(), shm->config.sysLocation, name());
  EXPECT_STREQ("%", name());
}

TEST_F(StorePointers, TextsThatLieOverTheirFields) {
  strcpy(name(), "0123456789");
  EXPECT_EQ(0, stringCopy(name(), name() + 3));
  EXPECT_STREQ("3456789", name());
  EXPECT_EQ(0, stringCopy(name() + 2, name()));
  EXPECT_STREQ("343456789", name());
  EXPECT_EQ(0, getCIDRSubnet(quad("10.1.2.3"), quad("255.255.0.0"), name(), 256));
  EXPECT_STREQ("10.1.0.0/16", name());
}

TEST_F(StorePointers, LinesAreReadIntoTheStore) {
  writeFile("/tmp/lines", "first line\nsecond   line\nthird\n");
  FILE* stream = fopen("/tmp/lines", "r");
  EXPECT_EQ(10, readLine(name(), 256, stream));
  EXPECT_STREQ("first line", name());
  EXPECT_EQ(11, readCommandLine(name(), 256, stream));
  EXPECT_STREQ("second line", name());
  ReadFilter filter;
  ReadFilter_init(&filter, stream, 0, '\n');
  EXPECT_EQ(5, ReadFilter_readLine(&filter, name(), 256));
  EXPECT_STREQ("third", name());
  fclose(stream);
}

TEST_F(StorePointers, IdentityOfTheUnitIsGivenIntoItsOwnFields) {
  shm->config.productId = 6;
  shm->config.hardwarePlatform = 14;
  shm->config.zipType = 2;
  EXPECT_EQ(0, getKestroveProduct(&shm->config.productId));
  EXPECT_EQ(0, getHardwarePlatform(&shm->config.hardwarePlatform));
  EXPECT_EQ(0, getZipType(&shm->config.zipType));
  EXPECT_EQ(6u, shm->config.productId);
  EXPECT_EQ(14u, shm->config.hardwarePlatform);
  EXPECT_EQ(2u, shm->config.zipType);
  memcpy(shm->config.gatewayId, "abcd", 4);
  EXPECT_EQ(0, getGatewayId(reinterpret_cast<char*>(shm->config.gatewayId)));
  EXPECT_EQ(0, memcmp("abcd", shm->config.gatewayId, 4));
  EXPECT_EQ(0, getGatewayId(reinterpret_cast<char*>(shm->config.gatewayId) + 1));
  EXPECT_EQ(0, memcmp("aabcd", shm->config.gatewayId, 5));
  memcpy(shm->lanHardwareAddress, "\1\2\3\4\5\6", 6);
  EXPECT_EQ(0, readMacAddr(0, reinterpret_cast<char*>(shm->lanHardwareAddress)));
  EXPECT_STREQ("01:02:03:04:05:06", reinterpret_cast<char*>(shm->lanHardwareAddress));
  strcpy(shm->config.physicalWanInterfaceName, "lo");
  EXPECT_EQ(0, writeMacAddr(1, reinterpret_cast<uint8_t*>(shm->config.physicalWanInterfaceName)));
  EXPECT_EQ(0, shm->config.physicalWanInterfaceName[0]);
}

TEST_F(StorePointers, MessagesWithTextsOfTheStore) {
  strcpy(name(), "prefix");
  shm_errno = SHM_EFULL;
  ::testing::internal::CaptureStderr();
  shm_perror(name());
  EXPECT_EQ("prefix: The table is full\n", ::testing::internal::GetCapturedStderr());
}

TEST_F(StorePointers, FileNamedByTheStoreMayNameAnother) {
  strcpy(shm->config.configFileName, "/tmp/named");
  writeFile("/tmp/named", "KESTROVE_CONFIG /tmp/other\nUNKNOWN\n");
  clearSyslog();
  EXPECT_EQ(0, load_shared_memory(shm->config.configFileName));
  EXPECT_STREQ("/tmp/other", shm->config.configFileName);
  EXPECT_EQ(std::vector<std::string>{"warning: /tmp/named: line 2: undefined parameter \"UNKNOWN\".\n"}, syslogLines());
}

}  // namespace
}  // namespace kestrove::testing
