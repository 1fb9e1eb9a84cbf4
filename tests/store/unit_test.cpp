// SPDX-License-Identifier: Apache-2.0
#include "kestrove/unit.h"

#include <gtest/gtest.h>
#include <string.h>

#include <array>

#include "kestrove/items.h"
#include "kestrove/text.h"
#include "tests/support/store.h"

using namespace kestrove::testing;

namespace {

using HardwareAddress = std::array<uint8_t, 6>;

class Unit : public StoreTest {
 protected:
  void TearDown() override {
    EXPECT_EQ(0, shm_lock_count);
    StoreTest::TearDown();
  }
};

TEST(Products, EachCodeHasItsName) {
  constexpr const char* kNames[] = {"Unknown Product", "Ostrel",   "Ostrel",   "Wendar box",
                                    "Ostrel V6",       "DRELM",    "Kestrove", "Ostrel-G2",
                                    "Pellam-Kestrove", "Kestrove", "Kestrove", "Kestrove ZEL"};
  for (uint32_t code = 0; code < 12; ++code) EXPECT_STREQ(kNames[code], getProductName(code)) << code;
  EXPECT_STREQ("Unknown Product", getProductName(12));
  EXPECT_STREQ("Unknown Product", getProductName(0xFFFFFFFFu));
}

TEST_F(Unit, ProductIsTheStoresOwn) {
  shm->config.productId = 7;
  uint32_t product = 0;
  EXPECT_EQ(0, getKestroveProduct(&product));
  EXPECT_EQ(7u, product);
  EXPECT_STREQ("Ostrel-G2", getKestroveProductName());
  shm->config.productId = 4000000000u;
  EXPECT_STREQ("Unknown Product", getKestroveProductName());
}

TEST_F(Unit, PlatformAndArchiveTypeTakeAnyValue) {
  for (uint32_t value : {0u, 14u, 0xFFFFFFFFu}) {
    uint32_t out = 1;
    EXPECT_EQ(0, setHardwarePlatform(value));
    EXPECT_EQ(value, shm->config.hardwarePlatform);
    EXPECT_EQ(0, getHardwarePlatform(&out));
    EXPECT_EQ(value, out);
    EXPECT_EQ(0, setZipType(value ^ 5));
    EXPECT_EQ(value ^ 5, shm->config.zipType);
    EXPECT_EQ(0, getZipType(&out));
    EXPECT_EQ(value ^ 5, out);
  }
}

TEST_F(Unit, LoginComesFromTheSerialPortOrSsh) {
  EXPECT_EQ(0, setLoginFrom(3));
  EXPECT_EQ(3, getLoginFrom());
  EXPECT_EQ(0, setLoginFrom(4));
  EXPECT_EQ(4u, shm->loginFrom);
  for (uint32_t value : {0u, 2u, 5u, 0xFFFFFFFFu}) EXPECT_FAILS_WITH(SHM_EINVAL, setLoginFrom(value));
  EXPECT_EQ(4, getLoginFrom());
}

TEST_F(Unit, HardwareAddressesAreWrittenInCapitals) {
  memcpy(shm->lanHardwareAddress, "\x00\x1a\x2b\xcc\xdd\xee", 6);
  memcpy(shm->wanHardwareAddress, "\xff\xfe\xfd\xfc\xfb\xfa", 6);
  memcpy(shm->managementHardwareAddress, "\x01\x02\x03\x04\x05\x06", 6);
  char text[18];
  EXPECT_EQ(0, readMacAddr(0, text));
  EXPECT_STREQ("00:1A:2B:CC:DD:EE", text);
  EXPECT_EQ(0, readMacAddr(1, text));
  EXPECT_STREQ("FF:FE:FD:FC:FB:FA", text);
  EXPECT_EQ(0, readMacAddr(3, text));
  EXPECT_STREQ("01:02:03:04:05:06", text);
  for (int number : {2, 4, 5, 6, -1}) {
    EXPECT_EQ(0, readMacAddr(number, text));
    EXPECT_STREQ("00:00:00:00:00:00", text) << number;
  }
}

TEST_F(Unit, KernelTellsTheAddressOfAPort) {
  HardwareAddress out;
  strcpy(shm->config.physicalLanInterfaceName, "eth1");
  strcpy(shm->config.physicalWanInterfaceName, "eth0");
  strcpy(shm->config.managementInterfaceName, "eth2");
  strcpy(shm->config.bridgeRouterPhysicalName, "eth0");
  struct Row {
    int number;
    HardwareAddress address;
  };
  for (const Row& row :
       {Row{0, {2, 0, 0, 0, 0, 2}}, {1, {2, 0, 0, 0, 0, 1}}, {3, {2, 0, 0, 0, 0, 3}}, {5, {2, 0, 0, 0, 0, 1}}}) {
    out.fill(0x5A);
    EXPECT_EQ(0, writeMacAddr(row.number, out.data())) << row.number;
    EXPECT_EQ(row.address, out) << row.number;
  }
}

TEST_F(Unit, PortThatIsNotThereGivesZeros) {
  strcpy(shm->config.physicalWanInterfaceName, "eth9");
  HardwareAddress out;
  for (int number : {1, 2, 3, 4, 6, 100}) {  // no such port, no such number, no name, no bridge yet
    out.fill(0x5A);
    EXPECT_EQ(-1, writeMacAddr(number, out.data())) << number;
    EXPECT_EQ(HardwareAddress{}, out) << number;
  }
}

TEST_F(Unit, NameThatFillsItsFieldIsBounded) {
  memset(shm->config.physicalWanInterfaceName, 'x', 16);
  HardwareAddress out;
  EXPECT_EQ(-1, writeMacAddr(1, out.data()));
  EXPECT_EQ(HardwareAddress{}, out);
}

TEST_F(Unit, GatewayIdIsTheVendorAndTheEndOfTheAddress) {
  struct Row {
    const char* address;
    uint8_t vendor;
  };
  for (const Row& row : {Row{"\x00\x06\xB0\x01\x02\x03", 255},
                         {"\x00\x0C\xBD\x01\x02\x03", 1},
                         {"\x00\xD0\xC9\x01\x02\x03", 2},
                         {"\x00\x04\x5F\x01\x02\x03", 3}}) {
    memcpy(shm->wanHardwareAddress, row.address, 6);
    EXPECT_EQ(0, setGatewayId());
    EXPECT_EQ(row.vendor, shm->config.gatewayId[0]);
    EXPECT_EQ(0, memcmp(shm->config.gatewayId + 1, "\x01\x02\x03", 3));
  }
}

TEST_F(Unit, GatewayIdWithAZeroIsStoredAndFails) {
  shm_errno = 99;
  memcpy(shm->wanHardwareAddress, "\x00\x11\x22\x01\x02\x03", 6);
  EXPECT_EQ(-1, setGatewayId());
  EXPECT_EQ(0, memcmp(shm->config.gatewayId, "\x00\x01\x02\x03", 4));
  memcpy(shm->wanHardwareAddress, "\x00\x06\xB0\x01\x02\x00", 6);
  EXPECT_EQ(-1, setGatewayId());
  EXPECT_EQ(0, memcmp(shm->config.gatewayId, "\xFF\x01\x02\x00", 4));
  EXPECT_EQ(99u, shm_errno);
}

TEST_F(Unit, GatewayIdIsCopiedUpToItsFirstZero) {
  char out[6] = "#####";
  memcpy(shm->config.gatewayId, "\xFF\x01\x02\x03", 4);
  EXPECT_EQ(0, getGatewayId(out));
  EXPECT_EQ(0, memcmp(out, "\xFF\x01\x02\x03#", 5));
  memcpy(shm->config.gatewayId, "ab\0c", 4);
  memcpy(out, "#####", 5);
  EXPECT_EQ(0, getGatewayId(out));
  EXPECT_EQ(0, memcmp(out, "ab###", 5));
}

TEST_F(Unit, NullOutputsAreRefused) {
  EXPECT_FAILS_WITH(SHM_EINVAL, getKestroveProduct(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getHardwarePlatform(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getZipType(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, writeMacAddr(1, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, readMacAddr(1, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getGatewayId(nullptr));
}

TEST(UnitWithoutAStore, EveryOperationFailsWithTheLocksCode) {
  uint32_t word = 5;
  char text[18] = "kept";
  HardwareAddress address;
  EXPECT_FAILS_WITH(SHM_EATTACH, getKestroveProduct(&word));
  EXPECT_FAILS_WITH(SHM_EATTACH, setHardwarePlatform(1));
  EXPECT_FAILS_WITH(SHM_EATTACH, getHardwarePlatform(&word));
  EXPECT_FAILS_WITH(SHM_EATTACH, setZipType(1));
  EXPECT_FAILS_WITH(SHM_EATTACH, getZipType(&word));
  EXPECT_FAILS_WITH(SHM_EATTACH, setLoginFrom(3));
  EXPECT_FAILS_WITH(SHM_EINVAL, setLoginFrom(1));  // refused before the lock is asked for
  EXPECT_FAILS_WITH(SHM_EATTACH, getLoginFrom());
  EXPECT_FAILS_WITH(SHM_EATTACH, writeMacAddr(1, address.data()));
  EXPECT_FAILS_WITH(SHM_EATTACH, readMacAddr(1, text));
  EXPECT_FAILS_WITH(SHM_EATTACH, setGatewayId());
  EXPECT_FAILS_WITH(SHM_EATTACH, getGatewayId(text));
  EXPECT_EQ(nullptr, getKestroveProductName());
  EXPECT_EQ(5u, word);
  EXPECT_STREQ("kept", text);
}

}  // namespace
