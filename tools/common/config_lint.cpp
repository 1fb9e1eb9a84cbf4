// SPDX-License-Identifier: Apache-2.0
#include "tools/common/config_lint.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "kestrove/segment.h"
#include "kestrove/text.h"
#include "tools/common/plain_text.h"

namespace tools {
namespace {

constexpr size_t kLongestLine = 510;
constexpr size_t kShown = 3;
constexpr char kBlanks[] = " \t";

constexpr auto kNumber = ConfigForm::kNumber;
constexpr auto kSwitch = ConfigForm::kSwitch;
constexpr auto kText = ConfigForm::kText;
constexpr auto kAddress = ConfigForm::kAddress;
constexpr auto kRow = ConfigForm::kRow;
constexpr bool kNeverSaved = false;

constexpr ConfigKeyword kKeywords[] = {
    {"LAN_NAME", kText, 14, ""},
    {"LAN_RATE", kNumber, 0, ""},
    {"LAN_ADDR", kAddress, 0, ""},
    {"LAN_MASK", kAddress, 0, ""},
    {"LAN_GATEWAY", kAddress, 0, ""},
    {"LAN_LINK_SETTING", kNumber, 0, ""},
    {"MANAGEMENT_LINK_SETTING", kNumber, 0, ""},
    {"LAN_MTU", kNumber, 0, ""},
    {"LAN_VLAN_ID", kNumber, 0, ""},
    {"INTERNET_NAME", kText, 14, ""},
    {"INTERNET_RATE", kNumber, 0, ""},
    {"INTERNET_CONGESTION", kNumber, 0, ""},
    {"INTERNET_MTU", kNumber, 0, ""},
    {"WAN_VLAN_ID", kNumber, 0, ""},
    {"INTERNET_ADDR", kAddress, 0, ""},
    {"INTERNET_MASK", kAddress, 0, ""},
    {"INTERNET_GATEWAY", kAddress, 0, ""},
    {"INTERNET_LINK_SETTING", kNumber, 0, ""},
    {"BRIDGE_MASK", kAddress, 0, ""},
    {"FTW_CONFIG", kNumber, 0, ""},
    {"COMPRESSION", kSwitch, 0, ""},
    {"EVENT_LOGGING", kSwitch, 0, ""},
    {"CONFIG_BY_SNMP", kSwitch, 0, ""},
    {"CONFIG_BY_WEB", kSwitch, 0, ""},
    {"CONFIG_BY_SERIAL", kSwitch, 0, ""},
    {"KESTROVE_OP_STATE", kSwitch, 0, ""},
    {"SNMP_VERSION", kNumber, 0, ""},
    {"SSHD", kSwitch, 0, ""},
    {"BANNER", kSwitch, 0, ""},
    {"SINGLE_INTERFACE", kSwitch, 0, ""},
    {"PBR", kSwitch, 0, ""},
    {"SYS_NAME", kText, 256, ""},
    {"SYS_LOCATION", kText, 256, ""},
    {"SYS_CONTACT", kText, 256, ""},
    {"USER_ACCOUNT", kRow, 0, "unnn"},
    {"MANAGEMENT_ADDR_6", kRow, 0, "6n"},
    {"MANAGEMENT_ADDR", kRow, 0, "naan"},
    {"REBOOT_COUNT", kNumber, 0, ""},
    {"ROUTE", kRow, 0, "amas"},
    {"ROUTE6", kRow, 0, "6n6s"},
    {"SELEC_ACCEL", kRow, 0, "amamnnnnnnwnns"},
    {"SELEC_ACCEL_V6", kRow, 0, "6n6nnnnnnnwnns"},
    {"SELEC_ACCEL_ANY", kRow, 0, "nnnnnnwnns"},
    {"PHYSICAL_LAN_NAME", kText, 14, "", kNeverSaved},
    {"REAL_LAN_NAME", kText, 14, "", kNeverSaved},
    {"LAN_BUF", kNumber, 0, "", kNeverSaved},
    {"LAN_RBUF", kNumber, 0, "", kNeverSaved},
    {"LAN_CONGESTION", kNumber, 0, "", kNeverSaved},
    {"LAN_CC", kRow, 0, "", kNeverSaved},
    {"CIFS", kSwitch, 0, "", kNeverSaved},
    {"WEB_CACHE", kSwitch, 0, "", kNeverSaved},
    {"DNS_ADDR", kAddress, 0, "", kNeverSaved},
    {"DDUP", kRow, 0, "", kNeverSaved},
    {"DDUP_OPTIONS", kText, 256, "", kNeverSaved},
    {"PHYSICAL_WAN_NAME", kText, 14, "", kNeverSaved},
    {"INTERNET_BUF", kNumber, 0, "", kNeverSaved},
    {"INTERNET_RBUF", kNumber, 0, "", kNeverSaved},
    {"INTERNET_DELAY", kNumber, 0, "", kNeverSaved},
    {"BRIDGING", kSwitch, 0, "", kNeverSaved},
    {"ADMIN_USERNAME", kText, 30, "", kNeverSaved},
    {"ADMIN_PASSWORD", kText, 30, "", kNeverSaved},
    {"KESTROVE_VERSION", kText, 63, "", kNeverSaved},
    {"DRELM_VERSION", kText, 63, "", kNeverSaved},
    {"SYS_DESCRIPTION", kText, 256, "", kNeverSaved},
    {"PRODUCT_ID", kRow, 0, "n", kNeverSaved},
    {"GLOBAL_CONGESTION_CONTROL", kNumber, 0, "", kNeverSaved},
    {"BRIDGE_ADDR", kAddress, 0, "", kNeverSaved},
    {"MANAGEMENT_NAME", kText, 14, "", kNeverSaved},
    {"KESTROVE_CONFIG", kText, 127, "", kNeverSaved},
};

// Keywords whose rows share a table, and how many it takes.
struct Capacity {
  std::string_view begin;
  size_t rows;
};
constexpr Capacity kCapacities[] = {{"MANAGEMENT_ADDR_6", SHM_IP6_ADDRESSES},
                                    {"MANAGEMENT_ADDR", SHM_MANAGEMENT_ADDRESSES},
                                    {"ROUTE6", SHM_ROUTES6},
                                    {"ROUTE", SHM_ROUTES},
                                    {"SELEC_ACCEL", SHM_RULES - 1},
                                    {"USER_ACCOUNT", SHM_USERS}};

const ConfigKeyword* find(std::string_view name) {
  for (const ConfigKeyword& keyword : kKeywords) {
    if (keyword.name == name) return &keyword;
  }
  return nullptr;
}

bool digits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string numberFault(std::string_view text) {
  std::string_view magnitude = text;
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) magnitude.remove_prefix(1);
  if (!digits(magnitude)) return "no number";
  const size_t leading = std::min(magnitude.find_first_not_of('0'), magnitude.size());
  magnitude.remove_prefix(leading);
  const std::string_view most = negative ? "2147483648" : "2147483647";
  const bool fits = magnitude.size() < most.size() || (magnitude.size() == most.size() && magnitude <= most);
  return fits ? "" : "too large a number";
}

// 2 is what the writer has for a switch that was never 0 or 1.
std::string switchFault(std::string_view text) {
  return text == "0" || text == "1" || text == "2" ? "" : "no switch (0 or 1)";
}

// The library's parsers write to the text and set codes: a copy, and the codes are nobody's.
bool parseAddress(const std::string& text, uint32_t& address) {
  std::string copy = text;
  return parseIpv4Address(copy.data(), &address) == 0;
}

std::string addressFault(const std::string& text) {
  uint32_t address = 0;
  return parseAddress(text, address) ? "" : "no address";
}

std::string maskFault(const std::string& text) {
  uint32_t mask = 0;
  return parseAddress(text, mask) && validateNetmask(&mask) == 0 ? "" : "no netmask";
}

std::string address6Fault(const std::string& text) {
  uint8_t address[16];
  return parseIpv6Address(text.c_str(), address) == 0 ? "" : "no IPv6 address";
}

std::string nameFault(std::string_view text) {
  const bool plain = std::all_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x80 && isalnum(c); });
  return plain && text.size() >= 5 && text.size() <= 31 ? "" : "no user name (5 to 31 letters and digits)";
}

