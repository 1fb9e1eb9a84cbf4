// SPDX-License-Identifier: Apache-2.0
#include "tools/api/digest.h"

#include <nettle/sha2.h>
#include <sys/random.h>

#include <cerrno>
#include <cstdint>

#include "tools/ctl/session.h"

namespace api {
namespace {

template <size_t N>
std::string hexadecimal(const uint8_t (&bytes)[N]) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const uint8_t byte : bytes) text += {kDigits[byte >> 4], kDigits[byte & 15]};
  return text;
}

}  // namespace

std::string randomName() {
  uint8_t bytes[32];
  ssize_t length = 0;
  while ((length = getrandom(bytes, sizeof bytes, 0)) == -1 && errno == EINTR) continue;
  if (length != sizeof bytes) throw ctl::systemRefusal("random numbers", errno);
  return hexadecimal(bytes);
}

std::string digest(const std::string& text) {
  struct sha256_ctx context;
  sha256_init(&context);
  sha256_update(&context, text.size(), reinterpret_cast<const uint8_t*>(text.data()));
  uint8_t bytes[SHA256_DIGEST_SIZE];
  sha256_digest(&context, sizeof bytes, bytes);
  return hexadecimal(bytes);
}

bool sameSecret(const std::string& one, const std::string& other) {
  unsigned differs = one.size() != other.size();
  for (size_t i = 0; i < one.size() && i < other.size(); ++i) differs |= static_cast<unsigned>(one[i] ^ other[i]);
  return differs == 0;
}

}  // namespace api
