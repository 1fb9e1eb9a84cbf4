// SPDX-License-Identifier: Apache-2.0
#include "tools/init/platform.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "kestrove/segment.h"

namespace init {
namespace {

constexpr uint32_t kLargestPlatform = 15;
constexpr uint32_t kLargestInterval = 86400;

bool number(const std::string& text, uint32_t least, uint32_t most, uint32_t& out) {
  if (text.empty() || text.size() > 6 || text.find_first_not_of("0123456789") != std::string::npos) return false;
  out = static_cast<uint32_t>(std::stoul(text));
  return out >= least && out <= most;
}

bool onOff(const std::string& text, uint32_t& out) {
  if (text != "on" && text != "off") return false;
  out = text == "on" ? SHM_ON : SHM_OFF;
  return true;
}

bool take(const std::string& name, const std::string& value, Platform& out) {
  uint32_t word = 0;
  if (name == "hardwarePlatform" && number(value, 0, kLargestPlatform, word)) {
    out.hardwarePlatform = word;
  } else if (name == "ipv6Support" && onOff(value, word)) {
    out.ipv6Support = word;
  } else if (name == "wanOptSupport" && onOff(value, word)) {
    out.wanOptSupport = word;
  } else if (name == "accumulationInterval" && number(value, 1, kLargestInterval, word)) {
    out.accumulationInterval = static_cast<int32_t>(word);
  } else {
    return false;
  }
  return true;
}

}  // namespace

std::string readPlatform(const std::string& path, Platform& out) {
  std::ifstream file(path);
  if (!file) return path + ": " + strerror(errno);
  int lineNumber = 0;
  for (std::string line; std::getline(file, line);) {
    ++lineNumber;
    std::istringstream words(line.substr(0, line.find('#')));
    std::string name;
    std::string value;
    std::string more;
    if (!(words >> name)) continue;
    words >> value;
    if ((words >> more) || !take(name, value, out)) {
      return path + ": line " + std::to_string(lineNumber) + ": not understood: " + line;
    }
  }
  return {};
}

void storePlatform(const Platform& platform) {
  ConfigRecord& config = shm->config;
  if (platform.hardwarePlatform) config.hardwarePlatform = *platform.hardwarePlatform;
  if (platform.ipv6Support) config.ipv6Support = *platform.ipv6Support;
  if (platform.wanOptSupport) config.wanOptSupport = static_cast<uint8_t>(*platform.wanOptSupport);
  if (platform.accumulationInterval) shm->statistics.accumulationInterval = *platform.accumulationInterval;
}

}  // namespace init
