// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/vocabulary.h"

namespace ctl {

const NamedNumber* findName(Vocabulary words, const std::string& name) {
  for (const NamedNumber& word : words) {
    if (name == word.name) return &word;
  }
  return nullptr;
}

std::string nameOf(Vocabulary words, uint32_t number) {
  for (const NamedNumber& word : words) {
    if (static_cast<uint32_t>(word.number) == number) return word.name;
  }
  return std::to_string(number);
}

const char* switchText(uint32_t value) {
  if (value == 0) return "unset";
  for (const NamedNumber& word : kSwitches) {
    if (static_cast<uint32_t>(word.number) == value) return word.name;
  }
  return "invalid";
}

}  // namespace ctl
