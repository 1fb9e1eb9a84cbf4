// SPDX-License-Identifier: Apache-2.0
// Times as they are typed and shown: UTC, as everywhere in the store.
#pragma once

#include <cstdint>
#include <string>

namespace ctl {

struct Moment {
  int64_t seconds = 0;     // since the epoch
  int32_t fields[6] = {};  // seconds, minutes, hours, day, month from 1, full year
};

// "2026-11-22" with "04:45" or "04:45:25", or both in one word with a T or a blank between and perhaps a Z behind.
// Throws kUsage for what is no time, or is none that the store's fields can hold (1970 to 2037).
Moment parseMoment(const std::string& date, const std::string& time);

// "2026-11-22T04:45:25Z".
std::string momentText(int64_t seconds);

}  // namespace ctl
