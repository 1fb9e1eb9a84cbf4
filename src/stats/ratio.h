// SPDX-License-Identifier: Apache-2.0
// Compression ratios in percent.
#pragma once

#include <stdint.h>

namespace kestrove {

constexpr uint32_t kRatioAfterReset = 100;

// The compressed part of a whole; the given value when there is nothing.
inline uint32_t ratioOr(uint32_t whenNothing, uint64_t part, uint64_t whole) {
  return whole == 0 ? whenNothing : static_cast<uint32_t>(part * 100 / whole);
}

}  // namespace kestrove
