#include "tools/ctl/session.h"

#include <arpa/inet.h>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/common/loading_note.h"
#include "tools/ctl/render.h"

namespace ctl {

Refusal refusal(const std::string& what) {
  const char* reason = shm_strerror(static_cast<int>(shm_errno));
  return {kRefused, what + ": " + (reason ? reason : "unknown reason"), static_cast<int>(shm_errno)};
}

int accept(int result, const std::string& what) {
  if (result < 0) throw refusal(what);
  return result;
}

void Session::show(const Json& result) const {
  // A text of the store may hold any bytes: what is no UTF-8 is shown as a replacement character.
  std::string text = json ? result.dump(2, ' ', false, Json::error_handler_t::replace) + "\n" : render(result);
  fwrite(text.data(), 1, text.size(), out);
}

void Session::done(const std::string& text) const {
  if (json) return show({{"done", text}});
  fprintf(out, "%s\n", text.c_str());
}

void requireStore() {
  shm_errno = SHM_OK;
  if (shm_lock() != 0) {
    if (shm_errno == SHM_EATTACH) throw Refusal(kNoStore, "there is no store (shm-init builds it)", SHM_EATTACH);
    throw refusal("the store cannot be locked");
  }
  shm_unlock();
  std::string note = tools::repairAbandonedLoad();
  if (!note.empty()) fprintf(stderr, "kestrovectl: %s\n", note.c_str());
}

std::string addressText(uint32_t address) { return ipv4_to_a(address); }

std::string address6Text(const uint8_t (&address)[16]) {
  char buffer[INET6_ADDRSTRLEN];
  return inet_ntop(AF_INET6, address, buffer, sizeof buffer) ? buffer : "::";
}

std::string hardwareText(const uint8_t (&address)[6]) {
  char buffer[18];
  snprintf(buffer, sizeof buffer, "%02X:%02X:%02X:%02X:%02X:%02X", address[0], address[1], address[2], address[3],
           address[4], address[5]);
  return buffer;
}

uint32_t parseAddress(const std::string& text) {
  char copy[64] = {};
  uint32_t address = 0;
  if (text.size() < sizeof copy) {
    memcpy(copy, text.data(), text.size());
    if (parseIpv4Address(copy, &address) == 0) return address;
  } else {
    shm_errno = SHM_EINVAL;
  }
  throw Refusal(kUsage, text + ": " + shm_strerror(static_cast<int>(shm_errno)), static_cast<int>(shm_errno));
}

void parseAddress6(const std::string& text, uint8_t (&out)[16]) {
  if (parseIpv6Address(text.c_str(), out) != 0) {
    throw Refusal(kUsage, text + ": " + shm_strerror(SHM_EIPV6), SHM_EIPV6);
  }
}

uint32_t parseMask(const std::string& text) {
  const bool digits = !text.empty() && text.size() <= 2 && text.find_first_not_of("0123456789") == std::string::npos;
  if (!digits) return parseAddress(text);
  int length = std::stoi(text);
  if (length > 32) throw Refusal(kUsage, text + ": " + shm_strerror(SHM_EMASK), SHM_EMASK);
  return length == 0 ? 0 : htonl(~0u << (32 - length));
}

const char* switchText(uint32_t value) {
  switch (value) {
    case SHM_ON: return "on";
    case SHM_OFF: return "off";
    default: return "invalid";
  }
}

}  // namespace ctl
