// SPDX-License-Identifier: Apache-2.0
#include "tools/api/carry_out.h"

#include <algorithm>
#include <optional>

#include "kestrove/codes.h"
#include "kestrove/errors.h"
#include "kestrove/segment.h"
#include "tools/api/command.h"
#include "tools/api/failure.h"
#include "tools/api/kept_tables.h"
#include "tools/api/tag.h"
#include "tools/ctl/held_look.h"
#include "tools/ctl/history/pending.h"
#include "tools/ctl/item_names.h"
#include "tools/ctl/place.h"
#include "tools/ctl/shell/glance.h"

namespace api {
namespace {

// Of a list the row that the path names.
Json pickedRow(const Route& route, const Json& rows) {
  const std::string name = route.endpoint->pick;
  for (const Json& row : rows) {
    if (!row.contains(name)) continue;
    const Json& value = row[name];
    if ((value.is_string() ? value.get<std::string>() : value.dump()) == route.parts.at(name)) return row;
  }
  throw Failure(404, route.parts.at(name) + ": there is none", ctl::kRefused);
}

// The settings stand together in the store, in front of what is counted.
std::string settingsOf(const ShmData& store) {
  const char* begin = reinterpret_cast<const char*>(&store.config);
  return {begin, reinterpret_cast<const char*>(&store.qos)};
}

std::string notificationsOf(const ShmData& store) { return {1, static_cast<char>(store.notificationStatus)}; }

// Looks at the store before a change and behind it, while nobody else can change it.
class ChangeWatch {
 public:
  ChangeWatch(const ctl::Session& session, const Route& route, const Request& request)
      : reading_(session),
        words_(wordsFrom(route.endpoint->table, route.parts)),
        wanted_(wantedTags(request)),
        watched_(route.endpoint->path == std::string("/notifications/{number}") ? notificationsOf : settingsOf) {
    reading_.comment.clear();
    reading_.confirmMinutes = -1;
    if (wanted_ && words_.empty()) throw Failure(400, "the resource has no ETag to match");
  }

  void look(bool made) {
    if (made) {
      changed_ = watched_(*shm) != before_;
      return;
    }
    before_ = watched_(*shm);
    if (wanted_ && !wanted_->hasStrong(tagOf(run(reading_, words_).text))) refuse();
  }

  bool mismatched() const { return mismatched_; }
  std::optional<bool> changed() const { return changed_; }

 private:
  [[noreturn]] void refuse() {
    mismatched_ = true;
    throw ctl::Refusal(ctl::kRefused, "the table is not what If-Match says: it was changed meanwhile");
  }

