// SPDX-License-Identifier: Apache-2.0
// Who is logged in. A session is a file whose name is the digest of what the browser holds: nobody who reads the
// folder, or the store, can be its user by that. All workers share the folder; a restart of the appliance ends every
// session.
#pragma once

#include <optional>
#include <string>

#include "kestrove/layout.h"

namespace api {

struct WebSession {
  std::string id;  // the file's name
  std::string user;
  std::string csrf;
  double secondsLeft = 0;
  bool changes = false;  // whether the account may
};

constexpr char kSessionFolder[] = "/run/kestrove/sessions";
constexpr char kCookie[] = "__Host-kestrove";

// Without a use for so long a session ends: item 54, in minutes, and half an hour where that says nothing. None lives
// longer than twelve hours.
double idleSeconds(const ShmData& store);

// Gives what the browser is to hold. Ends what is too old, and the oldest where there are too many.
std::string openSession(const UserAccount& account, WebSession& session, const ShmData& store);

// Of what a browser holds. A look that counts as a use puts the end off. Another account of the same name, or another
// password, is another user.
std::optional<WebSession> findSession(const std::string& held, const ShmData& store, bool use);

// Whoever has changed his own password stays, where he did that.
void keepSession(const std::string& id, const UserAccount& account);

void closeSession(const std::string& id);

}  // namespace api
