// SPDX-License-Identifier: Apache-2.0
// Lines of settings into a store: the inverse of lines.cpp.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/ctl/settings/lines.h"
#include "tools/ctl/settings/quoting.h"
#include "tools/ctl/settings/setting_items.h"
#include "tools/ctl/values.h"

namespace ctl {
namespace {

constexpr int kBitsPerKilobit = 1000;

[[noreturn]] void refuse(const std::string& word, const char* what) { throw Refusal(kUsage, word + ": " + what); }

uint32_t number(const std::string& word) {
  errno = 0;
  char* end = nullptr;
  const long long value = strtoll(word.c_str(), &end, 10);
  if (word.empty() || *end || errno != 0 || value < INT32_MIN || value > UINT32_MAX) refuse(word, "no number");
  return static_cast<uint32_t>(value);
}

uint32_t named(Vocabulary words, const std::string& word) {
  const NamedNumber* found = findName(words, word);
  return found ? static_cast<uint32_t>(found->number) : number(word);
}

// A line, word by word.
class Words {
 public:
  explicit Words(const std::string& line) : line_(line), words_(wordsIn(line)) {}

  bool end() const { return at_ == words_.size(); }
  const std::string& next() {
    if (end()) refuse(line_, "a word is missing");
    return words_[at_++];
  }
  bool take(const char* word) {
    if (end() || words_[at_] != word) return false;
    ++at_;
    return true;
  }
  void expect(std::initializer_list<const char*> words) {
    for (const char* word : words) {
      if (!take(word)) refuse(line_, "no line of a setting");
    }
  }
  void finish() const {
    if (!end()) refuse(line_, "words are left over");
  }

 private:
  const std::string& line_;
  std::vector<std::string> words_;
  size_t at_ = 0;
};

Prefix prefix(const std::string& word) { return parsePrefix(word, Family::kBoth); }

template <typename Entry, size_t N, typename Count>
Entry& append(Entry (&table)[N], Count& count, const std::string& what) {
  if (static_cast<size_t>(count) >= N) refuse(what, "the table is full");
  return table[count++];
}

class RuleReader {
 public:
  explicit RuleReader(Words& words) : words_(words) {
    rule_.ipVersion = SHM_FAMILY_IPV4;
    rule_.target = SHM_TARGET_ACCELERATE;
    rule_.priority = 8;
    rule_.accel = SHM_ON;
    rule_.ruleAction = SHM_RULE_ACTIVE;
  }

  FilterRule read() {
    words_.expect({"rule", "add", "last"});
    while (!words_.end()) option(words_.next());
    return rule_;
  }

 private:
  using Put = void (RuleReader::*)();
  struct Option {
    const char* name;
    Put put;
  };

  void option(const std::string& name) {
    static constexpr Option kOptions[] = {{"--any", &RuleReader::any},
                                          {"--family", &RuleReader::family},
                                          {"--from", &RuleReader::from},
                                          {"--to", &RuleReader::to},
                                          {"--proto", &RuleReader::proto},
                                          {"--sport", &RuleReader::sport},
                                          {"--sport-end", &RuleReader::sportEnd},
                                          {"--dport", &RuleReader::dport},
                                          {"--dport-end", &RuleReader::dportEnd},
                                          {"--match-all", &RuleReader::nothing},
                                          {"--as-is", &RuleReader::nothing},
                                          {"--priority", &RuleReader::priority},
                                          {"--kbps", &RuleReader::kbps},
                                          {"--bps", &RuleReader::bps},
                                          {"--target", &RuleReader::target},
                                          {"--accel", &RuleReader::accel},
                                          {"--status", &RuleReader::status}};
    for (const Option& row : kOptions) {
      if (name == row.name) return (this->*row.put)();
    }
    refuse(name, "no option of a rule");
  }

  int32_t signedWord() { return static_cast<int32_t>(number(words_.next())); }
  void nothing() {}
  void any() { rule_.ipVersion = SHM_FAMILY_ANY; }
  void family() { rule_.ipVersion = number(words_.next()); }
  void from() { end(rule_.srcAddr, rule_.srcMask, rule_.srcAddr6, rule_.srcPrefixLen6); }
  void to() { end(rule_.dstAddr, rule_.dstMask, rule_.dstAddr6, rule_.dstPrefixLen6); }
  void end(uint32_t& address, uint32_t& mask, uint8_t (&address6)[16], uint32_t& length6) {
    const Prefix given = prefix(words_.next());
    if (given.version() == SHM_FAMILY_IPV6) {
      rule_.ipVersion = SHM_FAMILY_IPV6;
      memcpy(address6, given.host.address6, sizeof address6);
      length6 = given.length6;
    } else {
      address = given.host.address;
      mask = given.mask;
    }
  }
  void proto() { rule_.proto = named(kProtocols, words_.next()); }
  void sport() { rule_.srcPort = rule_.srcPortEnd = signedWord(); }
  void sportEnd() { rule_.srcPortEnd = signedWord(); }
  void dport() { rule_.destPort = rule_.destPortEnd = signedWord(); }
  void dportEnd() { rule_.destPortEnd = signedWord(); }
  void priority() { rule_.priority = signedWord(); }
  void kbps() {
    const int64_t bits = int64_t{signedWord()} * kBitsPerKilobit;
    if (bits < 0 || bits > INT32_MAX) refuse(std::to_string(bits / kBitsPerKilobit), "no rate");
    rule_.bandwidth = static_cast<int32_t>(bits);
  }
  void bps() { rule_.bandwidth = signedWord(); }
  void target() { rule_.target = static_cast<int32_t>(named(kTargets, words_.next())); }
  void accel() { rule_.accel = named(kSwitches, words_.next()); }
  void status() { rule_.ruleAction = named(kRuleStatus, words_.next()); }