  ctl::Session reading_;
  std::vector<std::string> words_;
  std::optional<GivenTags> wanted_;
  std::string (*watched_)(const ShmData&);
  std::string before_;
  std::optional<bool> changed_;
  bool mismatched_ = false;
};

// What a command that only reads has printed to its end needs no look.
bool isSound(const Printed& printed, const Route& route) {
  return printed.exit == ctl::kDone && route.endpoint->reads() && !printed.text.empty();
}

Reply replyOf(const Printed& printed, const Route& route) {
  if (isSound(printed, route)) return {.status = 200, .body = printed.text, .headers = {{"Content-Type", kJsonType}}};
  const Json value = Json::parse(printed.text, nullptr, false);
  if (value.is_discarded()) {
    return errorReply(500, {ctl::kSystem, "the command ended with " + std::to_string(printed.exit) + " and no result"});
  }
  const int status = statusOf(printed.exit, value, route);
  return inviting({.status = status, .body = printed.text, .headers = {{"Content-Type", kJsonType}}});
}

Reply tableReply(const Request& request, const Route& route, const KeptTable& table) {
  const std::optional<GivenTags> known = tagsIn(request.header("if-none-match"));
  if (known && known->has(table.tag)) {
    return {.status = 304, .body = {}, .headers = {{"ETag", table.tag}}};
  }
  Reply reply = {.status = 200, .body = {}, .headers = {{"Content-Type", kJsonType}, {"ETag", table.tag}}};
  const bool one = *route.endpoint->pick != '\0';
  reply.body = one ? ctl::jsonText(pickedRow(route, Json::parse(table.text)), 2) + "\n" : table.text;
  return reply;
}

constexpr const char* kMadeOfTheStore[] = {"show",       "show {item}", "rule list",    "user list",
                                           "route list", "route6 list", "address list", "mode show"};
constexpr const char* kMadeOfMore[] = {"engine status", "task list", "stats", "notifications", "interface list"};

std::optional<MadeOf> madeOf(const Endpoint& row) {
  if (!row.reads()) return std::nullopt;
  if (std::ranges::count(kMadeOfTheStore, std::string(row.table)) > 0) return MadeOf::kStore;
  if (std::ranges::count(kMadeOfMore, std::string(row.words)) > 0) return MadeOf::kMore;
  return std::nullopt;
}

Reply toldReply(const Request& request, const Route& route, const Printed& printed) {
  Reply reply = replyOf(printed, route);
  if (reply.status != 200 || !*route.endpoint->table) return reply;
  return tableReply(request, route, {printed.text, tagOf(printed.text)});
}

Reply readReply(const Request& request, const Route& route, const ctl::Session& session, const Spoken& spoken) {
  const std::optional<MadeOf> made = madeOf(*route.endpoint);
  return toldReply(request, route, made ? runAndKeep(session, spoken.words, *made) : run(session, spoken.words));
}

// Lists stand as they are: there is no place for a member in them.
void addChanged(Reply& reply, bool changed) {
  Json value = Json::parse(reply.body, nullptr, false);
  if (!value.is_object() || value.contains("changed")) return;
  value["changed"] = changed;
  reply.body = ctl::jsonText(value, 2) + "\n";
}

Reply changeReply(const Route& route, const Printed& printed, const ChangeWatch& watch) {
  Reply reply = replyOf(printed, route);
  if (watch.mismatched()) reply.status = 412;
  if (reply.status != 200) return reply;
  if (watch.changed()) addChanged(reply, *watch.changed());
  reply.status = route.endpoint->done;
  return reply;
}

bool changesOwnPassword(const Route& route, const Caller& caller) {
  const auto name = route.parts.find("name");
  return caller.byCookie && route.endpoint->takesSecret() && name != route.parts.end() && name->second == caller.user;
}

Reply change(const Request& request, const Route& route, const ctl::Session& session, const Spoken& spoken) {
  ChangeWatch watch(session, route, request);
  const ctl::HeldLook look([&watch](bool made) { watch.look(made); });
  if (route.endpoint->takesSecret()) logNoPasswords();
  giveInput(spoken.input);
  return changeReply(route, run(session, spoken.words), watch);
}

std::string revisionOf(const Route& route) {
  const auto found = route.parts.find("revision");
  return found == route.parts.end() ? "" : found->second;
}

bool behindLastRule(const Route& route) {
  const auto found = route.parts.find("position");
  const ShmData* store = ctl::glance();
  if (found == route.parts.end() || !store) return false;
  const std::string& text = found->second;
  if (text.find_first_not_of("0123456789") != std::string::npos || text.size() > 9) return false;
  return std::stoul(text) >= ctl::bounded(store->filterTable.ruleCount, SHM_RULES);
}

// The path names something that there is not.
bool isMissing(const Route& route, int exit, int code) {
  if (route.parts.empty()) return false;
  if (exit != ctl::kRefused) return false;
  if (code == SHM_ENOENT || code == SHM_ENOUSER) return true;
  return (code == -1 && !revisionOf(route).empty()) || (code == SHM_EINVAL && behindLastRule(route));
}

// The refusal of a second change that is to be confirmed, which has no code.
bool othersWait(int code) { return code == -1 && ctl::pendingConfirmation().has_value(); }

// Only items: the words of saved scripts stand at the same place.
void requireItem(const Route& route) {
  const auto found = route.parts.find("item");
  if (found == route.parts.end() || ctl::findItemRow(found->second)) return;
  throw Failure(404, found->second + ": no such item");
}

bool isOneOf(const ctl::Type& type, const std::string& word) {
  if (type.form == ctl::Form::kWord) return ctl::findName(type.words, word) != nullptr;
  if (type.form != ctl::Form::kNumber || type.most == INT_MAX) return true;
  const std::optional<uint64_t> number = ctl::readDigits(word);
  return number && static_cast<int64_t>(*number) >= type.least && *number <= static_cast<uint64_t>(type.most);
}

// Of what the command takes by name or up to a number the path names one: a port, a notification.
void requireOneOfFew(const Route& route) {
  std::vector<std::string> words;
  for (const std::string& word : ctl::wordsOf(route.endpoint->words)) {
    if (!word.starts_with("{")) {
      words.push_back(word);
      continue;
    }
    const auto found = route.parts.find(word.substr(1, word.size() - 2));
    const ctl::Value* value = ctl::placeBehind(ctl::grammar(), words).next;
    words.push_back(word);
    if (!value || found == route.parts.end() || isOneOf(value->type, found->second)) continue;
    throw Failure(404, found->second + ": none of " + ctl::typeText(value->type));
  }
}

}  // namespace

int statusOf(int exit, const Json& value, const Route& route) {
  const bool failed = value.is_object() && value.contains("error") && value["error"].is_object();
  const int code = failed ? value["error"].value("code", -1) : -1;
  if (failed && isMissing(route, exit, code)) return 404;
  if (failed && exit == ctl::kNotSaved && !value.contains("saved")) return 500;  // to save was all
  switch (exit) {
    case ctl::kDone:
    case ctl::kFindings:
    case ctl::kNotSaved: return 200;
    case ctl::kRefused: return failed && othersWait(code) ? 409 : 422;
    case ctl::kUsage: return 400;
    case ctl::kNoStore:
    case ctl::kLocked: return 503;
    case ctl::kNotPermitted: return 403;
    case ctl::kPartly: return 207;
    case ctl::kUnconfirmed: return 409;
    default: return 500;
  }
}

std::optional<Reply> knownReply(const Request& request, const Route& route) {
  if (madeOf(*route.endpoint) != MadeOf::kStore) return std::nullopt;
  const std::optional<KeptTable> table = keptTable(spoken(route, request).words);
  return table ? std::optional(tableReply(request, route, *table)) : std::nullopt;
}

std::optional<Reply> lastReply(const Request& request, const Route& route) {
  if (madeOf(*route.endpoint) != MadeOf::kMore) return std::nullopt;
  try {
    const std::optional<KeptTable> table = keptTable(spoken(route, request).words, MadeOf::kMore);
    return table ? std::optional(toldReply(request, route, {ctl::kDone, table->text})) : std::nullopt;
  } catch (const Failure&) {  // which is told by whoever carries it out
    return std::nullopt;
  }
}

void lookAhead(const Route& route) {
  if (madeOf(*route.endpoint) != MadeOf::kStore) return;
  const std::vector<std::string> words = spoken(route, {}).words;
  if (!printedSince(words)) runAndKeep(sessionOf({}, {}), words);
}

Reply carryOut(const Request& request, const Route& route, const Caller& caller) {
  requireItem(route);
  requireOneOfFew(route);
  const ctl::Session session = sessionOf(request, caller);
  const Spoken words = spoken(route, request);
  if (route.endpoint->reads()) return readReply(request, route, session, words);
  Reply reply = change(request, route, session, words);
  if (reply.status == 200 && changesOwnPassword(route, caller)) {
    if (const auto account = ctl::accountAt(*shm, caller.user)) keepSession(caller.session.id, *account);
  }
  return reply;
}

}  // namespace api
