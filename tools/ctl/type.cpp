// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/type.h"

namespace ctl {
namespace {

std::string wordsText(Vocabulary words) {
  std::string text;
  for (const NamedNumber& word : words) text += (text.empty() ? "" : "|") + std::string(word.name);
  return text;
}

}  // namespace

std::string typeText(const Type& type) {
  std::string text = type.shown;
  if (type.form == Form::kWord) text = wordsText(type.words);
  if (type.form != Form::kName && type.limited()) text = std::to_string(type.least) + ".." + std::to_string(type.most);
  return *type.unit ? text + " " + type.unit : text;
}

}  // namespace ctl
