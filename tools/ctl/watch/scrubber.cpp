// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/scrubber.h"

#include <algorithm>
#include <functional>
#include <sstream>

#include "tools/common/plain_text.h"
#include "tools/ctl/session.h"

namespace ctl {
namespace {

constexpr size_t kShortest = 4;
constexpr size_t kLastWord = SIZE_MAX;
constexpr size_t kNoSecret = 0;

// Lines of the agent's configuration, by their first word, with the words that are secrets from that one on.
constexpr struct {
  const char* keyword;
  size_t first;
  bool further;
} kAgentLines[] = {{"rocommunity", 1, false},     {"rwcommunity", 1, false},      {"rocommunity6", 1, false},
                   {"rwcommunity6", 1, false},    {"trapcommunity", 1, false},    {"trapsink", 2, false},
                   {"trap2sink", 2, false},       {"informsink", 2, false},       {"authcommunity", 2, false},
                   {"com2sec", kLastWord, false}, {"com2sec6", kLastWord, false}, {"com2secunix", kLastWord, false},
                   {"createUser", 3, true},       {"usmUser", 1, true},           {"proxy", 1, true},
                   {"trapsess", 1, true}};

constexpr char kPasswordKeyword[] = "ADMIN_PASSWORD";

std::vector<std::string> wordsIn(const std::string& line) {
  std::istringstream words(line);
  return {std::istream_iterator<std::string>(words), {}};
}

std::string unquoted(const std::string& word) {
  const bool quoted = word.size() >= 2 && word.front() == '"' && word.back() == '"';
  return quoted ? word.substr(1, word.size() - 2) : word;
}

std::vector<std::string> secretsOf(const std::string& line) {
  const std::vector<std::string> words = wordsIn(line);
  std::vector<std::string> secrets;
  for (const auto& known : kAgentLines) {
    if (words.empty() || words.front() != known.keyword) continue;
    const size_t first = known.first == kLastWord ? words.size() - 1 : known.first;
    for (size_t i = first; i < (known.further ? words.size() : first + 1) && i < words.size(); ++i) {
      secrets.push_back(unquoted(words[i]));
    }
  }
  return secrets;
}

std::string accountHash(const std::string& line) {
  const size_t start = line.find(':');
  if (start == std::string::npos) return {};
  const size_t end = line.find(':', start + 1);
  const std::string field = line.substr(start + 1, end == std::string::npos ? end : end - start - 1);
  const size_t behindMarks = field.find_first_not_of("!*");
  return behindMarks == std::string::npos ? "" : field.substr(behindMarks);
}

std::string eachLine(const std::string& text, const std::function<std::string(const std::string&)>& made) {
  std::istringstream lines(text);
  std::string result;
  for (std::string line; std::getline(lines, line);) result += made(line) + "\n";
  return result;
}

void replaceAll(std::string& text, const std::string& secret) {
  for (size_t at = 0; (at = text.find(secret, at)) != std::string::npos; at += sizeof kRemoved - 1) {
    text.replace(at, secret.size(), kRemoved);
  }
}

bool isOf(const char* set, char c) { return c != '\0' && std::string_view(set).find(c) != std::string_view::npos; }

constexpr char kHashCharacters[] = "./$=,0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr size_t kShortestHash = 8;

// "$1$salt$hash" and its kin: a short name of the method between two dollar signs, and what belongs to it behind.
size_t hashEnd(const std::string& text, size_t start) {
  const size_t behindName = text.find('$', start + 1);
  const bool named = behindName != std::string::npos && behindName > start + 1 && behindName < start + 10;
  if (!named) return kNoSecret;
  size_t end = start;
  while (end < text.size() && isOf(kHashCharacters, text[end])) ++end;
  return end > behindName + kShortestHash ? end : kNoSecret;
}

void replaceHashes(std::string& text) {
  for (size_t at = 0; (at = text.find('$', at)) != std::string::npos; ++at) {
    const size_t end = hashEnd(text, at);
    if (end != kNoSecret) text.replace(at, end - at, kRemoved);
  }
}

// The names of settings whose values are secrets, of which older ones may stand in a history.
constexpr const char* kSecretSettings[] = {"httpEncryptedId", "oldAdminPassword"};

// Of a value behind its name, as a dump, a command or JSON has it: "NAME: VALUE", "NAME VALUE", "\"NAME\": \"VALUE\"".
struct Span {
  size_t start;
  size_t end;
};

Span valueBehind(const std::string& text, size_t at) {
  const size_t start = text.find_first_not_of(" \t:=", text.compare(at, 2, "\":") == 0 ? at + 2 : at);
  if (start == std::string::npos) return {text.size(), text.size()};
  const size_t behindBackslash = text[start] == '\\' ? start + 1 : start;
  const bool quoted = behindBackslash < text.size() && text[behindBackslash] == '"';
  const size_t value = quoted ? behindBackslash + 1 : start;
  return {value, std::min(text.find_first_of(quoted ? "\"\n" : " \t\n\"\\,", value), text.size())};
}

void replaceSettings(std::string& text) {
  for (const std::string name : kSecretSettings) {
    for (size_t at = 0; (at = text.find(name, at)) != std::string::npos;) {
      at += name.size();
      const Span span = valueBehind(text, at);
      const std::string value = text.substr(span.start, span.end - span.start);
      if (!value.empty() && value != kRemoved) text.replace(span.start, value.size(), kRemoved);
    }
  }
}

}  // namespace

void Scrubber::learn(const std::string& secret) {
  const std::string json = jsonText(secret, -1);
  for (const std::string& form : {secret, tools::escaped(secret), json.substr(1, json.size() - 2)}) {
    const bool known = std::find(secrets_.begin(), secrets_.end(), form) != secrets_.end();
    if (form.size() >= kShortest && !known) secrets_.push_back(form);
  }
  std::sort(secrets_.begin(), secrets_.end(),
            [](const std::string& one, const std::string& other) { return one.size() > other.size(); });
}

void Scrubber::learnAccounts(const std::string& text) {
  eachLine(text, [this](const std::string& line) {
    learn(accountHash(line));
    return line;
  });
}

void Scrubber::learnAgent(const std::string& text) {
  eachLine(text, [this](const std::string& line) {
    for (const std::string& secret : secretsOf(line)) learn(secret);
    return line;
  });
}

void Scrubber::learnConfiguration(const std::string& text) {
  eachLine(text, [this](const std::string& line) {
    const std::vector<std::string> words = wordsIn(line);
    if (words.size() < 2 || words.front() != kPasswordKeyword) return line;
    learn(line.substr(line.find(words[1], line.find(words.front()) + words.front().size())));
    learn(words[1]);
    return line;
  });
}

std::string Scrubber::clean(std::string text) const {
  for (const std::string& secret : secrets_) replaceAll(text, secret);
  replaceSettings(text);
  replaceHashes(text);
  return text;
}

std::string Scrubber::cleanAccounts(const std::string& text) const {
  return clean(eachLine(text, [](const std::string& line) {
    const size_t start = line.find(':');
    if (accountHash(line).size() < 2) return line;
    const size_t end = line.find(':', start + 1);
    return line.substr(0, start + 1) + kRemoved + (end == std::string::npos ? "" : line.substr(end));
  }));
}

std::string Scrubber::cleanAgent(const std::string& text) const {
  return clean(eachLine(text, [](const std::string& line) {
    return secretsOf(line).empty() ? line : wordsIn(line).front() + " " + kRemoved;
  }));
}

std::string Scrubber::cleanConfiguration(const std::string& text) const {
  return clean(eachLine(text, [](const std::string& line) {
    const std::vector<std::string> words = wordsIn(line);
    return !words.empty() && words.front() == kPasswordKeyword ? words.front() + " " + kRemoved : line;
  }));
}

}  // namespace ctl
