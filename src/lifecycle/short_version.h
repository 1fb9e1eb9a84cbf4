// SPDX-License-Identifier: Apache-2.0
// Short forms of version texts.
#pragma once

#include <string_view>

namespace kestrove {

// The part of a full version that its short form shows: the fields before the third dot, without the third field when
// that is "0". Empty when the full version has fewer than three dots.
std::string_view shortVersion(std::string_view full);

}  // namespace kestrove
