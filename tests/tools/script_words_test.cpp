// SPDX-License-Identifier: Apache-2.0
// The lines of saved scripts, and the words that are taken for others, held against the grammar.
#include <gmock/gmock.h>

#include <span>

#include "tools/ctl/script/help_text.h"
#include "tools/ctl/script/item_words.h"
#include "tools/ctl/script/match.h"
#include "tools/ctl/script/script_file.h"

namespace ctl {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

Match matched(const std::string& line) { return matcher().match(wordsOfLine(line)); }

Wish wishOf(const std::string& line) {
  const Match match = matched(line);
  if (!match.row || !match.row->wish) throw Refusal(kUsage, line + ": " + match.complaint);
  return match.row->wish(match.given);
}

template <typename Kind>
Kind wished(const std::string& line) {
  const Wish wish = wishOf(line);
  EXPECT_TRUE(std::holds_alternative<Kind>(wish)) << line;
  return std::holds_alternative<Kind>(wish) ? std::get<Kind>(wish) : Kind{};
}

struct ItemLine {
  const char* line;
  const char* item;
  uint32_t word;
};

constexpr ItemLine kOfScripts[] = {{"set rateLimit WAN 2048", "wanLinkRate", 2048000},
                                   {"set rateLimit LAN 100000", "lanLinkRate", 100000000},
                                   {"set mtu WAN 1500", "wanMaximumTransferUnit", 1500},
                                   {"set mtu LAN 576", "lanMaximumTransferUnit", 576},
                                   {"set prb on", "pbrOperState", SHM_ON},
                                   {"set pbr off", "pbrOperState", SHM_OFF},
                                   {"set pbrAddress LAN 10.1.2.3", "lanIpAddress", 0x0302010A},
                                   {"set pbrMask LAN 255.255.0.0", "lanIpAddressMask", 0x0000FFFF},
                                   {"set pbrAddress WAN 0.0.0.0", "wanIpAddress", 0},
                                   {"set pbrMask WAN 0.0.0.0", "wanIpAddressMask", 0},
                                   {"set sshInterface on", "sshdOperState", SHM_ON},
                                   {"set httpInterface off", "httpOperState", SHM_OFF},
                                   {"set compression on", "compression", SHM_ON},
                                   {"set logging off", "loggingOperState", SHM_OFF},
                                   {"set accelerationMode perConnection", "wanCongestionControl", 2},
                                   {"set accelerationMode variable", "wanCongestionControl", 2},
                                   {"set accelerationMode ratepacing", "wanCongestionControl", 5},
                                   {"set accelerationMode constant", "wanCongestionControl", 5},
                                   {"set accelerationMode errors", "wanCongestionControl", 4},
                                   {"set linkSetting LAN auto", "lanLinkSetting", 1},
                                   {"set linkSetting LAN 10baseT", "lanLinkSetting", 20},
                                   {"set linkSetting WAN 10baseT-FD", "wanLinkSetting", 40},
                                   {"set linkSetting WAN 100baseTx", "wanLinkSetting", 80},
                                   {"set linkSetting MANAGEMENT 100baseTx-FD", "managementLinkSetting", 100},
                                   {"set linkSetting MANAGEMENT 1000baseTx-FD", "managementLinkSetting", 140}};

constexpr ItemLine kOfFilesAndItems[] = {{"set wanLinkRate 2048000", "wanLinkRate", 2048000},
                                         {"set INTERNET_RATE 2048000", "wanLinkRate", 2048000},
                                         {"set SSHD 1", "sshdOperState", SHM_ON},
                                         {"set SSHD 0", "sshdOperState", SHM_OFF},
                                         {"set BRIDGE_MASK 24", "managementAddressMask", 0x00FFFFFF},
                                         {"set wanLinkRate 512k", "wanLinkRate", 512000},
                                         {"set INTERNET_RATE 1M", "wanLinkRate", 1000000},
                                         {"set rateLimit WAN 1M", "wanLinkRate", 1000000},
                                         {"set rateLimit WAN 2G", "wanLinkRate", 2000000000}};

void expectWishes(std::span<const ItemLine> lines) {
  for (const ItemLine& line : lines) {
    const ItemWish wish = wished<ItemWish>(line.line);
    EXPECT_STREQ(line.item, wish.row->name) << line.line;
    EXPECT_EQ(line.word, wish.word) << line.line;
  }
}

TEST(ItemLines, OfScriptsAskForTheItemInItsUnit) { expectWishes(kOfScripts); }

TEST(ItemLines, MayNameItsKeywordOrARateWithASuffix) { expectWishes(kOfFilesAndItems); }

TEST(ScriptLines, AModeIsOneWish) {
  const ModeWish single = wished<ModeWish>("set interfaceMode single 5 6");
  EXPECT_EQ(uint32_t{SHM_ON}, single.mode);
  EXPECT_EQ(5u, single.lanVlan);
  EXPECT_EQ(6u, single.wanVlan);
  EXPECT_EQ(uint32_t{SHM_OFF}, wished<ModeWish>("set interfaceMode double").mode);
  EXPECT_EQ(uint32_t{SHM_OFF}, wished<ModeWish>("mode double").mode);
}

TEST(ScriptLines, SomeSayNothing) {
  wished<NoWish>("set accelerationMode ");
  wished<NoWish>("set interfaceMode single 0 0");
  EXPECT_TRUE(isBlankLine(""));
  EXPECT_TRUE(isBlankLine(" \t# a remark"));
}

TEST(ScriptLines, AddressesHaveTheirPlace) {
  const ManagementAddress bridge = wished<ManagementAddress>("ip add 10.1.2.3 255.255.255.0 -b");
  EXPECT_EQ(4u, bridge.ipVersion);
  EXPECT_EQ(0x0302010Au, bridge.address);
  EXPECT_EQ(0x00FFFFFFu, bridge.mask);
  EXPECT_EQ(SHM_IF_BRIDGE, bridge.interfaceKind);
  EXPECT_EQ(SHM_IF_LAN, wished<ManagementAddress>("ip add 10.1.2.3 255.255.255.0 -v").interfaceKind);
  const ManagementAddress six = wished<ManagementAddress>("ip add fd00::1 64 -m");
  EXPECT_EQ(SHM_IF_MANAGEMENT, six.interfaceKind);
  EXPECT_EQ(6u, six.ipVersion);
  EXPECT_EQ(64u, six.prefixLength6);
}

TEST(ScriptLines, RoutesHaveTheirMaskAsAWord) {
  const RouteEntry route = wished<RouteEntry>("route add 10.1.0.0 255.255.0.0 192.168.1.254 -n");
  EXPECT_EQ(0x0000010Au, route.destination);
  EXPECT_EQ(0x0000FFFFu, route.netmask);
  EXPECT_EQ(0xFE01A8C0u, route.gateway);
  EXPECT_EQ(uint32_t{SHM_ROUTE_DISABLED}, route.status);
  EXPECT_EQ(uint32_t{SHM_ROUTE_ACTIVE}, wished<RouteEntry>("route add 10.1.0.0 255.255.0.0 192.168.1.254 ").status);
  EXPECT_EQ(0u, wished<RouteEntry>("route add default 192.168.1.254").netmask);
  const Route6Entry six = wished<Route6Entry>("route6 add fd00:: 32 fd01::1 ");
  EXPECT_EQ(32u, six.prefixLength);
  EXPECT_EQ(0u, wished<Route6Entry>("route6 add default fd01::1 --disabled").prefixLength);
}

TEST(ScriptLines, ARuleCountsFromOne) {
  const RuleWish wish = wished<RuleWish>(
      "rule add 3 -ipVersion 4 -sa 10.1.0.0/255.255.0.0 -da 10.2.0.0/255.255.0.0 -proto TCP -srcPort 1024 -srcPortEnd "
      "2048 "
      "-destPort 80 -destPortEnd 90 -p 3 -bw 512  -noAccel -NIS ");
  EXPECT_EQ(2, wish.position);
  EXPECT_EQ(0x0000010Au, wish.rule.srcAddr);
  EXPECT_EQ(0x0000FFFFu, wish.rule.dstMask);
  EXPECT_EQ(6u, wish.rule.proto);
  EXPECT_EQ(2048, wish.rule.srcPortEnd);
  EXPECT_EQ(80, wish.rule.destPort);
  EXPECT_EQ(90, wish.rule.destPortEnd);
  EXPECT_EQ(3, wish.rule.priority);
  EXPECT_EQ(512000, wish.rule.bandwidth);
  EXPECT_EQ(uint32_t{SHM_OFF}, wish.rule.accel);
  EXPECT_EQ(uint32_t{SHM_RULE_NIS}, wish.rule.ruleAction);
  EXPECT_EQ(3, wished<RuleWish>("rule add 3 --proto tcp").position) << "one of kestrovectl counts from 0";
}

TEST(ScriptLines, ARuleMaySayLittle) {
  const FilterRule any = wished<RuleWish>("rule add 1 -ipVersion Any -proto ANY -d ").rule;
  EXPECT_EQ(uint32_t{SHM_FAMILY_ANY}, any.ipVersion);
  EXPECT_EQ(SHM_TARGET_DROP, any.target);
  EXPECT_EQ(uint32_t{SHM_RULE_ACTIVE}, any.ruleAction);
  const FilterRule other = wished<RuleWish>("rule add 1 -ipVersion Any -proto -p -5 -bw 10 ").rule;
  EXPECT_EQ(0u, other.proto) << "a protocol that the script has no word for";
  EXPECT_EQ(-5, other.priority);
  EXPECT_EQ(SHM_TARGET_ACCELERATE, other.target);
  EXPECT_EQ(7, wished<RuleWish>("rule add 1 -ipVersion Any -proto -srcPort 7 -destPort 0 -b ").rule.srcPortEnd);
  const FilterRule six = wished<RuleWish>("rule add 1 -ipVersion 6 -sa6 fd00::/8 -da6 ::/0 -proto UDP -b ").rule;
  EXPECT_EQ(8u, six.srcPrefixLen6);
  EXPECT_EQ(0xFD, six.srcAddr6[0]);
  EXPECT_EQ(SHM_TARGET_BRIDGE, six.target);
}

TEST(ScriptLines, WrongOnesAreNamed) {
  struct Row {
    const char* line;
    const char* said;
  };
  for (const Row& row : {Row{"rule add 1 -ipVersion 5", "5: -ipVersion takes 4|6|Any"},
                         {"rule add 1 -proto TCP -colour red", "-colour: no such option"},
                         {"rule add 1 -d -d", "-d: given twice"},
                         {"rule add 1 -proto GRE -d", "GRE: -proto takes ANY|TCP|UDP"},
                         {"rule add 1 -sa", "-sa: its value is missing"},
                         {"rule add 1 -destPort http", "http: -destPort takes NUMBER"},
                         {"rule add -d", "NUMBER is required"},
                         {"ip add 10.1.2.3", "MASK is required"},
                         {"ip add 10.1.2.3 24 -b now", "now: one word too many"}}) {
    const Match match = matched(row.line);
    EXPECT_EQ(nullptr, match.row) << row.line;
    EXPECT_EQ(row.said, match.complaint) << row.line;
  }
  for (const char* line : {"rule add 0 -d", "rule add 1 -d -b", "rule add 1 -ipVersion 6 -sa 10.0.0.0/255.0.0.0",
                           "ip add 10.1.2.3 24 -b -v", "set rateLimit WAN fast", "set linkSetting LAN 120",
                           "set pbrAddress LAN 10.1.2", "set interfaceMode single 5 x", "set SSHD 2"}) {
    EXPECT_THROW(wishOf(line), Refusal) << line;
  }
}

TEST(Aliases, StandForTheWordOfTheTable) {
  struct Row {
    const char* line;
    const char* words;
  };
  for (const Row& row : {Row{"rule del 3", "delete"},
                         {"rule rm 3", "delete"},
                         {"rule remove 3", "delete"},
                         {"route del 10.0.0.0/8", "remove"},
                         {"route delete 10.0.0.0/8", "remove"},
                         {"--json user rm alice", "remove"},
                         {"rule ls", "list"},
                         {"events ls", "list"}}) {
    const Match match = matched(row.line);
    ASSERT_NE(nullptr, match.row) << row.line;
    EXPECT_EQ(row.words, match.row->words.back()) << row.line;
  }
}

TEST(Ranges, OfPortsAreOneWord) {
  const FilterRule rule = wished<RuleWish>("rule add 0 --proto tcp --dport 80-90 --sport=1024-65535 --kbps 1M").rule;
  EXPECT_EQ(80, rule.destPort);
  EXPECT_EQ(90, rule.destPortEnd);
  EXPECT_EQ(65535, rule.srcPortEnd);
  EXPECT_EQ(1000000, rule.bandwidth);
  for (const char* line : {"rule add 0 --proto tcp --dport 80-", "rule add 0 --proto tcp --dport 90-80",
                           "rule add 0 --proto tcp --dport 80-90 --dport-end 100",
                           "rule add 0 --proto tcp --dport 65536", "rule add 0 --proto tcp --kbps 500x"}) {
    EXPECT_THROW(wishOf(line), Refusal) << line;
  }
}

TEST(Lines, ArePartedAsByAShell) {
  EXPECT_THAT(wordsOfLine("  set\tsysName  \"branch seven\" # remark"), ElementsAre("set", "sysName", "branch seven"));
  EXPECT_THAT(wordsOfLine("set sysName '' "), ElementsAre("set", "sysName", ""));
  EXPECT_THAT(wordsOfLine("# all of it"), IsEmpty());
  EXPECT_THROW(wordsOfLine("set sysName \"branch"), Refusal);
  EXPECT_THROW(wordsOfLine(std::string("set sysName a\x01") + "b"), Refusal);
  EXPECT_THROW(wordsOfLine(std::string(kLongestLine + 1, 'x')), Refusal);
}

TEST(Phrases, AreTheSameValueInEachVocabulary) {
  const ItemRow& rate = *findItemRow("wanLinkRate");
  EXPECT_EQ("wanLinkRate 2048000", itemPhrase(rate, Tongue::kItem, 2048000, 1));
  EXPECT_EQ("rateLimit WAN 2048", itemPhrase(rate, Tongue::kScript, 2048000, 1));
  EXPECT_EQ("INTERNET_RATE 2048000", itemPhrase(rate, Tongue::kFile, 2048000, 1));
  EXPECT_EQ("", itemPhrase(rate, Tongue::kScript, 2048001, 1)) << "no whole kbit/s";
  const ItemRow& mode = *findItemRow("wanCongestionControl");
  EXPECT_EQ("accelerationMode perConnection", itemPhrase(mode, Tongue::kScript, 2, 1));
  EXPECT_EQ("accelerationMode variable", itemPhrase(mode, Tongue::kScript, 2, SHM_PRODUCT_DRELM));
  EXPECT_EQ("", itemPhrase(mode, Tongue::kScript, 3, 1));
  EXPECT_EQ("CONFIG_BY_WEB 0", itemPhrase(*findItemRow("httpOperState"), Tongue::kFile, SHM_OFF, 1));
}

TEST(HelpText, TellsWhatMayFollow) {
  EXPECT_THAT(whatMayFollow({"route"}), AllOf(HasSubstr("  add "), HasSubstr("  freshen ")));
  EXPECT_THAT(whatMayFollow({"set", "linkSetting", "LAN"}), AllOf(HasSubstr("VALUE"), HasSubstr("100baseTx-FD")));
  EXPECT_THAT(whatMayFollow({"rule", "add", "1"}), AllOf(HasSubstr("--kbps"), HasSubstr("-srcPortEnd")));
  EXPECT_THAT(helpOfWord("INTERNET_RATE"),
              AllOf(HasSubstr("wanLinkRate (bit/s)"), HasSubstr("rateLimit WAN (kbit/s)"), HasSubstr("minRate..")));
  EXPECT_EQ("", helpOfWord("colour"));
}

}  // namespace
}  // namespace ctl