  Words& words_;
  FilterRule rule_ = {};
};

class Filling {
 public:
  explicit Filling(ShmData& store) : store_(store), config_(store.config) {}

  void line(const SettingLine& line) {
    struct Section {
      const char* name;
      void (Filling::*read)(Words&);
    };
    static constexpr Section kReaders[] = {{"items", &Filling::item},        {"interfaces", &Filling::interface},
                                           {"users", &Filling::user},        {"addresses6", &Filling::address6},
                                           {"addresses", &Filling::address}, {"routes", &Filling::route},
                                           {"routes6", &Filling::route6},    {"rules", &Filling::rule}};
    for (const Section& section : kReaders) {
      if (line.section != section.name) continue;
      Words words(line.text);
      (this->*section.read)(words);
      return words.finish();
    }
    refuse(line.section, "no section of settings");
  }

  // The default rule comes behind the others, and the lists of routes are threaded.
  void finish(const FilterRule& defaultRule) {
    append(store_.filterTable.rule, store_.filterTable.ruleCount, "rules") = defaultRule;
    thread(store_.routes.slot, routes_);
    thread(store_.routes6.slot, routes6_);
    if (routes6_ == 0) store_.routes6.head6 = 0;
    config_.adminUserCount =
        static_cast<int32_t>(std::count_if(config_.users, config_.users + config_.userCount,
                                           [](const UserAccount& account) { return account.superUser == SHM_ON; }));
  }

 private:
  void item(Words& words) {
    words.expect({"set"});
    const std::string& name = words.next();
    const SettingItem* item = findSettingItem(name);
    if (!item) refuse(name, "no setting");
    const std::string& value = words.next();
    switch (item->row->form) {
      case ItemForm::kText: return putText(*item, config_, value);
      case ItemForm::kAddress: return putWord(*item, config_, parseAddress(value));
      case ItemForm::kSwitch: return putWord(*item, config_, named(kSwitches, value));
      case ItemForm::kNumber: return putWord(*item, config_, number(value));
    }
  }

  void interface(Words& words) {
    if (words.take("interface")) return name(words);
    words.expect({"mode"});
    if (words.take("pbr")) {
      config_.pbrOperState = static_cast<uint8_t>(named(kSwitches, words.next()));
      return;
    }
    words.take("other");  // revisions of former days have the number alone
    static constexpr NamedNumber kModes[] = {{"single", SHM_ON}, {"double", SHM_OFF}, {"unset", 0}};
    config_.singleInterfaceMode = static_cast<uint8_t>(named(kModes, words.next()));
    if (words.end()) return;
    config_.lanVlanId = number(words.next());
    config_.wanVlanId = number(words.next());
  }

  void name(Words& words) {
    words.expect({"name"});
    const std::string port = words.next();
    struct Port {
      const char* name;
      char (ConfigRecord::*field)[16];
    };
    static constexpr Port kNames[] = {{"lan", &ConfigRecord::lanInterfaceName},
                                      {"wan", &ConfigRecord::wanInterfaceName},
                                      {"management", &ConfigRecord::managementInterfaceName},
                                      {"router", &ConfigRecord::bridgeRouterPhysicalName}};
    for (const Port& row : kNames) {
      if (port == row.name) return strncpyField(config_.*row.field, words.next());
    }
    refuse(port, "no interface with a name of its own");
  }
  template <size_t N>
  static void strncpyField(char (&field)[N], const std::string& value) {
    memset(field, 0, N);
    memcpy(field, value.data(), std::min(value.size(), N));
  }

  void user(Words& words) {
    words.expect({"user", "add"});
    UserAccount& account = append(config_.users, config_.userCount, "users");
    strncpyField(account.username, words.next());
    account.superUser = words.take("--admin") ? SHM_ON : SHM_OFF;
    if (words.take("--rights")) account.superUser = static_cast<int32_t>(number(words.next()));
  }

  void address6(Words& words) {
    words.expect({"address", "add"});
    const Prefix given = parsePrefix(words.next(), Family::kIpv6);
    words.expect({"--br0"});
    Ip6Address& entry = append(store_.ip6Address, store_.ip6Count, given.text);
    memcpy(entry.address, given.host.address6, sizeof entry.address);
    entry.prefixLength = given.length6;
  }

