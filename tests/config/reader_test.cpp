// SPDX-License-Identifier: Apache-2.0
// Lines of a configuration file, and keywords that do more than fill a field.
#include <arpa/inet.h>

#include "tests/config/config_fixture.h"
#include "tests/support/addresses.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

class ReaderTest : public StoreTest {};

TEST_F(ReaderTest, LanCcSetsTcpWhateverItsValue) {
  for (const char* line : {"LAN_CC\n", "LAN_CC 1\n", "LAN_CC x y\n"}) {
    shm->config.lanCongestionControl = 0;
    load(line);
    EXPECT_EQ(3, shm->config.lanCongestionControl);
  }
}

TEST_F(ReaderTest, CifsThatIsOnCountsAsConfigured) {
  load("CIFS 0\n");
  EXPECT_EQ(SHM_OFF, shm->config.cifsOperState);
  EXPECT_EQ(0, shm->config.cifsConfigured);
  load("CIFS 5\n");
  EXPECT_EQ(3, shm->config.cifsOperState);
  EXPECT_EQ(0, shm->config.cifsConfigured);
  load("CIFS 1\n");
  EXPECT_EQ(SHM_ON, shm->config.cifsOperState);
  EXPECT_EQ(1, shm->config.cifsConfigured);
  load("CIFS 0\n");
  EXPECT_EQ(1, shm->config.cifsConfigured);
}

constexpr char kResolver[] = "/etc/resolv.conf";

TEST_F(ReaderTest, WebCacheThatIsOnWritesTheResolver) {
  writeFile(kResolver, "nameserver 1.1.1.1\n");
  shm->config.dnsAddress = quad("10.9.8.7");
  load("WEB_CACHE 1\n");
  EXPECT_EQ(SHM_ON, shm->config.webCacheOperState);
  EXPECT_EQ(1, shm->config.cifsConfigured);
  EXPECT_EQ("nameserver 10.9.8.7", readFile(kResolver));
}

TEST_F(ReaderTest, WebCacheThatIsNotOnRemovesTheResolver) {
  for (const char* line : {"WEB_CACHE 0\n", "WEB_CACHE\n", "WEB_CACHE 9\n"}) {
    writeFile(kResolver, "nameserver 1.1.1.1\n");
    load(line);
    EXPECT_FALSE(fileExists(kResolver)) << line;
    EXPECT_EQ(0, shm->config.cifsConfigured);
  }
}

TEST_F(ReaderTest, DnsAddressFollowsTheWebCache) {
  shm->config.webCacheOperState = SHM_ON;
  load("DNS_ADDR 10.0.0.53\n");
  EXPECT_EQ(quad("10.0.0.53"), shm->config.dnsAddress);
  EXPECT_EQ("nameserver 10.0.0.53", readFile(kResolver));
  shm->config.webCacheOperState = SHM_OFF;
  load("DNS_ADDR 10.0.0.54\n");
  EXPECT_EQ(quad("10.0.0.54"), shm->config.dnsAddress);
  EXPECT_FALSE(fileExists(kResolver));
}

TEST_F(ReaderTest, DnsAddressThatIsNoneKeepsTheOldOneAndStillTouchesTheResolver) {
  shm->config.dnsAddress = quad("10.0.0.53");
  shm->config.webCacheOperState = SHM_ON;
  for (const char* line : {"DNS_ADDR\n", "DNS_ADDR 10.0.0\n"}) {
    writeFile(kResolver, "nameserver 1.1.1.1\n");
    load(line);
    EXPECT_EQ("nameserver 10.0.0.53", readFile(kResolver));
  }
  shm->config.webCacheOperState = SHM_OFF;
  load("DNS_ADDR bad\n");
  EXPECT_FALSE(fileExists(kResolver));
  EXPECT_EQ(quad("10.0.0.53"), shm->config.dnsAddress);
}

TEST_F(ReaderTest, DdupWordsAddUp) {
  struct {
    const char* value;
    uint32_t mode;
  } const rows[] = {
      {"", 0},
      {"LZ", 1},
      {"LZP", 2},
      {"DDUP", 4},
      {"XHDR", 8},
      {"LZ+DDUP", 5},
      {"LZP+DDUP", 6},
      {"LZP,LZ", 1},
      {"LZ LZP", 2},
      {"DDUP-XHDR", 12},
      {"NULL", 0},
      {"NULL,LZ", 0},
      {"DISABLED", 255},
      {"DISABLED DDUP", 255},
      {"LZ,NULL", 1},
      {"LZ DISABLED", 1},
      {"lz", 0},
      {"junk,DDUP", 4},
      {"+-,LZ", 1},
      {",NULL,LZ", 0},
      {"LZ,junk,XHDR", 9},
      {"LZ\tDDUP", 5},
  };
  for (const auto& row : rows) {
    shm->config.ddupOperState = 77;
    EXPECT_EQ(kNoMessages, load("DDUP " + std::string(row.value) + "\n"));
    EXPECT_EQ(row.mode, shm->config.ddupOperState) << row.value;
  }
}

