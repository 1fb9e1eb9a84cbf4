// SPDX-License-Identifier: Apache-2.0
// Codes as words: every row of every table and its default.
#include "tests/dump/dump_fixture.h"

namespace kestrove::testing {
namespace {

class DumpCodes : public StoreTest {};

struct CodeName {
  uint32_t code;
  const char* name;
};

constexpr CodeName kStates[] = {{0, "Uninitialized"}, {1, "Operational"},        {2, "Disabled"},
                                {3, "Unconfigured"},  {4, "Configuration Mode"}, {5, "Debug Mode"},
                                {6, "Invalid Mode"},  {9, "Invalid Mode"},       {255, "Invalid Mode"}};

TEST_F(DumpCodes, EverySwitchPrintsThroughTheStateTable) {
  struct Switch {
    const char* label;
    uint8_t& place;
  };
  ConfigRecord& config = shm->config;
  const Switch switches[] = {{"compression", config.compression},
                             {"failToWireAvailable", config.failToWireAvailable},
                             {"snmpOperState", config.snmpOperState},
                             {"httpOperState", config.httpOperState},
                             {"cliOperState", config.cliOperState},
                             {"kestroveOperState", config.kestroveOperState},
                             {"loggingOperState", config.loggingOperState},
                             {"sshdOperState", config.sshdOperState},
                             {"bannerOperState", config.bannerOperState},
                             {"cifsOperState", config.cifsOperState},
                             {"webCacheOperState", config.webCacheOperState},
                             {"singleInterfaceMode", config.singleInterfaceMode},
                             {"pbrOperState", config.pbrOperState},
                             {"wanOptSupport", config.wanOptSupport},
                             {"transparentBridgeOperState", config.transparentBridgeOperState}};
  for (const Switch& row : switches) {
    for (const CodeName& state : kStates) {
      row.place = static_cast<uint8_t>(state.code);
      EXPECT_EQ(state.name, value(row.label)) << row.label << " " << state.code;
    }
  }
}

TEST_F(DumpCodes, StateWords) {
  for (const CodeName& state : kStates) {
    shm->operationalState = state.code;
    shm->config.ipv6Support = state.code;
    EXPECT_EQ(0u, dump().find(std::string("Kestrove shared memory:\n\nSHM Operational state: ") + state.name + "\n"));
    EXPECT_EQ(state.name, value("ipv6Support"));
    EXPECT_STREQ(state.name, strOperationalState(static_cast<int>(state.code)));
  }
  shm->config.ipv6Support = UINT32_MAX;
  EXPECT_EQ("Invalid Mode", value("ipv6Support"));
  EXPECT_STREQ("Invalid Mode", strOperationalState(-1));
}

TEST_F(DumpCodes, CongestionControls) {
  for (const CodeName& row : {CodeName{0, "Unconfigured"},
                              {1, "Global"},
                              {2, "Per-Connection"},
                              {3, "TCP"},
                              {4, "Error Tolerance"},
                              {5, "None"},
                              {6, "None"},
                              {255, "None"}}) {
    shm->config.lanCongestionControl = shm->config.wanCongestionControl = static_cast<uint8_t>(row.code);
    EXPECT_EQ(row.name, value("lanCongestionControl"));
    EXPECT_EQ(row.name, value("wanCongestionControl"));
    EXPECT_STREQ(row.name, strCongestionControl(static_cast<int>(row.code)));
  }
  EXPECT_STREQ("None", strCongestionControl(-1));
}

TEST_F(DumpCodes, CompressionMethods) {
  for (const CodeName& row : {CodeName{0, "NULL"},
                              {1, "LZ"},
                              {2, "LZP"},
                              {3, "Disabled"},
                              {4, "DDUP"},
                              {5, "LZ+DDUP"},
                              {6, "LZP+DDUP"},
                              {7, "Disabled"},
                              {8, "Extended Header"},
                              {9, "Disabled"},
                              {255, "Disabled"},
                              {UINT32_MAX, "Disabled"}}) {
    shm->config.ddupOperState = row.code;
    EXPECT_EQ(row.name, value("ddupOperState"));
    EXPECT_STREQ(row.name, strDDupState(static_cast<int>(row.code)));
  }
}

TEST_F(DumpCodes, LinkSettings) {
  for (const CodeName& row : {CodeName{1, "auto"},
                              {20, "10baseT"},
                              {40, "10baseT-FD"},
                              {80, "100baseTx"},
                              {100, "100baseTx-FD"},
                              {120, "10baseT"},
                              {140, "1000baseTx-FD"},
                              {0, "10baseT"},
                              {UINT32_MAX, "10baseT"}}) {
    shm->config.lanLinkSetting = shm->config.wanLinkSetting = row.code;
    EXPECT_EQ(row.name, value("lanLinkSetting"));
    EXPECT_EQ(row.name, value("wanLinkSetting"));
  }
}

TEST_F(DumpCodes, RouteStates) {
  putRoute(0, "10.0.0.0", "255.0.0.0", "10.0.0.1", 0, SHM_NO_SLOT);
  for (const CodeName& row : {CodeName{0, "* Undefined *"},
                              {1, "Invalid"},
                              {2, "NIS"},
                              {3, "Active"},
                              {4, "* No Such Value *"},
                              {UINT32_MAX, "* No Such Value *"}}) {
    shm->routes.slot[0].status = row.code;
    EXPECT_NE(std::string::npos, printed(printRouteInfo).find(std::string("10.0.0.1           ") + row.name + "\n"));
  }
}

TEST_F(DumpCodes, LoginOrigins) {
  for (const CodeName& row : {CodeName{3, "serial port"}, {4, "ssh"}, {0, "unknown"}, {5, "unknown"}}) {
    shm->loginFrom = row.code;
    EXPECT_NE(std::string::npos, dump().find(std::string("  user logged in from: \t\t\t") + row.name + "\n"));
  }
}

TEST_F(DumpCodes, Products) {
  shm->config.productId = 11;
  EXPECT_EQ("11 (Kestrove ZEL)", value("productId"));
  shm->config.productId = 12;
  EXPECT_EQ("12 (Unknown Product)", value("productId"));
  shm->config.productId = UINT32_MAX;
  EXPECT_EQ("-1 (Unknown Product)", value("productId"));
}

TEST_F(DumpCodes, FailToWireBitsAreAtLeastTwoDigits) {
  shm->config.failToWireStatus = 0;
  EXPECT_EQ("0x00", value("failToWireStatus"));
  shm->config.failToWireStatus = 0xABCDEF01;
  EXPECT_EQ("0xabcdef01", value("failToWireStatus"));
}

TEST_F(DumpCodes, ManagementLinesNeedTheManagementPort) {
  for (uint32_t platform : {0u, 13u, 15u, UINT32_MAX}) {
    shm->config.hardwarePlatform = platform;
    EXPECT_EQ(std::string::npos, dump().find("  managementAddress")) << platform;
  }
  shm->config.hardwarePlatform = 14;
  EXPECT_EQ(1, countLines(dump(), "  managementAddress: "));
}

}  // namespace
}  // namespace kestrove::testing
