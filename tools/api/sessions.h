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
};

constexpr char kSessionFolder[] = "/run/kestrove/sessions";
constexpr char kCookie[] = "__Host-kestrove";

// Without a use for so long a session ends: item 54, in minutes, and half an hour where that says nothing. None lives
// longer than twelve hours.
double idleSeconds(const ShmData& store);

// Gives what the browser is to hold. Ends what is too old, and the oldest where there are too many.
std::string openSession(const std::string& user, WebSession& session, const ShmData& store);

// Of what a browser holds. A look that counts as a use puts the end off.
std::optional<WebSession> findSession(const std::string& held, const ShmData& store, bool use);

// Whether the session of that name is still there.
bool stillOpen(const std::string& id, const ShmData& store);

void closeSession(const std::string& id);
// All of a user, as when the password has changed.
void closeSessionsOf(const std::string& user, const std::string& exceptId);

}  // namespace api
