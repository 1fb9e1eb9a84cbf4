// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/keys.h"

#include <algorithm>

#include "tools/common/plain_text.h"
#include "tools/ctl/session.h"
#include "tools/ctl/settings/quoting.h"
#include "tools/ctl/shell/abbreviations.h"
#include "tools/ctl/shell/candidates.h"
#include "tools/ctl/shell/child.h"
#include "tools/ctl/shell/filters.h"
#include "tools/ctl/shell/screen.h"

namespace ctl {
namespace {

using Candidates = std::vector<Candidate>;

// The store is looked at in another process: this one stays free of it.
Candidates found(const std::function<Candidates()>& search) {
  const Json rows = Json::parse(textFromChild([&search] {
                                  Json list = Json::array();
                                  for (const Candidate& one : search()) list.push_back({one.word, one.help});
                                  return jsonText(list, -1);
                                }),
                                nullptr, false);
  Candidates all;
  if (rows.is_discarded()) return all;
  for (const Json& row : rows) all.push_back({row[0].get<std::string>(), row[1].get<std::string>()});
  return all;
}

// Of all words; empty when there are none.
std::string commonStart(const Candidates& all) {
  std::string start = all.empty() ? "" : all.front().word;
  for (const Candidate& one : all) {
    const auto [mine, other] = std::ranges::mismatch(start, one.word);
    start.erase(mine, start.end());
  }
  return start;
}

std::string columnsOf(const Candidates& all, const ScreenSize& size) {
  size_t widest = 0;
  for (const Candidate& one : all) widest = std::max(widest, one.word.size() + 2);
  const size_t across = std::max<size_t>(1, size.columns / widest);
  const size_t shown = std::min(all.size(), across * std::max<size_t>(1, size.rows > 3 ? size.rows - 3 : 1));
  std::string text;
  for (size_t i = 0; i < shown; ++i) {
    const std::string word = tools::escaped(all[i].word);
    const bool last = (i + 1) % across == 0 || i + 1 == shown;
    text += word + (last ? "\n" : std::string(widest - std::min(widest, word.size()), ' '));
  }
  return shown == all.size() ? text : text + "and " + std::to_string(all.size() - shown) + " more\n";
}

// A folder is not the end of a word.
KeyAnswer inserting(const std::string& line, const TypedWord& typed, const std::string& word, bool whole) {
  const bool ends = whole && !word.ends_with("/");
  KeyAnswer answer;
  const std::string written = quoted(word);
  if (written == word && !typed.open) {
    answer.insert = word.substr(typed.text.size());
  } else {
    answer.erase = line.size() - typed.begin;
    answer.insert = written;
    if (!ends && written.ends_with("\"")) answer.insert.pop_back();
  }
  if (ends) answer.insert += " ";
  return answer;
}

}  // namespace

KeyAnswer completed(const std::string& line, FILE* terminal, bool files) {
  const TypedLine typedLine(line);
  const TypedWord typed = typedLine.typed();
  const Candidates all = found([&] {
    if (typedLine.inFilter()) return typedLine.before().empty() ? filterCandidates(typed.text) : Candidates{};
    return candidates(spelledOut(grammar(), typedLine.before()), typed.text, files);
  });
  if (all.empty()) return {};
  const std::string start = commonStart(all);
  if (all.size() == 1 || start.size() > typed.text.size()) return inserting(line, typed, start, all.size() == 1);
  return {.shown = columnsOf(all, screenSize(terminal))};
}

std::string whatFollows(const std::string& line, FILE* terminal) {
  const TypedLine typedLine(line);
  const std::string typed = typedLine.typed().text;
  Candidates all;
  if (typedLine.inFilter()) {
    all = filterCandidates(typed);
  } else {
    all = explained(spelledOut(grammar(), typedLine.before()), typed);
  }
  size_t widest = 0;
  for (const Candidate& one : all) widest = std::max(widest, one.word.size());
  const size_t columns = screenSize(terminal).columns;
  std::string text;
  for (const Candidate& one : all) {
    std::string row = "  " + one.word + std::string(widest - one.word.size() + 2, ' ') + one.help;
    if (row.size() >= columns && columns > 4) row = row.substr(0, columns - 3) + "..";
    text += row + "\n";
  }
  return text.empty() ? "  nothing more\n" : text;
}

}  // namespace ctl
