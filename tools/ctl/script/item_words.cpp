// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/script/item_words.h"

#include <vector>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/session.h"
#include "tools/ctl/values.h"

namespace ctl {
namespace {

std::string hint(const std::string& name) {
  std::vector<std::string_view> names;
  for (const ItemRow& row : itemRows()) names.push_back(row.name);
  const std::string near = tools::nearest(name, names);
  return near.empty() ? "kestrovectl show lists them" : "did you mean " + near + "?";
}

[[noreturn]] void refuse(const ItemRow& row, const std::string& value) {
  throw Refusal(kUsage, value + ": " + acceptedText(row));
}

[[noreturn]] void refuse(const ItemRow& row, Vocabulary words, const std::string& value) {
  std::string known;
  for (const NamedNumber& word : words) known += (known.empty() ? "" : ", ") + std::string(word.name);
  throw Refusal(kUsage, value + ": " + row.script + " takes " + known);
}

uint32_t scriptWordOf(const ItemRow& row, const std::string& value) {
  const NamedNumber* word = findName(row.scriptWords, value);
  if (!word) refuse(row, row.scriptWords, value);
  return static_cast<uint32_t>(word->number);
}

// A file has 1 for on and 0 for off.
uint32_t switchOf(const ItemRow& row, Tongue tongue, const std::string& value) {
  const NamedNumber* position = findName(kSwitches, value);
  if (position) return static_cast<uint32_t>(position->number);
  if (tongue == Tongue::kFile && value == "1") return SHM_ON;
  if (tongue == Tongue::kFile && value == "0") return SHM_OFF;
  refuse(row, value);
}

// A script has the numbers of a damaged store with their sign. The store refuses them.
std::optional<uint64_t> numberBelowZero(const std::string& value) {
  const std::optional<uint64_t> number = readDigits(value.substr(1));
  if (!number || *number > uint64_t{INT32_MAX} + 1) return {};
  return static_cast<uint32_t>(-static_cast<int64_t>(*number));
}

// A rate with a suffix is one in bits per second, whatever unit a number without one has.
uint32_t numberOf(const ItemRow& row, Tongue tongue, const std::string& value) {
  const uint32_t factor = tongue == Tongue::kScript ? row.scriptFactor : 1;
  const bool below = tongue == Tongue::kScript && value.starts_with("-");
  const bool rate = std::string_view(row.unit) == "bit/s";
  const std::optional<uint64_t> number = below  ? numberBelowZero(value)
                                         : rate ? readRate(value, factor)
                                                : readDigits(value);
  if (!number || *number > UINT32_MAX) refuse(row, value);
  return static_cast<uint32_t>(*number);
}

std::string wordText(const ItemRow& row, uint32_t word) {
  if (row.form == ItemForm::kAddress) return addressText(word);
  return row.form == ItemForm::kSwitch ? switchText(word) : std::to_string(word);
}

// On the product that has constant rates the second word of a number is the one.
std::string scriptText(const ItemRow& row, uint32_t word, uint32_t product) {
  std::string text;
  for (const NamedNumber& one : row.scriptWords) {
    if (static_cast<uint32_t>(one.number) != word) continue;
    if (text.empty() || product == SHM_PRODUCT_DRELM) text = one.name;
  }
  if (!row.scriptWords.empty()) return text;
  if (word % row.scriptFactor != 0) return {};
  return row.scriptFactor == 1 ? wordText(row, word) : std::to_string(word / row.scriptFactor);
}

std::string fileText(const ItemRow& row, uint32_t word) {
  if (row.form != ItemForm::kSwitch) return wordText(row, word);
  return word == SHM_ON ? "1" : word == SHM_OFF ? "0" : "";
}

std::string phrase(const std::string& name, const std::string& value) {
  return name.empty() || value.empty() ? "" : name + " " + value;
}

}  // namespace

NamedItem itemNamed(const std::string& name) {
  if (const ItemRow* row = findItemRow(name)) return {row, Tongue::kItem};
  if (const ItemRow* row = findKeywordRow(name)) return {row, Tongue::kFile};
  throw Refusal(kUsage, name + ": no such item (" + hint(name) + ")");
}

std::string acceptedText(const ItemRow& row) {
  const std::string range = shm ? rangeText(row) : std::string(row.range);
  return std::string(row.name) + " takes " + range + (*row.unit ? std::string(" ") + row.unit : "");
}

uint32_t itemWordOf(const ItemRow& row, Tongue tongue, const std::string& value) {
  if (tongue == Tongue::kScript && !row.scriptWords.empty()) return scriptWordOf(row, value);
  if (row.form == ItemForm::kSwitch) return switchOf(row, tongue, value);
  if (row.form != ItemForm::kAddress) return numberOf(row, tongue, value);
  return std::string_view(row.name).ends_with("Mask") ? parseMask(value) : parseAddress(value);
}

std::string itemPhrase(const ItemRow& row, Tongue tongue, uint32_t word, uint32_t product) {
  switch (tongue) {
    case Tongue::kItem: return phrase(row.name, wordText(row, word));
    case Tongue::kScript: return phrase(row.script, scriptText(row, word, product));
    case Tongue::kFile: return phrase(row.keyword, fileText(row, word));
  }
  return {};
}

}  // namespace ctl