std::string columnFault(char kind, const std::string& text) {
  switch (kind) {
    case 'a': return addressFault(text);
    case 'm': return maskFault(text);
    case '6': return address6Fault(text);
    case 'n': return numberFault(text);
    case 's': return text == "1" || text == "2" || text == "3" ? "" : "no status (1 to 3)";
    case 'u': return nameFault(text);
    default: return "";
  }
}

std::vector<std::string> wordsOf(const std::string& value) {
  std::vector<std::string> words;
  for (size_t end = 0, start; (start = value.find_first_not_of(kBlanks, end)) != std::string::npos;) {
    end = std::min(value.find_first_of(kBlanks, start), value.size());
    words.push_back(value.substr(start, end - start));
  }
  return words;
}

// What stands behind a complete row is ignored. The first column of a management address says what follows.
std::string rowFault(const ConfigKeyword& keyword, const std::string& value) {
  const std::vector<std::string> words = wordsOf(value);
  std::string columns = keyword.columns;
  if (keyword.name == "MANAGEMENT_ADDR" && !words.empty() && words[0] == "6") columns = "n6nn";
  if (words.size() < columns.size()) return "a column is missing";
  for (size_t i = 0; i < columns.size(); ++i) {
    const std::string fault = columnFault(columns[i], words[i]);
    if (!fault.empty()) return fault + ": " + words[i];
  }
  return {};
}

