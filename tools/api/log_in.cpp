// SPDX-License-Identifier: Apache-2.0
#include "tools/api/log_in.h"

#include <syslog.h>

#include <cmath>

#include "kestrove/kestrove.h"
#include "tools/api/command.h"
#include "tools/api/delay.h"
#include "tools/api/failure.h"
#include "tools/api/folder.h"
#include "tools/api/words.h"
#include "tools/common/hold.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/shell/credentials.h"
#include "tools/ctl/shell/glance.h"

namespace api {
namespace {

constexpr size_t kLongestName = 255;
constexpr ctl::Entrance kWebLogIn = {SHM_SOURCE_HTTP, SHM_EVENT_WEB_LOGIN, SHM_EVENT_WEB_LOGIN_FAILED, 0};

std::string textOf(const Json& body, const std::string& name) {
  if (!body.contains(name) || !body[name].is_string()) throw Failure(400, name + ": a text is needed");
  return body[name].get<std::string>();
}

std::string cookie(const std::string& held, const std::string& more) {
  return std::string(kCookie) + "=" + held + "; Path=/; Secure; HttpOnly; SameSite=Strict" + more;
}

void refuseEarly(const std::string& client, const std::string& user) {
  const double wait = secondsToWait(client, user);
  if (wait <= 0) return;
  throw Failure(429, "a log-in failed just now", ctl::kNotPermitted)
      .with("Retry-After", std::to_string(static_cast<int>(std::ceil(wait))));
}

bool plainName(const std::string& name) {
  return !name.empty() && name.size() <= kLongestName && !tools::hasControlCharacter(name);
}

bool plainPassword(const std::string& password) {
  return !password.empty() && password.size() < 256 && !tools::hasControlCharacter(password);
}

[[noreturn]] void refuse() { throw Failure(401, "wrong name or password", ctl::kNotPermitted); }

ctl::Session waiting() {
  ctl::Session session;
  session.waitSeconds = kPatience;
  return session;
}

// The digest alone: the store is printed and saved.
void nameInStore(const std::string& id) {
  ctl::awaitLock(waiting());
  setShmString(SHM_TEXT_WEB_SESSION, id.c_str());
}

// Who is out is out, also while somebody else has the store: then the name of what is over stays in it.
void takeFromStore(const std::string& id) {
  try {
    ctl::requireStore(waiting());
    if (ctl::text(shm->config.httpEncryptedId) == id) nameInStore("");
  } catch (const ctl::Refusal&) {
    syslog(LOG_INFO, "kestrove-api: the store still names a session that was closed");
  }
}

// In one piece: nobody who is told that the store is locked has a session.
Reply welcome(const std::string& user) {
  ctl::awaitLock(waiting());
  const tools::Hold hold;
  if (!hold) throw ctl::refusal("the store cannot be locked");
  ctl::logSuccess(waiting(), user, kWebLogIn);
  const std::optional<UserAccount> account = ctl::accountAt(*shm, user);
  if (!account) refuse();  // gone meanwhile
  Caller caller = {.user = user, .changes = account->superUser == SHM_ON, .byCookie = true, .session = {}};
  const std::string held = openSession(*account, caller.session, *shm);
  nameInStore(caller.session.id);
  Reply reply = sessionReply(caller);
  reply.status = 201;
  reply.headers.emplace_back("Set-Cookie", cookie(held, ""));
  return reply;
}

}  // namespace

// One after the other, so that no two guesses are made at once behind a failure.
Reply logIn(const Request& request) {
  const Json body = bodyOf(request);
  const std::string user = textOf(body, "user");
  std::string password = textOf(body, "password");
  if (body.size() != 2) throw Failure(400, "user and password, and nothing else");
  const std::string client = clientOf(request);
  const auto turn = Folder(kFailureFolder).lock(kPatience);
  refuseEarly(client, user);
  logNoPasswords();
  const bool right = plainName(user) && plainPassword(password) && ctl::authentic(waiting(), user, password.c_str());
  explicit_bzero(password.data(), password.size());
  if (right) {
    forgetFailures(client, user);
    return welcome(user);
  }
  noteFailure(client, user);
  ctl::logFailure(waiting(), user, kWebLogIn);
  refuse();
}

Reply logOut(const Caller& caller) {
  closeSession(caller.session.id);
  Reply reply = jsonReply(200, {{"done", "logged out"}});
  if (!caller.byCookie) return reply;
  takeFromStore(caller.session.id);
  reply.headers.emplace_back("Set-Cookie", cookie("", "; Max-Age=0"));
  return reply;
}

Reply sessionReply(const Caller& caller) {
  Json facts = {{"user", caller.user}, {"role", caller.changes ? "admin" : "read"}};
  if (caller.byCookie) {
    facts["csrf"] = caller.session.csrf;
    facts["secondsLeft"] = static_cast<int>(caller.session.secondsLeft);
  }
  return jsonReply(200, facts);
}

}  // namespace api
