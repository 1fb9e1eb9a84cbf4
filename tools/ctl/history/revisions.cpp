// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/revisions.h"

#include <algorithm>
#include <ctime>

namespace ctl {
namespace {

constexpr char kStart[] = "revision-";
constexpr size_t kMostDigits = 9;

std::optional<int> numberOf(const std::string& name) {
  if (!name.starts_with(kStart)) return std::nullopt;
  const std::string digits = name.substr(sizeof kStart - 1);
  if (digits.empty() || digits.size() > kMostDigits) return std::nullopt;
  if (digits.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  return std::stoi(digits);
}

// A head may have been written by hand: what is no text there is none.
std::string textIn(const Json& head, const char* name) {
  const auto found = head.find(name);
  return found != head.end() && found->is_string() ? found->get<std::string>() : "";
}

[[noreturn]] void refuseMissing(int number) {
  throw Refusal(kRefused, "revision " + std::to_string(number) + ": there is none (history lists them)");
}

std::string now() { return timeJson(static_cast<int32_t>(time(nullptr))).get<std::string>(); }

}  // namespace

std::string revisionFile(int number) { return kStart + std::to_string(number); }

Json revisionJson(const Revision& revision) {
  return {{"revision", revision.number}, {"time", revision.time},       {"user", revision.user},
          {"source", revision.source},   {"comment", revision.comment}, {"command", revision.command}};
}

Revision revisionOf(const Record& record) {
  const auto number = record.head.find("revision");
  return {.number = number != record.head.end() && number->is_number_integer() ? number->get<int>() : 0,
          .time = textIn(record.head, "time"),
          .user = textIn(record.head, "user"),
          .source = textIn(record.head, "source"),
          .comment = textIn(record.head, "comment"),
          .command = textIn(record.head, "command")};
}

std::vector<int> Revisions::numbers() const {
  std::vector<int> found;
  for (const std::string& name : home_.names()) {
    if (const std::optional<int> number = numberOf(name)) found.push_back(*number);
  }
  std::sort(found.begin(), found.end());
  return found;
}

std::optional<Record> Revisions::read(int number) const {
  const std::optional<std::string> text = home_.read(revisionFile(number));
  return text ? readRecord(*text) : std::nullopt;
}

Revision Revisions::find(int number) const {
  const std::optional<std::string> text = home_.read(revisionFile(number));
  if (!text) refuseMissing(number);
  const std::optional<Record> record = readRecord(*text);
  if (!record) throw Refusal(kSystem, home_.pathOf(revisionFile(number)) + ": damaged");
  return revisionOf(*record);
}

std::vector<SettingLine> Revisions::lines(int number) const {
  find(number);
  return settingsIn(read(number).value_or(Record{}).body);
}

std::optional<Revisions::Newest> Revisions::newest() const {
  const std::vector<int> kept = numbers();
  for (auto number = kept.rbegin(); number != kept.rend(); ++number) {
    const std::optional<Record> record = read(*number);
    if (record) return Newest{*number, textIn(record->head, "settings"), textIn(record->head, "fingerprint")};
  }
  return std::nullopt;
}

int Revisions::add(Revision revision, const std::string& body, const std::string& fingerprint) const {
  const std::vector<int> kept = numbers();
  revision.number = kept.empty() ? 1 : kept.back() + 1;
  revision.time = now();
  Record record = {revisionJson(revision), body};
  record.head["settings"] = sumOf(body);
  record.head["fingerprint"] = fingerprint;
  home_.write(revisionFile(revision.number), recordText(record));
  for (const int number : kept) {
    if (number <= revision.number - kRevisionsKept) home_.remove(revisionFile(number));
  }
  return revision.number;
}

std::vector<SettingLine> revisionLines(int number) {
  const std::optional<Home> home = Home::find();
  if (!home) refuseMissing(number);
  return Revisions(*home).lines(number);
}

}  // namespace ctl
