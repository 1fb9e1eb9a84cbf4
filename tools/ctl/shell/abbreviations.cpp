// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/abbreviations.h"

#include "tools/ctl/item_names.h"
#include "tools/ctl/place.h"

namespace ctl {
namespace {

Refusal ambiguous(const std::string& word, const Words& meant) {
  std::string list;
  for (const std::string& one : meant) list += (list.empty() ? "" : ", ") + one;
  return {kUsage, word + ": may be " + list};
}

// A word that the row takes as it stands is no abbreviation of a command below it.
bool isValue(const Place& place, const std::string& word) {
  return place.next && place.next->type.completion == Completion::kItems && findItemRow(word);
}

std::string spelledOut(const Place& place, const std::string& word) {
  Words meant;
  for (const Command* row : place.below) {
    if (row->words.back() == word) return word;
    const bool known = !meant.empty() && meant.back() == row->words.back();
    if (!known && row->words.back().starts_with(word)) meant.push_back(row->words.back());
  }
  if (word.empty() || meant.empty() || isValue(place, word)) return word;
  if (meant.size() > 1) throw ambiguous(word, meant);
  return meant.front();
}

}  // namespace

Words spelledOut(const std::vector<Command>& rows, const Words& words) {
  Words whole;
  for (const std::string& word : words) whole.push_back(spelledOut(placeBehind(rows, whole), word));
  return whole;
}

}  // namespace ctl
