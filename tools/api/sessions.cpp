// SPDX-License-Identifier: Apache-2.0
#include "tools/api/sessions.h"

#include <algorithm>
#include <ctime>

#include "tools/api/digest.h"
#include "tools/api/folder.h"
#include "tools/ctl/session.h"

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

std::optional<WebSession> load(const Folder& files, const std::string& id, const ShmData& store) {
  const std::optional<std::string> text = files.read(id);
  if (!text) return std::nullopt;
  const Json content = Json::parse(*text, nullptr, false);
  if (!content.is_object()) return std::nullopt;
  WebSession session = {id, content.value("user", ""), content.value("csrf", ""), leftOf(files, id, content, store)};
  if (session.secondsLeft > 0 && !session.user.empty() && !session.csrf.empty()) return session;
  files.remove(id);
  return std::nullopt;
}

void makeRoom(const Folder& files, const ShmData& store) {
  std::vector<std::pair<double, std::string>> open;
  for (const std::string& name : files.names()) {
    if (!isName(name)) {
      if (files.age(name) > 60) files.remove(name);
    } else if (const std::optional<WebSession> session = load(files, name, store)) {
      open.emplace_back(files.age(name), name);
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

std::string openSession(const std::string& user, WebSession& session, const ShmData& store) {
  const Folder files = folder();
  makeRoom(files, store);
  std::string held = randomName();
  session = {digest(held), user, randomName(), idleSeconds(store)};
  files.write(session.id, Json{{"user", user}, {"csrf", session.csrf}, {"opened", now()}}.dump());
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

bool stillOpen(const std::string& id, const ShmData& store) { return load(folder(), id, store).has_value(); }

void closeSession(const std::string& id) {
  if (isName(id)) folder().remove(id);
}

void closeSessionsOf(const std::string& user, const std::string& exceptId) {
  const Folder files = folder();
  for (const std::string& name : files.names()) {
    const std::optional<std::string> text = isName(name) && name != exceptId ? files.read(name) : std::nullopt;
    if (!text) continue;
    const Json content = Json::parse(*text, nullptr, false);
    if (content.is_object() && content.value("user", "") == user) files.remove(name);
  }
}

}  // namespace api
