// SPDX-License-Identifier: Apache-2.0
// What a line of the configuration file can hold of a text. The store keeps texts whole, and what stands in one must
// not become a line or a column of its own.
#pragma once

#include <string_view>

namespace kestrove {

// The value of a keyword: up to the first line feed.
inline std::string_view lineText(std::string_view text) { return text.substr(0, text.find('\n')); }

// A column of a row: up to the first separator.
inline std::string_view columnText(std::string_view text) { return text.substr(0, text.find_first_of(" \t\n")); }

}  // namespace kestrove
