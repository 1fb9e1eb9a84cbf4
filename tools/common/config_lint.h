// SPDX-License-Identifier: Apache-2.0
// What a configuration file says, before the store reads it: the keywords that it knows, the rows of each table, and
// the lines that the reader would refuse or cut.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tools {

enum class ConfigForm { kNumber, kSwitch, kText, kAddress, kRow };

struct ConfigKeyword {
  std::string_view name;
  ConfigForm form;
  uint16_t limit;       // longest text; 0 for other forms
  const char* columns;  // of a row: a address, m netmask, 6 IPv6 address, n number, s status, w word, u user name
  bool saved = true;    // a save of the store writes its lines
};

// Every keyword that the reader knows, in the order of its own table.
std::span<const ConfigKeyword> configKeywords();
// Null for a word that is none.
const ConfigKeyword* findConfigKeyword(std::string_view name);

struct ConfigFault {
  int line;
  std::string text;
};

struct ConfigReport {
  int error = 0;  // of a file that cannot be read: errno
  int known = 0;  // lines with a known keyword
  std::vector<ConfigFault> faults;
};

ConfigReport inspectConfig(const std::string& path);

// "line 3: LAN_ADDR: no address: 10.1.2", for up to three faults, and how many more there are.
std::string faultText(const ConfigReport& report);

}  // namespace tools
