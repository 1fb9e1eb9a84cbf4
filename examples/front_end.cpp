// SPDX-License-Identifier: Apache-2.0
// A front end in C++: front_end show, front_end compression on|off, front_end rate BITS_PER_SECOND.
#include <kestrove/kestrove.h>

#include <cstdio>
#include <cstdlib>
#include <string>

class Hold {  // nobody else changes the store in its scope
 public:
  Hold() : held_(kestrove_hold() == 0) {}
  ~Hold() {
    if (held_) kestrove_release();
  }
  Hold(const Hold&) = delete;

 private:
  bool held_;
};

static int failed(const char* what) {
  std::fprintf(stderr, "%s: %s\n", what, shm_strerror(int(shm_errno)));
  return 1;
}

// No success clears the code, so it is cleared before: SHM_EIO then tells of a file that does not have the change.
static int set(int item, uint32_t value) {
  shm_errno = SHM_OK;
  if (setKestroveConfigItem(item, value, SHM_SOURCE_SSH, "admin") != 0) return failed("refused");
  return shm_errno == SHM_EIO ? failed("applied, not saved") : 0;
}

static int show() {
  Hold hold;  // refused: then the first question is refused, too
  uint32_t rate, compression;
  if (getKestroveConfigItem(SHM_ITEM_WAN_LINK_RATE, &rate) != 0 ||
      getKestroveConfigItem(SHM_ITEM_COMPRESSION, &compression) != 0)
    return failed("items");
  std::printf("rate %u\ncompression %s\n", unsigned(rate), compression == SHM_ON ? "on" : "off");
  char line[256];
  int count = getEventCount();
  if (count > 0 && getEventString(uint32_t(count) - 1, line, sizeof line, 0) > 0) std::puts(line);
  RouteEntry route;
  for (int got = getFirstRouteTableEntry(&route); got == 0;
       got = getNextRouteTableEntry(route.destination, route.netmask, &route)) {
    std::string to = ipv4_to_a(route.destination);  // a copy: the next text takes its buffer
    std::printf("route %s/%d by %s\n", to.c_str(), netMaskCIDRNumber(route.netmask), ipv4_to_a(route.gateway));
  }
  return shm_errno == SHM_ENOENT ? 0 : failed("routes");
}

int main(int count, char** words) {
  const std::string verb = count > 1 ? words[1] : "", word = count > 2 ? words[2] : "";
  if (verb == "show") return show();
  if (verb == "rate") return set(SHM_ITEM_WAN_LINK_RATE, uint32_t(std::strtoul(word.c_str(), nullptr, 10)));
  if (verb != "compression") return 2;
  // Another word is a value that the library refuses, as is a rate without digits.
  return set(SHM_ITEM_COMPRESSION, word == "on" ? SHM_ON : word == "off" ? SHM_OFF : 0);
}
