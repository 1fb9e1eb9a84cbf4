// SPDX-License-Identifier: Apache-2.0
// What the password file keeps of a password.
#pragma once

#include <stddef.h>

namespace kestrove {

class PasswordHash {
 public:
  // MD5 crypt with an empty salt. Hashes that are stored already must keep verifying, so the salt stays empty.
  explicit PasswordHash(const char* password);

  // False when the password cannot be hashed, as one of more than 511 characters.
  explicit operator bool() const { return text_[0] != '\0'; }
  const char* text() const { return text_; }

 private:
  static constexpr size_t kSize = 40;
  char text_[kSize] = {};
};

}  // namespace kestrove
