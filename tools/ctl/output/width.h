// SPDX-License-Identifier: Apache-2.0
// How many columns of a terminal a text takes. Texts are UTF-8 without control characters, as tools::escaped leaves
// them.
#pragma once

#include <string>
#include <string_view>

namespace ctl {

// A character of East Asia takes two columns, one that goes onto the character before it none.
size_t displayWidth(std::string_view text);

// What fits into that many columns, with the mark at its end where something was left away.
std::string shortened(std::string_view text, size_t columns, std::string_view mark);

// With blanks behind it up to that many columns.
std::string padded(std::string_view text, size_t columns);

}  // namespace ctl
