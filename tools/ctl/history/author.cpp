// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/author.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <optional>

#include "kestrove/codes.h"
#include "tools/ctl/settings/quoting.h"

namespace ctl {
namespace {

constexpr uid_t kNobodyLoggedIn = static_cast<uid_t>(-1);
constexpr char kHidden[] = "***";
constexpr const char* kOfThisRun[] = {"--json", "--terse", "--wide"};
constexpr const char* kOfThisRunWithValue[] = {"--wait", "--comment", "--confirm", "--source", "--user", "--fields"};
constexpr const char* kSecretOptions[] = {"--password", "--old-password", "--new-password", "--secret"};

template <size_t N>
bool among(const std::string& word, const char* const (&words)[N]) {
  return std::find(words, words + N, word) != words + N;
}

std::optional<uid_t> rememberedByKernel() {
  unsigned long uid = kNobodyLoggedIn;
  FILE* file = fopen("/proc/self/loginuid", "re");
  if (!file) return std::nullopt;
  const bool read = fscanf(file, "%lu", &uid) == 1;
  fclose(file);
  if (!read || uid == kNobodyLoggedIn) return std::nullopt;
  return static_cast<uid_t>(uid);
}

std::optional<uid_t> ownerOfTerminal() {
  struct stat facts;
  for (int fd : {STDIN_FILENO, STDERR_FILENO}) {
    if (isatty(fd) && fstat(fd, &facts) == 0) return facts.st_uid;
  }
  return std::nullopt;
}

uid_t logInUid() {
  if (const std::optional<uid_t> uid = rememberedByKernel()) return *uid;
  return ownerOfTerminal().value_or(geteuid());
}

// "--password=X" as "--password=***".
std::string withoutValue(const std::string& word) {
  const size_t end = word.find('=');
  const bool secret = end != std::string::npos && among(word.substr(0, end), kSecretOptions);
  return secret ? word.substr(0, end + 1) + kHidden : word;
}

bool ofThisRun(const std::string& word) {
  return among(word, kOfThisRun) || among(word.substr(0, word.find('=')), kOfThisRunWithValue);
}

// Passwords are asked for; somebody may have put one behind the name all the same.
bool behindUserName(const std::vector<std::string>& kept) {
  return kept.size() >= 3 && kept[0] == "user" && (kept[1] == "add" || kept[1] == "passwd");
}

}  // namespace

std::string logInUser(const Session& session) {
  if (!session.loggedIn.empty()) return session.loggedIn;
  const uid_t uid = logInUid();
  const struct passwd* account = getpwuid(uid);
  return account ? account->pw_name : "uid " + std::to_string(uid);
}

std::string sourceName(const Session& session) {
  constexpr const char* kNames[] = {"System",  "Kestrove", "HTTP",    "Serial", "SSH",
                                    "SNMP v1", "SNMP v2",  "SNMP v3", "unknown"};
  static_assert(std::size(kNames) == SHM_SOURCE_UNKNOWN + 1);
  return kNames[std::min<uint32_t>(session.source, SHM_SOURCE_UNKNOWN)];
}

std::string commandText(const std::vector<std::string>& words) {
  std::vector<std::string> kept;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (ofThisRun(word)) {
      i += among(word, kOfThisRunWithValue);
    } else if (behindUserName(kept) && !word.starts_with("-")) {
      kept.push_back(kHidden);
    } else {
      const bool secret = !kept.empty() && among(kept.back(), kSecretOptions);
      kept.push_back(secret ? kHidden : withoutValue(word));
    }
  }
  std::string text;
  for (const std::string& word : kept) text += (text.empty() ? "" : " ") + (word == kHidden ? word : quoted(word));
  return text;
}

}  // namespace ctl
