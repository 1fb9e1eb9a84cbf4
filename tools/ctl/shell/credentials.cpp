// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/credentials.h"

#include "kestrove/kestrove.h"

namespace ctl {
namespace {

constexpr char kNobody[] = "--";

bool isKnown(const Session& session, const std::string& name) {
  UserAccount account;
  awaitLock(session);
  return !name.empty() && getUserAccount(name.c_str(), &account) == 0;
}

}  // namespace

// The library takes the beginning of a name and an empty password for a question whether there is such a user.
bool authentic(const Session& session, const std::string& name, const char* password) {
  requireStore(session);
  const bool known = isKnown(session, name);
  awaitLock(session);
  const bool right = authenticateUser(known ? name.c_str() : kNobody, password) == 1;
  return known && right && *password;
}

void logFailure(const Session& session, const std::string& name, const Entrance& entrance) {
  const bool known = isKnown(session, name);
  awaitLock(session);
  logEvent(entrance.failure, entrance.source, known ? name.c_str() : kNobody);
}

void logSuccess(const Session& session, const std::string& name, const Entrance& entrance) {
  awaitLock(session);
  if (entrance.from != 0) setLoginFrom(entrance.from);
  setLastLoginTimeStamp(name.c_str());
  logEvent(entrance.success, entrance.source, name.c_str());
}

}  // namespace ctl
