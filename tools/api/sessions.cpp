// SPDX-License-Identifier: Apache-2.0
#include "tools/api/sessions.h"

#include <algorithm>
#include <ctime>

#include "kestrove/codes.h"
#include "tools/api/digest.h"
#include "tools/api/folder.h"
#include "tools/ctl/session.h"
#include "tools/ctl/shell/glance.h"

namespace api {
namespace {

using ctl::Json;

constexpr double kIdle = 30 * 60;
constexpr double kLongest = 12 * 3600;
constexpr size_t kMost = 64;  // as many as browsers could be open at one appliance

Folder folder() { return Folder(kSessionFolder); }

bool isName(const std::string& name) {
  return name.size() == 64 && name.find_first_not_of("0123456789abcdef") == std::string::npos;
}

int64_t now() { return time(nullptr); }

// A clock that was set back makes no session longer.
double leftOf(const Folder& files, const std::string& id, const Json& content, const ShmData& store) {
  const double life = static_cast<double>(now() - content.value("opened", int64_t{0}));
  if (life < 0) return -1;
  return std::min(idleSeconds(store) - files.age(id), kLongest - life);
}

// Null where there is none.
Json contentOf(const Folder& files, const std::string& id) {
  const Json content = Json::parse(files.read(id).value_or(""), nullptr, false);
  return content.is_object() ? content : Json();
}

std::optional<WebSession> load(const Folder& files, const std::string& id, const ShmData& store) {
  const Json content = contentOf(files, id);
  if (content.is_null()) return std::nullopt;
  WebSession session = {id, content.value("user", ""), content.value("csrf", ""), leftOf(files, id, content, store)};
  const std::optional<UserAccount> account = ctl::accountAt(store, session.user);
  const bool same = account && content.value("passwordChanged", int64_t{-1}) == account->lastPasswdChange;
  session.changes = same && account->superUser == SHM_ON;
  const bool open = session.secondsLeft > 0 && !session.csrf.empty();
  if (!open) files.remove(id);  // of another user it stays: while a password changes its account is away for a moment
  return open && same ? std::optional(session) : std::nullopt;
}

void makeRoom(const Folder& files, const ShmData& store) {
  std::vector<std::pair<double, std::string>> open;
  for (const std::string& name : files.names()) {
    if (!isName(name)) {
      if (files.age(name) > 60) files.remove(name);
    } else if (const std::optional<WebSession> session = load(files, name, store)) {
      open.emplace_back(files.age(name), name);
    } else {
      files.remove(name);
    }
  }
  std::sort(open.rbegin(), open.rend());
  for (size_t i = 0; i + kMost <= open.size(); ++i) files.remove(open[i].second);
}

}  // namespace

double idleSeconds(const ShmData& store) {
  const int32_t minutes = store.config.httpSessionTimeout;
  return minutes > 0 ? std::min(minutes * 60.0, kLongest) : kIdle;
}

std::string openSession(const UserAccount& account, WebSession& session, const ShmData& store) {
  const Folder files = folder();
  makeRoom(files, store);
  std::string held = randomName();
  session = {digest(held), ctl::text(account.username), randomName(), idleSeconds(store), account.superUser == SHM_ON};
  const Json content = {
      {"user", session.user}, {"csrf", session.csrf}, {"opened", now()}, {"passwordChanged", account.lastPasswdChange}};
  files.write(session.id, content.dump());
  return held;
}

std::optional<WebSession> findSession(const std::string& held, const ShmData& store, bool use) {
  if (!isName(held)) return std::nullopt;
  const Folder files = folder();
  const std::string id = digest(held);
  std::optional<WebSession> session = load(files, id, store);
  if (session && use) files.touch(id);
  return session;
}

void keepSession(const std::string& id, const UserAccount& account) {
  const Folder files = folder();
  Json content = contentOf(files, id);
  if (content.is_null()) return;
  content["passwordChanged"] = account.lastPasswdChange;
  files.write(id, content.dump());
}

void closeSession(const std::string& id) {
  if (isName(id)) folder().remove(id);
}

}  // namespace api
