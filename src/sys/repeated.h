// SPDX-License-Identifier: Apache-2.0
// System calls that a signal interrupted.
#pragma once

#include <errno.h>

namespace kestrove::sys {

// Makes the call again while it was interrupted, but not for ever.
template <typename Call>
auto repeated(Call call) {
  constexpr int kPatience = 100;
  auto result = call();
  for (int i = 0; result == -1 && errno == EINTR && i < kPatience; ++i) result = call();
  return result;
}

}  // namespace kestrove::sys
