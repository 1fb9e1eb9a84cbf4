// SPDX-License-Identifier: Apache-2.0
// Texts and what a terminal or a file of lines makes of them: control characters are refused where they come in and
// escaped where they go out.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tools {

// Whether a text holds a control character: of ASCII, or of the second set that UTF-8 writes as two bytes.
bool hasControlCharacter(std::string_view text);

// Control characters, and bytes that are no UTF-8, as "\x0a"; the rest as it is.
std::string escaped(std::string_view text);

// The first word of a command line that holds a control character, with its number: a sentence, or empty.
std::string refusedWord(const std::vector<std::string>& words);
std::string refusedWord(int argc, char** argv);

// Of a few names the one that was probably meant, for a hint behind an error; empty when none is near.
template <typename Names>
std::string nearest(std::string_view text, const Names& names);

// How many characters are missing, too many, wrong or swapped; capitals count as small letters.
unsigned distance(std::string_view one, std::string_view other);

template <typename Names>
std::string nearest(std::string_view text, const Names& names) {
  unsigned least = text.size() <= 3 ? 2 : static_cast<unsigned>(text.size() / 3 + 2);  // one more than is near
  std::string found;
  for (const auto& name : names) {
    std::string_view candidate = name;
    const bool begins = text.size() >= 3 && candidate.starts_with(text);
    const unsigned away = begins ? 0 : distance(text, candidate);
    if (away >= least) continue;
    least = away;
    found = candidate;
  }
  return found;
}

}  // namespace tools
