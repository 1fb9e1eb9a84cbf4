// SPDX-License-Identifier: Apache-2.0
#include "users/password_hash.h"

#include <crypt.h>
#include <string.h>

namespace kestrove {
namespace {

constexpr char kSalt[] = "$1$";

// The hashing itself leaves pieces of the password on the stack, in what were its frames: below the caller's.
[[gnu::noinline]] void wipeStackBelow() {
  char frames[16 * 1024];
  explicit_bzero(frames, sizeof frames);
}

}  // namespace

PasswordHash::PasswordHash(const char* password) {
  struct crypt_data work = {};
  const char* hash = crypt_r(password, kSalt, &work);
  if (hash && strncmp(hash, kSalt, strlen(kSalt)) == 0 && strlen(hash) < kSize) strcpy(text_, hash);
  explicit_bzero(&work, sizeof work);
  wipeStackBelow();
}

}  // namespace kestrove