TEST_F(ReaderTest, ProductsAreOneToTen) {
  struct {
    const char* value;
    uint32_t product;
  } const rows[] = {{"1", 1}, {"10", 10}, {"0", 0}, {"11", 0}, {"-1", 0}, {"", 0}, {"5 x", 5}, {"4294967297", 0}};
  for (const auto& row : rows) {
    shm->config.productId = 77;
    load("PRODUCT_ID " + std::string(row.value) + "\n");
    EXPECT_EQ(row.product, shm->config.productId) << row.value;
  }
}

TEST_F(ReaderTest, CommentsAndBlankLinesAreCountedAndIgnored) {
  EXPECT_EQ((std::vector<std::string>{"warning: /tmp/input.conf: line 3: undefined parameter \"NONSENSE\".\n",
                                      "warning: /tmp/input.conf: line 6: undefined parameter \"lan_mtu\".\n"}),
            load("\n \t \nNONSENSE 1\n# LAN_MTU 1\n  \t#LAN_MTU 2\nlan_mtu 3\nLAN_MTU 1400\n"));
  EXPECT_EQ(1400u, shm->config.lanMaximumTransferUnit);
}

TEST_F(ReaderTest, KeywordsAreWholeWords) {
  EXPECT_EQ((std::vector<std::string>{"warning: /tmp/input.conf: line 1: undefined parameter \"LAN_MT\".\n",
                                      "warning: /tmp/input.conf: line 2: undefined parameter \"LAN_MTUS\".\n",
                                      "warning: /tmp/input.conf: line 3: undefined parameter \"LAN_MTU=1400\".\n",
                                      "warning: /tmp/input.conf: line 4: undefined parameter \"PB\".\n",
                                      "warning: /tmp/input.conf: line 5: undefined parameter \"PBRX\".\n"}),
            load("LAN_MT 1\nLAN_MTUS 2\nLAN_MTU=1400\nPB 1\nPBRX 1\n"));
  EXPECT_EQ(0u, shm->config.lanMaximumTransferUnit);
  EXPECT_EQ(0, shm->config.pbrOperState);
}

TEST_F(ReaderTest, LeadingSeparatorsDoNotMatter) {
  load(" \t LAN_MTU\t\t 1300\n");
  EXPECT_EQ(1300u, shm->config.lanMaximumTransferUnit);
}

TEST_F(ReaderTest, LineIsCutToItsFirst510Characters) {
  std::string head = "SYS_NAME ";
  std::string line = head + std::string(501, 'a') + "Z";  // 511 characters, the last one unseen
  EXPECT_EQ(
      std::vector<std::string>{"err: /tmp/input.conf: line 1: Warning: truncated value for SYS_NAME parameter, max "
                               "length 256.\n"},
      load(line + "\n"));
  std::string number = "LAN_MTU " + std::string(510 - 8 - 3, ' ') + "1234";  // the 4 is character 511
  load(number + "\n");
  EXPECT_EQ(123u, shm->config.lanMaximumTransferUnit);
}

TEST_F(ReaderTest, NextLineAfter600CharactersKeepsItsNumber) {
  std::string line = "LAN_MTU 1400 " + std::string(587, 'x');
  ASSERT_EQ(600u, line.size());
  EXPECT_EQ(std::vector<std::string>{"warning: /tmp/input.conf: line 2: undefined parameter \"NEXT\".\n"},
            load(line + "\nNEXT\n"));
  EXPECT_EQ(1400u, shm->config.lanMaximumTransferUnit);
}

TEST_F(ReaderTest, LongUnknownKeywordIsReportedAsSeen) {
  std::string word(600, 'W');
  EXPECT_EQ(std::vector<std::string>{"warning: /tmp/input.conf: line 1: undefined parameter \"" + word.substr(0, 510) +
                                     "\".\n"},
            load(word + "\n"));
}

TEST_F(ReaderTest, LastLineNeedsNoNewline) {
  load("LAN_MTU 1400\nLAN_RATE 5");
  EXPECT_EQ(5u, shm->config.lanLinkRate);
}

TEST_F(ReaderTest, ZeroByteEndsItsLine) {
  using namespace std::string_literals;
  EXPECT_EQ(std::vector<std::string>{"warning: /tmp/input.conf: line 2: undefined parameter \"LAN_RA\".\n"},
            load("\0LAN_MTU 1\nLAN_RA\0TE 7\nLAN_MTU 14\00000\nLAN_RATE 9\n"s));
  EXPECT_EQ(14u, shm->config.lanMaximumTransferUnit);
  EXPECT_EQ(9u, shm->config.lanLinkRate);
}

TEST_F(ReaderTest, OnlyWhatTheFileNamesIsOverwritten) {
  shm->config.lanLinkRate = 5;
  load("LAN_MTU 1400\n");
  EXPECT_EQ(5u, shm->config.lanLinkRate);
}

TEST_F(ReaderTest, LaterLineWins) {
  load("LAN_MTU 1400\nLAN_MTU 1300\nINTERNET_CONGESTION 2\nGLOBAL_CONGESTION_CONTROL 4\n");
  EXPECT_EQ(1300u, shm->config.lanMaximumTransferUnit);
  EXPECT_EQ(4, shm->config.wanCongestionControl);
}

}  // namespace
}  // namespace kestrove::testing
