// user.
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <ctime>
#include <fstream>

#include "kestrove/kestrove.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/rows.h"
#include "tools/ctl/secret.h"

namespace ctl {
namespace {

constexpr char kPasswordFile[] = "/etc/passwd";

std::string name;
bool administrator = false;

// By its exact name: the library's log-in check alone would accept the beginning of one.
UserAccount exactUser() {
  UserAccount account;
  if (name.empty() || getUserAccount(name.c_str(), &account) != 0) {
    throw Refusal(kRefused, name + ": " + shm_strerror(SHM_ENOUSER), SHM_ENOUSER);
  }
  return account;
}

void refuseEmpty(const Secret& password) {
  if (password.empty()) throw Refusal(kRefused, "an empty password is refused", SHM_EINVAL);
}

// 1 when the password is the user's own; the refusal otherwise.
void authenticate(const Secret& password) {
  refuseEmpty(password);
  if (accept(authenticateUser(name.c_str(), password.text()), name) != 1) throw refusal(name);
}

Json accountOf(const UserAccount& account) {
  char hash[256] = {};
  Json user = userRow(account);
  user["passwordLine"] = getUserPassword(text(account.username).c_str(), hash) == 0;
  explicit_bzero(hash, sizeof hash);
  return user;
}

void list(const Session& session) {
  requireStore();
  Json users = Json::array();
  int count = accept(getUserCount(), "users");
  for (int i = 0; i < count && i < SHM_USERS; ++i) {
    UserAccount account;
    accept(getUserTableEntry(i, &account), "user " + std::to_string(i));
    users.push_back(accountOf(account));
  }
  session.show(users);
}

void add(const Session& session) {
  requireStore();
  Secret password("Password");
  refuseEmpty(password);
  UserAccount account = {};
  if (name.size() >= sizeof account.username) {
    throw Refusal(kRefused, name + ": " + shm_strerror(SHM_ERANGE), SHM_ERANGE);
  }
  memcpy(account.username, name.data(), name.size());
  account.superUser = administrator ? 1 : 2;
  account.lastPasswdChange = static_cast<int32_t>(time(nullptr));
  accept(addUser(&account, password.text()), name);
  session.done("user " + name + " added");
}

void remove(const Session& session) {
  requireStore();
  exactUser();
  if (accept(removeUser(name.c_str()), name) != 1) throw refusal(name);
  session.done("user " + name + " removed");
}

std::string passwordLine() {
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
  UserAccount present;
  char hash[256] = {};
  std::string left;
  if (getUserAccount(name.c_str(), &present) != 0 && shm_addUser(&account) != 0) left += "; the record is lost";
  if (getUserPassword(name.c_str(), hash) != 0 && !line.empty() && !appendPasswordLine(line)) {
    left += "; the password line is lost";
  }
  explicit_bzero(hash, sizeof hash);
  throw Refusal(reason.exit(), reason.what() + (left.empty() ? "; the old password stays" : left), reason.code());
}

// The library has no change of password: the user is removed and added with the same record.
void changePassword(const Session& session) {
  requireStore();
  UserAccount account = exactUser();
  Secret oldPassword("Old password");
  authenticate(oldPassword);
  Secret newPassword("New password");
  refuseEmpty(newPassword);
  accept(validatePasswordComplexity(newPassword.text(), oldPassword.text()), "new password");

  const UserAccount before = account;
  const std::string line = passwordLine();
  account.lastPasswdChange = static_cast<int32_t>(time(nullptr));
  if (removeUser(name.c_str()) != 1) putBack(before, line, refusal(name));
  if (addUser(&account, newPassword.text()) != 0) putBack(before, line, refusal(name));
  session.done("password of " + name + " changed");
}

void check(const Session& session) {
  requireStore();
  exactUser();
  Secret password("Password");
  authenticate(password);
  session.done("the password of " + name + " is right");
}

}  // namespace

void addUserCommands(CLI::App& app, Session& session) {
  CLI::App* user = app.add_subcommand("user", "Management accounts; passwords come from a prompt or standard input");
  user->require_subcommand(1);
  user->add_subcommand("list", "All accounts")->callback([&session] { list(session); });
  auto named = [user](const char* command, const char* text) {
    CLI::App* sub = user->add_subcommand(command, text);
    sub->add_option("NAME", name, "Exact name of the user")->required();
    return sub;
  };
  CLI::App* adding = named("add", "Add a user; reads the password");
  adding->add_flag("--admin", administrator, "Make it an administrator");
  adding->callback([&session] { add(session); });
  named("remove", "Remove a user")->callback([&session] { remove(session); });
  named("passwd", "Change a password; reads the old one, then the new one")->callback([&session] {
    changePassword(session);
  });
  named("check", "Check a password")->callback([&session] { check(session); });
}

}  // namespace ctl
