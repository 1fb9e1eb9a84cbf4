// SPDX-License-Identifier: Apache-2.0
// Hash and complexity of a password.
#include <string.h>

#include <string_view>

#include "kestrove/users.h"
#include "store/fail.h"
#include "store/lock.h"
#include "users/password_hash.h"

namespace kestrove {
namespace {

constexpr size_t kShortestPassword = 8;
constexpr size_t kLongestPassword = 31;

constexpr const char* kRequiredSets[] = {
    "abcdefghijklmnopqrstuvwxyz",
    "ABCDEFGHIJKLMNOPQRSTUVWXYZ",
    "1234567890",
    "_!-.;:<>,[]{}\\|()*&^%$#@`~'+=?/\"",
};

// From this many characters less than the old password had, any new one is far enough from it.
constexpr size_t kFreeShortening = 4;

// The number of characters of the new password that the old one does not give, each old one being given once.
size_t difference(std::string_view password, std::string_view old) {
  char left[kLongestPassword + kFreeShortening];
  memcpy(left, old.data(), old.size());
  size_t remaining = old.size();
  size_t count = password.size();
  for (char c : password) {
    char* found = static_cast<char*>(memchr(left, c, remaining));
    if (!found) continue;
    *found = left[--remaining];
    --count;
  }
  explicit_bzero(left, sizeof left);
  return count;
}

// Four characters must differ, one less for each that the new password is shorter.
bool farEnough(std::string_view password, std::string_view old) {
  size_t shorter = old.size() > password.size() ? old.size() - password.size() : 0;
  return shorter >= kFreeShortening || difference(password, old) >= kFreeShortening - shorter;
}

[[nodiscard]] int checkPassword(std::string_view password, const char* old) {
  if (password.size() < kShortestPassword || password.size() > kLongestPassword) return fail(SHM_ERANGE);
  for (const char* set : kRequiredSets) {
    if (password.find_first_of(set) == password.npos) return fail(SHM_EINVAL);
  }
  return old && !farEnough(password, old) ? fail(SHM_EPASSWORD) : 0;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int encryptPasswd(const char* password, char* hashOut) {
  if (!password || !hashOut) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  PasswordHash hash(password);
  if (!hash) return fail(SHM_ESYSTEM);
  strcpy(hashOut, hash.text());
  return 0;
}

int validatePasswordComplexity(const char* password, const char* oldPassword) {
  if (!password) return fail(SHM_EINVAL);
  StoreLock lock;
  return lock ? checkPassword(password, oldPassword) : -1;
}
