// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/filters.h"

#include <regex.h>

#include <deque>

#include "tools/ctl/session.h"
#include "tools/ctl/values.h"

namespace ctl {
namespace {

constexpr int kMostLines = 1000000;

class Match : public Filters::Stage {
 public:
  explicit Match(const std::string& expression) {
    const int result = regcomp(&compiled_, expression.c_str(), REG_EXTENDED | REG_NOSUB);
    if (result == 0) return;
    char reason[128];
    regerror(result, &compiled_, reason, sizeof reason);
    throw Refusal(kUsage, expression + ": " + reason);
  }
  ~Match() override { regfree(&compiled_); }
  Match(const Match&) = delete;
  Match& operator=(const Match&) = delete;

  void line(const std::string& line, const LineSink& next) override {
    if (regexec(&compiled_, line.c_str(), 0, nullptr, 0) == 0) next(line);
  }

 private:
  regex_t compiled_ = {};
};

class Count : public Filters::Stage {
 public:
  void line(const std::string&, const LineSink&) override { ++lines_; }
  void end(const LineSink& next) override { next(std::to_string(lines_)); }

 private:
  size_t lines_ = 0;
};

class Last : public Filters::Stage {
 public:
  explicit Last(const std::string& number) {
    int lines = 0;
    if (!readNumber(number, lines) || lines < 0 || lines > kMostLines) {
      throw Refusal(kUsage, number + ": last takes a number of lines");
    }
    most_ = static_cast<size_t>(lines);
  }
  void line(const std::string& line, const LineSink&) override {
    kept_.push_back(line);
    if (kept_.size() > most_) kept_.pop_front();
  }
  void end(const LineSink& next) override {
    for (const std::string& line : kept_) next(line);
  }

 private:
  size_t most_ = 0;
  std::deque<std::string> kept_;
};

struct Kind {
  const char* name;
  const char* help;
  const char* value;                                            // its name; null where none is taken
  std::unique_ptr<Filters::Stage> (*make)(const std::string&);  // null for what the command itself does
};

constexpr Kind kKinds[] = {
    {"match", "Lines that match an extended regular expression", "RE",
     [](const std::string& value) -> std::unique_ptr<Filters::Stage> { return std::make_unique<Match>(value); }},
    {"count", "The number of lines", nullptr,
     [](const std::string&) -> std::unique_ptr<Filters::Stage> { return std::make_unique<Count>(); }},
    {"json", "The output as JSON", nullptr, nullptr},
    {"last", "The last lines", "N",
     [](const std::string& value) -> std::unique_ptr<Filters::Stage> { return std::make_unique<Last>(value); }},
};

const Kind& kindOf(const Words& filter) {
  const std::string name = filter.empty() ? "" : filter.front();
  for (const Kind& kind : kKinds) {
    if (!name.empty() && std::string_view(kind.name).starts_with(name)) return kind;
  }
  throw Refusal(kUsage, (name.empty() ? "behind a bar" : name + ": no such filter:") +
                            std::string(" match RE, count, json or last N is needed"));
}

}  // namespace

Filters::Filters(const std::vector<Words>& filters, LineSink sink) : sink_(std::move(sink)) {
  for (const Words& filter : filters) add(filter);
}

Filters::~Filters() = default;

void Filters::add(const Words& filter) {
  const Kind& kind = kindOf(filter);
  const size_t words = kind.value ? 2 : 1;
  if (filter.size() < words) throw Refusal(kUsage, std::string(kind.name) + ": " + kind.value + " is missing");
  if (filter.size() > words) throw Refusal(kUsage, filter[words] + ": one word too many behind " + kind.name);
  if (kind.make) {
    stages_.push_back(kind.make(filter.back()));
  } else {
    json_ = true;
  }
}

LineSink Filters::behind(size_t stage) {
  return [this, stage](const std::string& line) { pass(stage + 1, line); };
}

void Filters::pass(size_t stage, const std::string& line) {
  if (stage == stages_.size()) return sink_(line);
  stages_[stage]->line(line, behind(stage));
}

void Filters::take(const std::string& text) {
  begun_ += text;
  size_t at = 0;
  for (size_t end; (end = begun_.find('\n', at)) != std::string::npos; at = end + 1) {
    pass(0, begun_.substr(at, end - at));
  }
  begun_.erase(0, at);
}

void Filters::end() {
  if (!begun_.empty()) pass(0, begun_);
  begun_.clear();
  for (size_t stage = 0; stage < stages_.size(); ++stage) stages_[stage]->end(behind(stage));
}

std::vector<Candidate> filterCandidates(const std::string& begun) {
  std::vector<Candidate> found;
  for (const Kind& kind : kKinds) {
    if (std::string_view(kind.name).starts_with(begun)) found.push_back({kind.name, kind.help});
  }
  return found;
}

}  // namespace ctl
