// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/rights.h"

#include "kestrove/codes.h"
#include "tools/ctl/shell/child.h"
#include "tools/ctl/shell/glance.h"

namespace ctl {
namespace {

// No store says nothing of the account.
std::string findRights(const std::string& user) {
  const ShmData* store = glance();
  if (!store) return "-nothing may be changed: there is no store";
  const std::optional<UserAccount> account = accountAt(*store, user);
  if (!account) return "gone";
  if (account->superUser != 1) return "-" + user + " may only read: the account has no super-user switch";
  if (store->config.cliOperState == SHM_OFF) {
    return "-nothing may be changed from here: configuration through the serial port is off (cliOperState)";
  }
  return "+";
}

}  // namespace

Rights rightsOf(const std::string& user) {
  const std::string found = textFromChild([&user] { return findRights(user); });
  if (found == "+") return {};
  if (!found.starts_with("-")) return {.gone = true, .readsOnly = {}};
  return {.gone = false, .readsOnly = found.substr(1)};
}

}  // namespace ctl
