// SPDX-License-Identifier: Apache-2.0
// Who asks, and whether a browser was led here by somebody else's page.
#pragma once

#include <string>
#include <vector>

#include "kestrove/layout.h"
#include "tools/api/endpoint.h"
#include "tools/api/message.h"
#include "tools/api/sessions.h"

namespace api {

struct Caller {
  std::string user;       // as events and revisions name it
  bool changes = false;   // whether it may
  bool byCookie = false;  // by a session, not by a token
  WebSession session;
};

// The names by which the appliance is called: addresses are always its own, since nobody else can give them another
// meaning; a name may be one that somebody leads here.
void requireHost(const Request& request, const ShmData& store, const std::vector<std::string>& names);

// A request that another page made a browser send. 403.
void requireOwnPage(const Request& request);

// 401 for nobody. A look of the page's own accord is no use of the session.
Caller callerOf(const Request& request, const ShmData& store);

// 403 for a change without the session's own word, which no other page can know, and for a right that is missing.
void requireRight(const Request& request, const Caller& caller, Right right);

// By whom the request came, as the web server in front says.
std::string clientOf(const Request& request);

// What the browser holds; empty where it holds nothing, or several of it.
std::string cookieOf(const Request& request);

}  // namespace api
