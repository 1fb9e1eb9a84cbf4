// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/journal.h"

#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <iterator>

namespace ctl {
namespace {

constexpr char kFile[] = "journal";
constexpr char kDamaged[] = "journal.damaged";
constexpr char kOutcome[] = "outcome";
constexpr char kBootId[] = "/proc/sys/kernel/random/boot_id";
constexpr int64_t kSecond = 1000000000;

constexpr const char* kStages[] = {"forward", "trying", "waiting", "back"};

Json headOf(const Entry& entry) {
  return {{"stage", kStages[static_cast<size_t>(entry.stage)]},
          {"id", entry.id},
          {"user", entry.user},
          {"comment", entry.comment},
          {"command", entry.command},
          {"time", entry.time},
          {"source", entry.source},
          {"eventUser", entry.eventUser},
          {"revision", entry.revision},
          {"minutes", entry.minutes},
          {"deadline", entry.deadline},
          {"boot", entry.boot},
          {"passwordLines", entry.passwordLines}};
}

std::optional<Stage> stageOf(const std::string& name) {
  for (size_t i = 0; i < std::size(kStages); ++i) {
    if (kStages[i] == name) return static_cast<Stage>(i);
  }
  return std::nullopt;
}

// Throws what the library of JSON throws where a member is missing or of another kind.
std::optional<Entry> entryOf(const Record& record) {
  const Json& head = record.head;
  const std::optional<Stage> stage = stageOf(head.at("stage"));
  if (!stage) return std::nullopt;
  return Entry{.stage = *stage,
               .id = head.at("id"),
               .user = head.at("user"),
               .comment = head.at("comment"),
               .command = head.at("command"),
               .time = head.at("time"),
               .source = head.at("source"),
               .eventUser = head.at("eventUser"),
               .revision = head.at("revision"),
               .minutes = head.at("minutes"),
               .deadline = head.at("deadline"),
               .boot = head.at("boot"),
               .passwordLines = head.at("passwordLines"),
               .settings = record.body};
}

std::optional<Entry> understood(const std::string& text) {
  const std::optional<Record> record = readRecord(text);
  if (!record) return std::nullopt;
  try {
    return entryOf(*record);
  } catch (const Json::exception&) {
    return std::nullopt;
  }
}

std::string bootId() {
  char text[64] = {};
  kestrove::sys::Descriptor file(open(kBootId, O_RDONLY | O_CLOEXEC));
  const ssize_t length = file ? ::read(file.get(), text, sizeof text - 1) : 0;
  return {text, length > 0 ? static_cast<size_t>(length) : 0};
}

}  // namespace

BootTime bootTimeNow() {
  struct timespec time = {};
  clock_gettime(CLOCK_BOOTTIME, &time);
  return {bootId(), time.tv_sec * kSecond + time.tv_nsec};
}

int64_t remaining(const Entry& entry, const BootTime& now) {
  if (entry.boot != now.boot || entry.deadline <= now.nanoseconds) return 0;
  return entry.deadline - now.nanoseconds;
}

std::optional<Entry> Journal::read() const {
  const std::optional<std::string> text = home_.read(kFile);
  if (!text) return std::nullopt;
  std::optional<Entry> entry = understood(*text);
  if (entry) return entry;
  home_.rename(kFile, kDamaged);
  const std::string said = home_.pathOf(kFile) + " is damaged: kept as " + home_.pathOf(kDamaged) +
                           "; whether a change was interrupted, and what was before it, cannot be told from it";
  syslog(LOG_ERR, "kestrovectl: %s", said.c_str());
  warn(said);
  return std::nullopt;
}

void Journal::write(const Entry& entry) const { home_.write(kFile, recordText({headOf(entry), entry.settings})); }

void Journal::remove() const { home_.remove(kFile); }

void Journal::remember(const std::string& id, const std::string& outcome) const {
  home_.write(kOutcome, id + "\n" + outcome);
}

std::optional<std::string> Journal::outcomeOf(const std::string& id) const {
  const std::string text = home_.read(kOutcome).value_or("");
  if (!text.starts_with(id + "\n")) return std::nullopt;
  return text.substr(id.size() + 1);
}

bool journalThere() { return access((homePath() + "/" + kFile).c_str(), F_OK) == 0; }

Pending pendingOf(const Entry& entry, const BootTime& now) {
  return {.user = entry.user,
          .command = entry.command,
          .comment = entry.comment,
          .time = entry.time,
          .revision = entry.revision,
          .secondsLeft = static_cast<double>(remaining(entry, now)) / static_cast<double>(kSecond)};
}

// What cannot be read is somebody else's to tell.
std::optional<Pending> pendingConfirmation() {
  if (keepsNothing() || !journalThere()) return std::nullopt;
  try {
    const std::optional<Home> home = Home::find();
    const std::optional<std::string> text = home ? home->read(kFile) : std::nullopt;
    const std::optional<Entry> entry = text ? understood(*text) : std::nullopt;
    if (entry && entry->confirmable()) return pendingOf(*entry, bootTimeNow());
  } catch (const Refusal&) {
  }
  return std::nullopt;
}

std::string describe(const Entry& entry) {
  const std::string revision = entry.revision > 0 ? " (revision " + std::to_string(entry.revision) + ")" : "";
  return "'" + entry.command + "' of " + entry.user + revision + ", at " + entry.time;
}

}  // namespace ctl
