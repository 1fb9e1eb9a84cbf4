// SPDX-License-Identifier: Apache-2.0
// user.
#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fstream>
#include <optional>
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/change.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/rows.h"
#include "tools/ctl/secret.h"

namespace ctl {
namespace {

constexpr char kPasswordFile[] = "/etc/passwd";

constexpr char kNameRule[] = "a name has 5 to 31 letters and digits";
constexpr char kPasswordRule[] =
    "a password has 8 to 31 characters, among them a small letter, a capital, a digit and one of "
    "_!-.;:<>,[]{}\\|()*&^%$#@`~'+=?/\"";
constexpr char kDistanceRule[] = "at least 4 characters must differ from the old password";

struct UserLine {
  std::string name;
  bool administrator = false;
  std::optional<int> rights = {};
};

// A hint behind a name that the store does not have.
std::string nearUser(const std::string& name) {
  std::vector<std::string> names;
  UserAccount account;
  for (int i = 0; i < SHM_USERS && getUserTableEntry(i, &account) == 0; ++i) names.push_back(text(account.username));
  const std::string near = tools::nearest(name, names);
  return near.empty() ? "" : "; did you mean " + near + "?";
}

// By its exact name: the library's log-in check alone would accept the beginning of one.
UserAccount exactUser(const Session& session, const std::string& name) {
  awaitLock(session);
  const tools::Hold hold;
  if (!hold) throw refusal("the store cannot be locked");
  UserAccount account;
  if (name.empty() || getUserAccount(name.c_str(), &account) != 0) {
    throw Refusal(kRefused, name + ": " + shm_strerror(SHM_ENOUSER) + nearUser(name), SHM_ENOUSER);
  }
  return account;
}

void refuseEmpty(const Secret& password) {
  if (password.empty()) throw Refusal(kRefused, "an empty password is refused", SHM_EINVAL);
}

// 1 when the password is the user's own; the refusal otherwise.
void authenticate(const Session& session, const std::string& name, const Secret& password) {
  refuseEmpty(password);
  awaitLock(session);
  if (accept(authenticateUser(name.c_str(), password.text()), name) != 1) throw refusal(name);
}

Json accountOf(const UserAccount& account) {
  char hash[256] = {};
  Json user = userRow(account);
  user["passwordLine"] = getUserPassword(text(account.username).c_str(), hash) == 0;
  explicit_bzero(hash, sizeof hash);
  return user;
}

Json rows() {
  Json users = Json::array();
  int count = accept(getUserCount(), "users");
  for (int i = 0; i < count && i < SHM_USERS; ++i) {
    UserAccount account;
    accept(getUserTableEntry(i, &account), "user " + std::to_string(i));
    users.push_back(accountOf(account));
  }
  return users;
}

bool letterOrDigit(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }

void refuseName(const std::string& name) {
  const bool plain = std::all_of(name.begin(), name.end(), letterOrDigit);
  const bool fits = name.size() >= 5 && name.size() < sizeof UserAccount::username;
  if (plain && fits) return;
  const int code = plain ? SHM_ERANGE : SHM_EINVAL;
  throw Refusal(kRefused, name + ": " + shm_strerror(code) + "; " + kNameRule, code);
}

// An account of the machine itself, which the library would take for one of its own.
void refuseMachineAccount(const Session& session, const std::string& name) {
  UserAccount account;
  if (!getpwnam(name.c_str())) return;
  awaitLock(session);
  if (getUserAccount(name.c_str(), &account) == 0) return;
  throw Refusal(kRefused,
                name + ": the machine has an account of this name that is not in the store; it stays as it is",
                SHM_EEXIST);
}

// In words what the library only numbers.
void acceptPassword(int result, const std::string& what) {
  if (result >= 0) return;
  const Refusal refused = refusal(what);
  const bool near = refused.code() == SHM_EPASSWORD;
  throw Refusal(kRefused, near ? what + ": " + kDistanceRule : std::string(refused.what()) + "; " + kPasswordRule,
                refused.code(), refused.error());
}

UserAccount newAccount(const UserLine& line) {
  UserAccount account = {};
  memcpy(account.username, line.name.data(), line.name.size());
  account.superUser = line.rights.value_or(line.administrator ? SHM_ON : SHM_OFF);
  account.lastPasswdChange = static_cast<int32_t>(time(nullptr));
  return account;
}

// Asked behind a step that failed: its codes stay.
bool inStore(const std::string& name) {
  const uint32_t code = shm_errno;
  const int error = errno;
  UserAccount present;
  const bool there = getUserAccount(name.c_str(), &present) == 0;
  shm_errno = code;
  errno = error;
  return there;
}

void add(const Session& session, const UserLine& line) {
  const std::string& name = line.name;
  if (line.administrator && line.rights) throw Refusal(kUsage, "--admin and --rights exclude each other");
  refuseName(name);
  requireStore(session);
  refuseMachineAccount(session, name);
  Secret password("Password", Secret::Kind::kNew);
  refuseEmpty(password);
  Change change(session);
  acceptPassword(validatePasswordComplexity(password.text(), nullptr), "password");
  UserAccount account = newAccount(line);
  refuseMachineAccount(session, name);
  change.made(addUser(&account, password.text()), name);
  change.done("user " + name + " added");
}

void remove(const Session& session, const UserLine& line) {
  const std::string& name = line.name;
  requireStore(session);
  Change change(session);
  exactUser(session, name);
  const int result = removeUser(name.c_str());
  // The record goes first: a password file that cannot be written leaves the line, and nothing is saved.
  if (result < 0 && !inStore(name)) {
    throw Refusal(kNotSaved,
                  name + ": gone from the store, but its password line stays and nothing is saved: " + reasonText(),
                  static_cast<int>(shm_errno), reasonError());
  }
  if (change.made(result, name) != 1) throw refusal(name);
  change.done("user " + name + " removed");
}

std::string passwordLine(const std::string& name) {
  std::ifstream file(kPasswordFile);
  for (std::string line; std::getline(file, line);) {
    if (line.compare(0, name.size() + 1, name + ":") == 0) return line + "\n";
  }
  return {};
}

bool appendPasswordLine(const std::string& line) {
  int fd = open(kPasswordFile, O_WRONLY | O_APPEND | O_CLOEXEC);
  if (fd == -1) return false;
  bool written = write(fd, line.data(), line.size()) == static_cast<ssize_t>(line.size()) && fsync(fd) == 0;
  return close(fd) == 0 && written;
}

// The record first, then the line; says what could not be put back.
[[noreturn]] void putBack(const UserAccount& account, const std::string& line, const Refusal& reason) {
  const std::string name = text(account.username);
  UserAccount present;
  char hash[256] = {};
  std::string left;
  if (getUserAccount(name.c_str(), &present) != 0 && shm_addUser(&account) != 0) left += "; the record is lost";
  if (getUserPassword(name.c_str(), hash) != 0 && !line.empty() && !appendPasswordLine(line)) {
    left += "; the password line is lost";
  }
  explicit_bzero(hash, sizeof hash);
  throw Refusal(reason.exit(), reason.what() + (left.empty() ? "; the old password stays" : left), reason.code(),
                reason.error());
}

// The library has no change of password: the user is removed and added with the same record.
void changePassword(const Session& session, const UserLine& given) {
  const std::string& name = given.name;
  requireStore(session);
  UserAccount account = exactUser(session, name);
  Secret oldPassword("Old password");
  authenticate(session, name, oldPassword);
  Secret newPassword("New password", Secret::Kind::kNew);
  refuseEmpty(newPassword);
  Change change(session);
  account = exactUser(session, name);
  acceptPassword(validatePasswordComplexity(newPassword.text(), oldPassword.text()), "new password");

  const UserAccount before = account;
  const std::string line = passwordLine(name);
  account.lastPasswdChange = static_cast<int32_t>(time(nullptr));
  change.leavesRevision();
  if (removeUser(name.c_str()) != 1) putBack(before, line, refusal(name));
  const int result = addUser(&account, newPassword.text());
  if (result != 0) putBack(before, line, refusal(name));
  change.made(result, name);
  change.done("password of " + name + " changed");
}

void check(const Session& session, const UserLine& line) {
  const std::string& name = line.name;
  requireStore(session);
  exactUser(session, name);
  Secret password("Password");
  authenticate(session, name, password);
  session.done("the password of " + name + " is right");
}

}  // namespace

std::vector<Command> userCommands() {
  const auto known =
      needed("NAME", &UserLine::name, takes::user(), "Exact name of the user: 5 to 31 letters and digits");
  auto fresh = known;
  fresh.type = takes::text();
  const auto admin = flag("--admin", &UserLine::administrator, "Make it an administrator");
  const auto rights =
      option("--rights", &UserLine::rights, takes::number(), "Its rights as the store has them: 1 is an administrator");
  return {
      group("user", "Management accounts; passwords come from a prompt or standard input"),
      command("user list", "All accounts", showing<rows>),
      askingPassword(changing("user add", "Add a user; reads the password", add, {fresh, admin, rights},
                              std::string("Rules: ") + kNameRule + ";\n" + kPasswordRule + ".")),
      changing("user remove", "Remove a user", remove, {known}),
      askingPassword(changing("user passwd", "Change a password; reads the old one, then the new one", changePassword,
                              {known}, std::string("Rules: ") + kPasswordRule + ";\n" + kDistanceRule + ".")),
      askingPassword(command("user check", "Check a password", check, {known}))};
}

}  // namespace ctl
