// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/preview/unified.h"

#include <algorithm>
#include <vector>

#include "tools/ctl/settings/sequence.h"

namespace ctl::preview {
namespace {

constexpr size_t kAround = 3;
constexpr char kNoNewline[] = "\\ No newline at end of file\n";

using Lines = std::vector<std::string_view>;

// Each with its line feed, so that a last line without one differs from the same with one.
Lines linesOf(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return lines;
}

std::string marked(char mark, std::string_view line) {
  std::string text = mark + std::string(line);
  return line.ends_with('\n') ? text : text + "\n" + kNoNewline;
}

// Changes that share the lines around them.
class Hunk {
 public:
  Hunk(const Lines& before, const Lines& after, const Gap& first)
      : before_(before),
        after_(after),
        lead_(std::min(kAround, first.before)),
        from_(first.before - lead_),
        to_(first.after - lead_),
        at_(from_) {}

  bool reaches(const Gap& gap) const { return gap.before <= at_ + 2 * kAround; }

  void add(const Gap& gap) {
    same(gap.before);
    for (size_t i = 0; i < gap.removed; ++i) text_ += marked('-', before_[gap.before + i]);
    for (size_t i = 0; i < gap.added; ++i) text_ += marked('+', after_[gap.after + i]);
    at_ += gap.removed;
    removed_ += gap.removed;
    added_ += gap.added;
  }

  std::string text() {
    same(std::min(at_ + kAround, before_.size()));
    return "@@ -" + range(from_, same_ + removed_) + " +" + range(to_, same_ + added_) + " @@\n" + text_;
  }

 private:
  void same(size_t end) {
    for (; at_ < end; ++at_, ++same_) text_ += marked(' ', before_[at_]);
  }
  static std::string range(size_t first, size_t count) {
    const std::string start = std::to_string(count == 0 ? first : first + 1);
    return count == 1 ? start : start + "," + std::to_string(count);
  }

  const Lines& before_;
  const Lines& after_;
  size_t lead_, from_, to_, at_;
  size_t same_ = 0, removed_ = 0, added_ = 0;
  std::string text_;
};

}  // namespace

std::string unifiedDifference(const std::string& nameBefore, const std::string& before, const std::string& nameAfter,
                              const std::string& after) {
  const Lines one = linesOf(before), other = linesOf(after);
  const std::vector<Gap> gaps = gapsBetween(one, other);
  if (gaps.empty()) return {};
  std::string text = "--- " + nameBefore + "\n+++ " + nameAfter + "\n";
  for (size_t i = 0; i < gaps.size();) {
    Hunk hunk(one, other, gaps[i]);
    do {
      hunk.add(gaps[i++]);
    } while (i < gaps.size() && hunk.reaches(gaps[i]));
    text += hunk.text();
  }
  return text;
}

}  // namespace ctl::preview