std::string valueFault(const ConfigKeyword& keyword, const std::string& value) {
  auto named = [&](const std::string& fault) { return fault.empty() ? fault : fault + ": " + value; };
  switch (keyword.form) {
    case ConfigForm::kNumber: return named(numberFault(value));
    case ConfigForm::kSwitch: return named(switchFault(value));
    case ConfigForm::kText:
      return value.size() > keyword.limit ? "cut to " + std::to_string(keyword.limit) + " characters" : "";
    case ConfigForm::kAddress: return keyword.name == "DNS_ADDR" && value.empty() ? "" : named(addressFault(value));
    case ConfigForm::kRow: return rowFault(keyword, value);
  }
  return {};
}

class Inspector {
 public:
  ConfigReport run(std::istream& file) {
    for (std::string line; std::getline(file, line);) look(line);
    return std::move(report_);
  }

 private:
  void look(std::string line) {
    ++number_;
    const bool cut = line.size() > kLongestLine || line.find('\0') != std::string::npos;
    line.resize(std::min({line.size(), kLongestLine, line.find('\0')}));
    const size_t start = line.find_first_not_of(kBlanks);
    if (start == std::string::npos || line[start] == '#') return note(cut ? "cut" : "");
    const size_t end = std::min(line.find_first_of(kBlanks, start), line.size());
    const std::string name = line.substr(start, end - start);
    const ConfigKeyword* keyword = find(name);
    if (!keyword) return note("unknown keyword " + name);
    ++report_.known;
    const std::string fault =
        cut ? "cut to " + std::to_string(kLongestLine) + " characters" : judge(*keyword, line, end);
    note(fault.empty() ? fault : name + ": " + fault);
  }

  std::string judge(const ConfigKeyword& keyword, const std::string& line, size_t end) {
    size_t first = std::min(line.find_first_not_of(kBlanks, end), line.size());
    std::string value = line.substr(first);
    if (keyword.form == ConfigForm::kText) {
      if (!value.empty() && strchr(kBlanks, value.back())) value.pop_back();
    } else {
      value.resize(value.find_last_not_of(kBlanks) + 1);
    }
    const std::string fault = valueFault(keyword, value);
    return fault.empty() ? overflow(keyword) : fault;
  }

  std::string overflow(const ConfigKeyword& keyword) {
    for (const Capacity& capacity : kCapacities) {
      if (!keyword.name.starts_with(capacity.begin)) continue;
      const bool full = ++rows_[capacity.begin] > capacity.rows;
      return full ? "its table takes " + std::to_string(capacity.rows) + " rows" : "";
    }
    return {};
  }

  void note(const std::string& fault) {
    if (!fault.empty()) report_.faults.push_back({number_, escaped(fault.substr(0, 120))});
  }

  int number_ = 0;
  std::map<std::string_view, size_t> rows_;
  ConfigReport report_;
};

}  // namespace

std::span<const ConfigKeyword> configKeywords() { return kKeywords; }

const ConfigKeyword* findConfigKeyword(std::string_view name) { return find(name); }

ConfigReport inspectConfig(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  ConfigReport report;
  if (!file) {
    report.error = errno != 0 ? errno : EIO;
    return report;
  }
  const uint32_t code = shm_errno;
  report = Inspector().run(file);
  if (file.bad()) report.error = errno != 0 ? errno : EIO;
  shm_errno = code;
  return report;
}

std::string faultText(const ConfigReport& report) {
  std::string text;
  for (size_t i = 0; i < report.faults.size() && i < kShown; ++i) {
    text += (i == 0 ? "" : "; ") + ("line " + std::to_string(report.faults[i].line)) + ": " + report.faults[i].text;
  }
  if (report.faults.size() > kShown) text += "; and " + std::to_string(report.faults.size() - kShown) + " more";
  return text;
}

}  // namespace tools
