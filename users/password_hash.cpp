#include "users/password_hash.h"

#include <crypt.h>
#include <string.h>

namespace kestrove {
namespace {

constexpr char kSalt[] = "$1$";

}  // namespace

PasswordHash::PasswordHash(const char* password) {
  struct crypt_data work = {};
  const char* hash = crypt_r(password, kSalt, &work);
  if (hash && strncmp(hash, kSalt, strlen(kSalt)) == 0 && strlen(hash) < kSize) strcpy(text_, hash);
  explicit_bzero(&work, sizeof work);
}

}  // namespace kestrove
