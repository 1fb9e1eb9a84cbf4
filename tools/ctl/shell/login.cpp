// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/login.h"

#include <signal.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <utility>
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/secret.h"
#include "tools/ctl/shell/child.h"
#include "tools/ctl/shell/glance.h"

namespace ctl {
namespace {

constexpr double kLongestDelay = 30;
constexpr size_t kLongestName = 255;
constexpr char kNobody[] = "--";

// "name", "!" for a failure, nothing for the end of input.
constexpr char kFailed[] = "!";
constexpr char kEnd[] = "-";

void showBanner(const Session& session) {
  const ShmData* store = glance();
  if (!store || store->config.bannerOperState != SHM_ON) return;
  const char* product = getKestroveProductName();
  session.print("\n" + unitName(*store) + (product && *product ? " (" + tools::escaped(product) + ")" : "") +
                "\nFor authorised users only. Log-ins and changes are logged.\n\n");
}

std::optional<std::string> readName() {
  std::string name;
  for (char c;;) {
    const ssize_t length = read(STDIN_FILENO, &c, 1);
    if (length == -1 && errno == EINTR) continue;
    if (length != 1) return std::nullopt;
    if (c == '\n') return name;
    if (name.size() < kLongestName) name += c;
  }
}

// The library takes the beginning of a name and an empty password for a question whether there is such a user.
bool authentic(const Session& session, const std::string& name, const Secret& password) {
  requireStore(session);
  UserAccount account;
  const bool known = !name.empty() && getUserAccount(name.c_str(), &account) == 0;
  awaitLock(session);
  const bool right = authenticateUser(known ? name.c_str() : kNobody, password.text()) == 1;
  return known && right && !password.empty();
}

// A name that is not in the store may be a password that was typed too early.
void logFailure(const Session& session, const std::string& name) {
  UserAccount account;
  const bool known = !name.empty() && getUserAccount(name.c_str(), &account) == 0;
  awaitLock(session);
  logEvent(SHM_EVENT_CLI_LOGIN_FAILED, SHM_SOURCE_SERIAL, known ? name.c_str() : kNobody);
}

void logSuccess(const Session& session, const std::string& name) {
  const int before = getLastLoginTimeStamp(name.c_str());
  if (before > 0) session.print("Last log-in: " + timeJson(before).get<std::string>() + "\n");
  awaitLock(session);
  setLoginFrom(SHM_LOGIN_SERIAL);
  setLastLoginTimeStamp(name.c_str());
  logEvent(SHM_EVENT_CLI_LOGIN, SHM_SOURCE_SERIAL, name.c_str());
}

// One try, in a process of its own: the password is gone with it.
std::string tryOnce(const Session& session) {
  for (int number : {SIGINT, SIGQUIT, SIGTSTP}) signal(number, SIG_IGN);
  session.print("login: ");
  const std::optional<std::string> name = readName();
  if (!name) return kEnd;
  if (name->empty()) return "";
  const Secret password("Password");
  if (tools::hasControlCharacter(*name) || !authentic(session, *name, password)) {
    logFailure(session, *name);
    session.print("Log-in failed.\n");
    return kFailed;
  }
  logSuccess(session, *name);
  return *name;
}

std::string safely(const Session& session) {
  try {
    return tryOnce(session);
  } catch (const Refusal& refusal) {
    warn(refusal.what());
    return refusal.exit() == kNoStore ? kEnd : kFailed;
  }
}

// Nothing that is typed meanwhile counts.
void wait(double seconds) {
  struct timespec left = {static_cast<time_t>(seconds),
                          static_cast<long>((seconds - static_cast<double>(static_cast<time_t>(seconds))) * 1e9)};
  while (nanosleep(&left, &left) == -1 && errno == EINTR) continue;
  tcflush(STDIN_FILENO, TCIFLUSH);
}

}  // namespace

std::string logIn(const Session& session, double delay) {
  for (int number : {SIGINT, SIGQUIT, SIGTSTP}) signal(number, SIG_IGN);
  textFromChild([&session] {
    showBanner(session);
    return std::string();
  });
  for (;;) {
    std::string name = textFromChild([&session] { return safely(session); });
    if (name == kEnd) return {};
    if (name.empty()) continue;
    if (name != kFailed) return name;
    wait(delay);
    delay = std::min(delay * 2, kLongestDelay);
  }
}

void closeEnvironment(const std::string& user) {
  std::vector<std::pair<const char*, std::string>> kept;
  for (const char* name : {"TERM", "NO_COLOR", "LANG", "LC_ALL", "LC_CTYPE", "KESTROVE_HOME"}) {
    if (const char* value = getenv(name)) kept.emplace_back(name, value);
  }
  clearenv();
  for (const auto& [name, value] : kept) setenv(name, value.c_str(), 1);
  setenv("PATH", "/usr/sbin:/usr/bin:/sbin:/bin", 1);
  setenv("USER", user.c_str(), 1);
  setenv("LESSSECURE", "1", 1);
  setenv("LESS", "-FRX", 1);
}

}  // namespace ctl
