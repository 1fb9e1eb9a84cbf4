// SPDX-License-Identifier: Apache-2.0
// The words of the platform that no configuration keyword carries.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace init {

struct Platform {
  std::optional<uint32_t> hardwarePlatform;
  std::optional<uint32_t> ipv6Support;  // a switch: 1 on, 2 off
  std::optional<uint32_t> wanOptSupport;
  std::optional<int32_t> accumulationInterval;  // seconds
};

// Reads lines "NAME VALUE" (# begins a comment). Returns what is wrong with the file, with its line; empty when
// nothing.
std::string readPlatform(const std::string& path, Platform& out);

// Stores what is given into the attached, locked store.
void storePlatform(const Platform& platform);

}  // namespace init
