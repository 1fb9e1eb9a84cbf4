// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/history_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "tools/common/plain_text.h"
#include "tools/ctl/place.h"

namespace ctl {
namespace {

constexpr size_t kKept = 1000;
constexpr size_t kLongest = 4096;
constexpr char kOwnFolder[] = "/var/lib/kestrove";
constexpr char kSecretItem[] = "httpEncryptedId";

const char* variable(const char* name) {
  const char* value = getenv(name);
  return value && *value ? value : nullptr;
}

bool plain(const std::string& name) {
  return !name.empty() && name.size() <= 32 && std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
  });
}

std::string pathOf(const std::string& user, bool loggedIn) {
  const char* folder = getenv("KESTROVE_HOME");
  if (folder && !*folder) return {};
  if (folder || loggedIn) {
    return plain(user) ? std::string(folder ? folder : kOwnFolder) + "/shell-history-" + user : std::string();
  }
  const char* home = variable("HOME");
  return home ? std::string(home) + "/.kestrovectl_history" : std::string();
}

// A plain file, never through a link.
int opened(const std::string& path, int flags) {
  const int fd = open(path.c_str(), flags | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600);
  struct stat facts;
  if (fd == -1 || (fstat(fd, &facts) == 0 && S_ISREG(facts.st_mode))) return fd;
  close(fd);
  return -1;
}

bool fits(const std::string& line) {
  return !line.empty() && line.size() <= kLongest && !tools::hasControlCharacter(line);
}

}  // namespace

HistoryFile::HistoryFile(const std::string& user, bool loggedIn) : path_(pathOf(user, loggedIn)) {
  const size_t slash = path_.rfind('/');
  if (slash != std::string::npos && slash > 0) mkdir(path_.substr(0, slash).c_str(), 0700);
}

std::vector<std::string> HistoryFile::lines() const {
  std::vector<std::string> found;
  const int fd = path_.empty() ? -1 : opened(path_, O_RDONLY);
  if (fd == -1) return found;
  std::ifstream file("/proc/self/fd/" + std::to_string(fd));
  for (std::string line; std::getline(file, line);) {
    if (fits(line)) found.push_back(line);
  }
  close(fd);
  if (found.size() <= kKept) return found;
  const bool long_ = found.size() > 2 * kKept;
  found.erase(found.begin(), found.end() - static_cast<std::ptrdiff_t>(kKept));
  if (long_) rewrite(found);
  return found;
}

void HistoryFile::rewrite(const std::vector<std::string>& lines) const {
  const std::string fresh = path_ + "." + std::to_string(getpid());
  const int fd = opened(fresh, O_WRONLY | O_CREAT | O_EXCL);
  if (fd == -1) return;
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  const bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  close(fd);
  if (!written || rename(fresh.c_str(), path_.c_str()) != 0) unlink(fresh.c_str());
}

// Appended, so that two shells of one user keep each other's lines.
void HistoryFile::add(const std::string& line) const {
  if (path_.empty() || !fits(line)) return;
  const int fd = opened(path_, O_WRONLY | O_CREAT | O_APPEND);
  if (fd == -1) return;
  const std::string text = line + "\n";
  const bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  close(fd);
  static_cast<void>(written);
}

bool holdsSecret(const std::vector<std::string>& words) {
  const Place place = placeBehind(grammar(), words);
  return (place.row && place.row->secret) || std::ranges::find(words, kSecretItem) != words.end();
}

bool isCommand(const std::vector<std::string>& words) {
  const Place place = placeBehind(grammar(), words);
  return place.row && place.row->run;
}

}  // namespace ctl
