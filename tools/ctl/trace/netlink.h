// SPDX-License-Identifier: Apache-2.0
// Routing netlink messages in words.
#pragma once

#include <optional>
#include <span>
#include <string>

namespace ctl {

// "RTM_NEWADDR flags REQUEST|ACK seq 1 AF_INET prefix 24 ... bytes 58000000...". Empty for a message that only looks.
std::string netlinkText(std::span<const unsigned char> message);

// The answer in a reply: 0 or a negative error. Nothing when it has none.
std::optional<int> netlinkAnswer(std::span<const unsigned char> reply);

}  // namespace ctl
