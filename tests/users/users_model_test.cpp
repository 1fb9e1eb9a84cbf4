// SPDX-License-Identifier: Apache-2.0
// Users against a model of the table and the password file, with random operations; random bytes in the store.

#include <gmock/gmock.h>

#include <random>

#include "tests/users/users_fixture.h"

namespace kestrove::testing {
namespace {

struct Account {
  std::string name;
  int32_t superUser;
};

// The table as a list and the password file as a list of names.
class Model {
 public:
  std::vector<Account> table;
  std::vector<std::string> file;

  // 0, or the code of the refusal.
  unsigned add(const std::string& name, int32_t superUser, const char* password) {
    if (table.size() == SHM_USERS) return SHM_EFULL;
    if (known(name)) return SHM_EEXIST;
    if (password && strcmp(password, kGoodPassword) != 0) return undone(name, SHM_ERANGE);
    table.push_back({name, superUser});
    if (password) file.push_back(name);
    return 0;
  }

  // The result, with the code that goes with 0.
  int remove(const std::string& name) {
    if (!known(name)) return 0;
    auto entry = std::find_if(table.begin(), table.end(), [&](const Account& a) { return a.name == name; });
    if (entry == table.end()) return 0;
    table.erase(entry);
    std::erase(file, name);
    return 1;
  }

  int admins() const {
    return static_cast<int>(std::count_if(table.begin(), table.end(), [](auto& a) { return a.superUser == 1; }));
  }

 private:
  bool inFile(const std::string& name) const { return std::find(file.begin(), file.end(), name) != file.end(); }
  bool known(const std::string& name) const {
    auto begins = [&](const Account& account) { return account.name.starts_with(name); };
    return inFile(name) && std::any_of(table.begin(), table.end(), begins);
  }
  // The account is taken off again, and with it a password line that it happened to have.
  unsigned undone(const std::string& name, unsigned code) {
    std::erase(file, name);
    return code;
  }
};

class UsersModelTest : public UsersTest {
 protected:
  std::string someName() { return kNames[random() % std::size(kNames)]; }

  void step() {
    std::string name = someName();
    shm_errno = 0;
    if (random() % 2 == 0) {
      ASSERT_EQ(model.remove(name), removeUser(name.c_str())) << name;
      return;
    }
    UserAccount account = accountNamed(name, static_cast<int32_t>(random() % 3));
    const char* passwords[] = {nullptr, kGoodPassword, kGoodPassword, kGoodPassword, "short"};
    const char* password = passwords[random() % std::size(passwords)];
    unsigned expected = model.add(name, account.superUser, password);
    ASSERT_EQ(expected == 0 ? 0 : -1, addUser(&account, password)) << name;
    if (expected) {
      ASSERT_EQ(expected, shm_errno) << name;
    }
  }

  void compare() {
    ASSERT_EQ(static_cast<int>(model.table.size()), getUserCount());
    ASSERT_EQ(model.admins(), getAdminUserCount());
    for (size_t i = 0; i < model.table.size(); ++i) ASSERT_EQ(model.table[i].name, slots()[i]);
    ASSERT_EQ(model.file, namesInFile());
    ASSERT_EQ(0, shm_lock_count);
  }

  static std::vector<std::string> namesInFile() {
    std::vector<std::string> names;
    std::string file = readFile(kPasswd).substr(strlen(kSystemLines));
    for (size_t at = 0; at < file.size(); at = file.find('\n', at) + 1)
      names.push_back(file.substr(at, file.find(':', at) - at));
    return names;
  }

  static constexpr const char* kNames[] = {"alice", "alice2", "alice23", "bobby", "carol", "david", "elena", "frank"};
  std::mt19937 random{42};
  Model model;
};

TEST_F(UsersModelTest, ThousandsOfOperations) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  for (int i = 0; i < 4000; ++i) {
    ASSERT_NO_FATAL_FAILURE(step()) << i;
    ASSERT_NO_FATAL_FAILURE(compare()) << i;
  }
}

TEST_F(UsersModelTest, RandomBytesInTheStore) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  UserAccount out;
  for (int i = 0; i < 2000; ++i) {
    auto* bytes = reinterpret_cast<uint8_t*>(&shm->config.adminUserCount);
    for (size_t k = 0; k < sizeof(UserAccount) * SHM_USERS + 8; ++k) bytes[k] = static_cast<uint8_t>(random());
    const uint32_t behind = shm->config.kestroveRestartCount;
    for (int index = -1; index < 7; ++index) getUserTableEntry(index, &out);
    std::string name(shm->config.users[random() % 5].username, 32);
    getUserAccount(name.c_str(), &out);
    authenticateUser(name.c_str(), nullptr);
    getCurrentUser(&out);
    shm_addUser(&out);
    removeUser(name.c_str());
    removeUser("root");
    ASSERT_EQ(behind, shm->config.kestroveRestartCount);
    ASSERT_EQ(0, shm_lock_count);
  }
  EXPECT_EQ(kSystemLines, readFile(kPasswd));
}

}  // namespace
}  // namespace kestrove::testing
