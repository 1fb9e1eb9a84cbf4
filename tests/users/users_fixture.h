// SPDX-License-Identifier: Apache-2.0
// A password file of our own and accounts with names.
#pragma once

#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kestrove/kestrove.h"
#include "tests/support/files.h"
#include "tests/support/store.h"

namespace kestrove::testing {

constexpr char kSystemLines[] =
    "root:x:0:0:root:/root:/bin/bash\n"
    "daemon:*:1:1::/:/bin/false\n";
constexpr char kGoodPassword[] = "Passw0rd!";
constexpr char kGoodHash[] = "$1$$MJvR0jmujVNw4WBw8xcUk/";

inline UserAccount accountNamed(const std::string& name, int32_t superUser = 0) {
  UserAccount account = {};
  memcpy(account.username, name.data(), std::min(name.size(), sizeof account.username));
  account.superUser = superUser;
  return account;
}

// A line of the password file for a user with a known password.
inline std::string lineOf(const std::string& name) {
  return name + ":" + kGoodHash + ":4711:0::/root:/usr/bin/serialUi.sh\n";
}

class UsersTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    unlink(kConfigFile);
    writeFile("/etc/nsswitch.conf", "passwd: files\n");  // no users from elsewhere
    writeFile(kPasswd, kSystemLines);
  }

  // Puts accounts straight into the table.
  static void fillWith(const std::vector<UserAccount>& accounts) {
    int32_t count = 0;
    shm->config.adminUserCount = 0;
    for (UserAccount& user : shm->config.users) user = {};
    for (const UserAccount& account : accounts) {
      shm->config.users[count++] = account;
      shm->config.adminUserCount += account.superUser == 1;
    }
    shm->config.userCount = count;
  }

  // The names of all five slots; free ones are empty.
  static std::vector<std::string> slots() {
    std::vector<std::string> names;
    for (const UserAccount& user : shm->config.users) {
      names.emplace_back(user.username, strnlen(user.username, sizeof user.username));
    }
    return names;
  }

  static bool saved() { return unlink(kConfigFile) == 0; }
};

}  // namespace kestrove::testing
