// SPDX-License-Identifier: Apache-2.0
// Hashes and the rules for new passwords.

#include <gmock/gmock.h>
#include <stdio.h>

#include "tests/support/memory.h"
#include "tests/users/users_fixture.h"

namespace kestrove::testing {
namespace {

class PasswordTest : public UsersTest {};

struct HashRow {
  const char* password;
  const char* hash;
};
constexpr HashRow kHashes[] = {
    {"x", "$1$$LP5.V3ajGqHDdXW6XwZQy."},
    {"Passw0rd!", "$1$$MJvR0jmujVNw4WBw8xcUk/"},
    {"Abcdefg1!", "$1$$t8m4fYOP3uFKgsm33R2IE."},
    {"Tr0ub4dor&3", "$1$$eSnxjVi2L4bxmGsHXnbD01"},
};

TEST_F(PasswordTest, HashesAreMd5CryptWithAnEmptySalt) {
  char hash[64];
  for (const HashRow& row : kHashes) {
    EXPECT_EQ(0, encryptPasswd(row.password, hash));
    EXPECT_STREQ(row.hash, hash);
  }
}

TEST_F(PasswordTest, PasswordTooLongToHash) {
  char hash[64] = "as it was";
  std::string longest(511, 'a');
  EXPECT_FAILS_WITH(SHM_ESYSTEM, encryptPasswd((longest + "a").c_str(), hash));
  EXPECT_STREQ("as it was", hash);
  EXPECT_EQ(0, encryptPasswd(longest.c_str(), hash));
  EXPECT_STREQ("$1$$KRgoi8TdGVY66fZcL52h71", hash);
}

TEST_F(PasswordTest, NoTextIsAnInvalidArgument) {
  char hash[64];
  EXPECT_FAILS_WITH(SHM_EINVAL, encryptPasswd(nullptr, hash));
  EXPECT_FAILS_WITH(SHM_EINVAL, encryptPasswd("x", nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, validatePasswordComplexity(nullptr, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, validatePasswordComplexity(nullptr, kGoodPassword));
}

TEST_F(PasswordTest, WithoutAStore) {
  dropStore();
  char hash[64];
  EXPECT_FAILS_WITH(SHM_EATTACH, encryptPasswd("x", hash));
  EXPECT_FAILS_WITH(SHM_EATTACH, validatePasswordComplexity(kGoodPassword, nullptr));
}

struct ComplexityRow {
  const char* password;
  int code;
};
constexpr ComplexityRow kComplexities[] = {
    {"Passw0rd!", 0},
    {"Pass1!aa", 0},
    {"Pass1!a", SHM_ERANGE},
    {"Pass1!", SHM_ERANGE},
    {"", SHM_ERANGE},
    {"Passw0rd!Passw0rd!Passw0rd!1234", 0},
    {"Passw0rd!Passw0rd!Passw0rd!12345", SHM_ERANGE},
    {"password1!", SHM_EINVAL},
    {"PASSWORD1!", SHM_EINVAL},
    {"Password!!", SHM_EINVAL},
    {"Password11", SHM_EINVAL},
    {"Password 1", SHM_EINVAL},
    {"P\xE4ssw0rd\xA7", SHM_EINVAL},
};

TEST_F(PasswordTest, LengthAndSets) {
  for (const ComplexityRow& row : kComplexities) {
    if (row.code == 0) {
      EXPECT_EQ(0, validatePasswordComplexity(row.password, nullptr)) << row.password;
    } else {
      EXPECT_FAILS_WITH(row.code, validatePasswordComplexity(row.password, nullptr));
    }
  }
}

TEST_F(PasswordTest, EveryPunctuationCharacterCounts) {
  std::string found;
  for (int c = 1; c < 256; ++c) {
    std::string password = std::string("Passw0rd") + static_cast<char>(c);
    if (validatePasswordComplexity(password.c_str(), nullptr) == 0) found += static_cast<char>(c);
  }
  EXPECT_EQ("!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~", found);
  EXPECT_EQ(32u, found.size());
}

struct DifferenceRow {
  const char* password;
  const char* old;
  bool accepted;
};
// The number of characters that the old password does not give, beside the number asked for.
constexpr DifferenceRow kDifferences[] = {
    {"Abcdefg2!", "Abcdefg1!", false},     // 1 of 4
    {"Xyzuvw9#k", "Abcdefg1!", true},      // 9 of 4
    {"Abcde123!", "Abcdefg9!", false},     // 3 of 4
    {"Abcd123x!", "Abcdefg9!", true},      // 4 of 4
    {"Abcdefg1!", "Abcdefg1!", false},     // the same
    {"!1gfedcbA", "Abcdefg1!", false},     // the same characters
    {"Abcdefg1!xyz", "Abcdefg1!", false},  // longer: 3 of 4
    {"Abcdefg1!wxyz", "Abcdefg1!", true},  // longer: 4 of 4
    {"Aaaaaaa1!", "Abcdefg1!", true},      // one a is given once: 6 of 4
    {"Abcdef1!", "Abcdefg1!", false},      // 1 shorter: 0 of 3
    {"Abcdxy2!", "Abcdefg1!", true},       // 1 shorter: 3 of 3
    {"Abcdex2!", "Abcdefg1!", false},      // 1 shorter: 2 of 3
    {"Abcdefx1!", "Abcdefghi1!", false},   // 2 shorter: 1 of 2
    {"Abcdexy1!", "Abcdefghi1!", true},    // 2 shorter: 2 of 2
    {"Abcdefg1!", "Abcdefghij1!", false},  // 3 shorter: 0 of 1
    {"Abcdefx1!", "Abcdefghij1!", true},   // 3 shorter: 1 of 1
    {"Abcdefg1!", "Abcdefghijk1!", true},  // 4 shorter
    {"Abcdefg1!", "Abcdefg1!Abcdefg1!Abcdefg1!Abcdefg1!Abcdefg1!", true},
    {"Abcdefg1!", "", true},  // the old one gives nothing
};

TEST_F(PasswordTest, DistanceFromTheOldPassword) {
  for (const DifferenceRow& row : kDifferences) {
    if (row.accepted) {
      EXPECT_EQ(0, validatePasswordComplexity(row.password, row.old)) << row.password << " after " << row.old;
    } else {
      SCOPED_TRACE(row.password);
      EXPECT_FAILS_WITH(SHM_EPASSWORD, validatePasswordComplexity(row.password, row.old));
    }
  }
}

TEST_F(PasswordTest, OldPasswordDoesNotExcuseAWeakOne) {
  EXPECT_FAILS_WITH(SHM_ERANGE, validatePasswordComplexity("Ab1!", "x"));
  EXPECT_FAILS_WITH(SHM_EINVAL, validatePasswordComplexity("abcdefgh1!", "x"));
}

TEST_F(PasswordTest, NothingOfAPasswordStaysInMemory) {
  char password[] = "?ebra7?stripes";
  const std::string rest(password + 1);
  char hash[64];
  password[0] = 'Z';  // the text is whole during the calls alone
  EXPECT_EQ(1, occurrences('Z', rest)) << "the search finds what is there";
  EXPECT_EQ(0, encryptPasswd(password, hash));
  EXPECT_EQ(0, validatePasswordComplexity("Giraffe8?stripes", password));
  password[0] = '?';
  EXPECT_EQ(0, occurrences('Z', rest));
}

}  // namespace
}  // namespace kestrove::testing