  void address(Words& words) {
    words.expect({"address", "add"});
    const Prefix given = prefix(words.next());
    ManagementAddress& entry = append(store_.managementAddress, store_.managementAddressCount, given.text);
    entry.ipVersion = given.version();
    entry.address = given.host.address;
    entry.mask = given.mask;
    memcpy(entry.address6, given.host.address6, sizeof entry.address6);
    entry.prefixLength6 = given.length6;
    entry.interfaceKind = SHM_IF_BRIDGE;
    if (words.take("--interface")) entry.interfaceKind = static_cast<int32_t>(named(kInterfaceKinds, words.next()));
    if (words.take("--family")) entry.ipVersion = number(words.next());
    words.take("--as-is");
  }

  // In the order of their lines, which is that of the list.
  void route(Words& words) {
    words.expect({"route", "add"});
    const Prefix given = parsePrefix(words.next(), Family::kIpv4);
    RouteEntry& entry = append(store_.routes.slot, routes_, given.text);
    entry = {given.host.address, given.mask, parseAddress(words.next()), status(words), 1, SHM_NO_SLOT};
  }

  void route6(Words& words) {
    words.expect({"route6", "add"});
    const Prefix given = parsePrefix(words.next(), Family::kIpv6);
    Route6Entry& entry = append(store_.routes6.slot, routes6_, given.text);
    entry = {};
    memcpy(entry.destination, given.host.address6, sizeof entry.destination);
    entry.prefixLength = given.length6;
    memcpy(entry.gateway, parseAddress(words.next(), Family::kIpv6).address6, sizeof entry.gateway);
    entry.status = status(words);
    entry.inUse = 1;
    entry.next = SHM_NO_SLOT;
  }

  static uint32_t status(Words& words) {
    return words.take("--disabled") ? uint32_t{SHM_ROUTE_DISABLED} : uint32_t{SHM_ROUTE_ACTIVE};
  }

  void rule(Words& words) {
    append(store_.filterTable.rule, store_.filterTable.ruleCount, "rules") = RuleReader(words).read();
  }

  template <typename Slot, size_t N>
  static void thread(Slot (&slots)[N], size_t count) {
    for (size_t i = 0; i + 1 < count; ++i) slots[i].next = static_cast<uint32_t>(i + 1);
  }

  ShmData& store_;
  ConfigRecord& config_;
  size_t routes_ = 0;
  size_t routes6_ = 0;
};

void clearConfig(ConfigRecord& config) {
  for (const SettingItem& item : settingItems()) {
    memset(reinterpret_cast<char*>(&config) + item.offset, 0, item.width);
  }
  config.singleInterfaceMode = config.pbrOperState = 0;
  config.lanVlanId = config.wanVlanId = 0;
  for (auto* field : {&config.lanInterfaceName, &config.wanInterfaceName, &config.managementInterfaceName,
                      &config.bridgeRouterPhysicalName}) {
    memset(*field, 0, sizeof *field);
  }
  config.userCount = config.adminUserCount = 0;
  memset(config.users, 0, sizeof config.users);
}

void clearTables(ShmData& store) {
  const Image empty = emptyImage();
  store.ip6Count = store.managementAddressCount = 0;
  memset(store.ip6Address, 0, sizeof store.ip6Address);
  memset(store.managementAddress, 0, sizeof store.managementAddress);
  store.routes = empty->routes;
  store.routes6 = empty->routes6;
  store.filterTable.ruleCount = 0;
}

FilterRule lastRule(const FilterTable& table) {
  const bool whole = table.ruleCount > 0 && table.ruleCount <= SHM_RULES;
  return table.rule[whole ? table.ruleCount - 1 : 0];
}

struct Opening {
  const char* words;
  const char* section;
};
constexpr Opening kOpenings[] = {{"set ", "items"},      {"mode ", "interfaces"},  {"interface name ", "interfaces"},
                                 {"user add ", "users"}, {"route add ", "routes"}, {"route6 add ", "routes6"},
                                 {"rule add ", "rules"}};

const char* sectionOf(const std::string& text) {
  if (text.starts_with("address add ")) return text.ends_with(" --br0") ? "addresses6" : "addresses";
  for (const Opening& opening : kOpenings) {
    if (text.starts_with(opening.words)) return opening.section;
  }
  refuse(text, "no line of a setting");
}

}  // namespace

Image imageFromLines(const std::vector<SettingLine>& lines, const ShmData& rest) {
  Image image(rest);
  const FilterRule defaultRule = lastRule(rest.filterTable);
  clearConfig(image->config);
  clearTables(*image);
  Filling filling(*image);
  for (const SettingLine& line : lines) filling.line(line);
  filling.finish(defaultRule);
  return image;
}

Image imageFromLines(const std::vector<SettingLine>& lines) { return imageFromLines(lines, *emptyImage()); }

// The key is what the line of the store that it makes has.
SettingLine settingLineOf(const std::string& text) {
  SettingLine line = {sectionOf(text), "", text};
  const std::vector<SettingLine> made = settingLines(*imageFromLines({line}));
  for (const SettingLine& one : made) {
    if (one.section == line.section && one.text == text) line.key = one.key;
  }
  return line;
}

}  // namespace ctl
