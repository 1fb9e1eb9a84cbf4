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
#include "tools/ctl/shell/credentials.h"
#include "tools/ctl/shell/glance.h"

namespace ctl {
namespace {

constexpr double kLongestDelay = 30;
constexpr size_t kLongestName = 255;

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

void welcome(const Session& session, const std::string& name) {
  const int before = getLastLoginTimeStamp(name.c_str());
  if (before > 0) session.print("Last log-in: " + timeJson(before).get<std::string>() + "\n");
  logSuccess(session, name, kSerialLogIn);
}

// One try, in a process of its own: the password is gone with it.
std::string tryOnce(const Session& session) {
  for (int number : {SIGINT, SIGQUIT, SIGTSTP}) signal(number, SIG_IGN);
  session.print("login: ");
  const std::optional<std::string> name = readName();
  if (!name) return kEnd;
  if (name->empty()) return "";
  const Secret password("Password");
  if (tools::hasControlCharacter(*name) || !authentic(session, *name, password.text())) {
    logFailure(session, *name, kSerialLogIn);
    session.print("Log-in failed.\n");
    return kFailed;
  }
  welcome(session, *name);
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
