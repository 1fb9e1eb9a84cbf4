// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/candidates.h"

#include "tools/ctl/shell/known_values.h"

namespace ctl {
namespace {

class Gathering {
 public:
  explicit Gathering(const std::string& begun) : begun_(begun) {}

  void add(const std::string& word, const std::string& help) {
    if (!word.starts_with(begun_)) return;
    if (found_.empty() || found_.back().word != word) found_.push_back({word, help});
  }
  void addBelow(const Place& place) {
    for (const Command* row : place.below) add(row->words.back(), row->help);
  }
  void addOptions(const Place& place) {
    for (const Value* option : place.options) add(option->name, option->help);
  }
  std::vector<Candidate> take() { return std::move(found_); }

 private:
  const std::string& begun_;
  std::vector<Candidate> found_;
};

std::string helpOf(const Value& value) {
  const std::string type = typeText(value.type);
  return std::string(value.help) + (type.empty() ? "" : " (" + type + ")");
}

}  // namespace

bool takesFile(const Words& before) {
  const Place place = placeBehind(grammar(), before);
  return place.next && place.next->type.completion == Completion::kFiles;
}

std::vector<Candidate> candidates(const Words& before, const std::string& begun, bool files) {
  const Place place = placeBehind(grammar(), before);
  Gathering gathering(begun);
  gathering.addBelow(place);
  if (place.next && (files || place.next->type.completion != Completion::kFiles)) {
    const ValuePlace at = {
        .type = place.next->type, .before = before, .begun = begun, .settable = place.row && place.row->changes};
    for (const std::string& word : knownValues(at)) gathering.add(word, place.next->help);
  }
  if (place.next && place.next->type.completion == Completion::kCommands) {
    gathering.addBelow(placeBehind(grammar(), {}));
  }
  // Options are many: they come when they are asked for, or when nothing else may.
  const bool nothingElse = !place.next && place.below.empty();
  if (begun.starts_with("-") || nothingElse) gathering.addOptions(place);
  return gathering.take();
}

std::vector<Candidate> explained(const Words& before, const std::string& begun) {
  const Place place = placeBehind(grammar(), before);
  Gathering gathering(begun);
  gathering.addBelow(place);
  std::vector<Candidate> found = gathering.take();
  if (place.next && !begun.starts_with("-")) found.push_back({place.next->name, helpOf(*place.next)});
  for (const Value* option : place.options) {
    if (option->name.starts_with(begun)) found.push_back({option->name, helpOf(*option)});
  }
  return found;
}

}  // namespace ctl
