// SPDX-License-Identifier: Apache-2.0
// The users: their records, and their lines in the password file.
#include <fcntl.h>
#include <pwd.h>
#include <shadow.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>

#include "kestrove/kestrove.h"
#include "tools/ctl/settings/carrying.h"

namespace ctl {
namespace {

constexpr char kPasswordFile[] = "/etc/passwd";

const UserAccount* accountNamed(const ShmData& store, const std::string& name) {
  const int32_t count = std::clamp<int32_t>(store.config.userCount, 0, SHM_USERS);
  for (const UserAccount& account : std::span(store.config.users, static_cast<size_t>(count))) {
    if (text(account.username) == name) return &account;
  }
  return nullptr;
}

std::string passwordLine(const std::string& name) {
  std::ifstream file(kPasswordFile);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(name + ":")) return line;
  }
  return {};
}

bool appendPasswordLine(const std::string& line) {
  const bool locked = lckpwdf() == 0;
  const int fd = open(kPasswordFile, O_WRONLY | O_APPEND | O_CLOEXEC);
  const std::string whole = line + "\n";
  const bool written =
      fd != -1 && write(fd, whole.data(), whole.size()) == static_cast<ssize_t>(whole.size()) && fsync(fd) == 0;
  if (fd != -1) close(fd);
  if (locked) ulckpwdf();
  return written;
}

// The library finds a user by the password line: one that has none gets a locked one, to go with it.
int removeAccount(const std::string& name) {
  if (passwordLine(name).empty() && !getpwnam(name.c_str())) appendPasswordLine(name + ":!:65534:65534::/:/bin/false");
  return removeUser(name.c_str()) == 1 ? 0 : -1;
}

void remove(Carrying& carrying, const SettingChange& change) {
  carrying.attempt(change, [&change] { return removeAccount(change.key); });
}

// The password of a user that changes stays, that of one that comes back is what the caller has kept.
void add(Carrying& carrying, const SettingChange& change, const std::string& line) {
  const UserAccount* account = accountNamed(carrying.target, change.key);
  if (!account) return;
  if (line.empty() && getpwnam(change.key.c_str())) {
    return carrying.cannot(change, "the machine has an account of this name that is not in the store");
  }
  if (!carrying.attempt(change, [account] { return shm_addUser(account); })) return;
  const bool there = !passwordLine(change.key).empty();
  if (line.empty())
    return carrying.note("user " + change.key + " has no password (user passwd cannot ask for the old one)");
  if (!there && !appendPasswordLine(line))
    carrying.note("the password of user " + change.key + " could not be put back");
}

void changeRights(Carrying& carrying, const SettingChange& change) {
  const std::string line = passwordLine(change.key);
  if (removeAccount(change.key) != 0) return carrying.cannot(change, reasonText());
  add(carrying, change, line);
}

std::string keptLine(const Carrying& carrying, const std::string& name) {
  auto kept = carrying.options.passwordLines.find(name);
  return kept == carrying.options.passwordLines.end() ? "" : kept->second;
}

}  // namespace

// Those that go make room for those that come.
void changeUsers(Carrying& carrying) {
  const std::vector<const SettingChange*> changes = carrying.changesOf("users");
  for (const SettingChange* change : changes) {
    if (!change->after) remove(carrying, *change);
  }
  for (const SettingChange* change : changes) {
    if (change->before && change->after) changeRights(carrying, *change);
    if (!change->before) add(carrying, *change, keptLine(carrying, change->key));
  }
}

}  // namespace ctl
