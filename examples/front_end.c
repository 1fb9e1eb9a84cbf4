/* SPDX-License-Identifier: Apache-2.0 */
/* A front end in C: front_end show, front_end compression on|off, front_end rate BITS_PER_SECOND. */
#include <kestrove/kestrove.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int failed(const char* what) {
  fprintf(stderr, "%s: %s\n", what, shm_strerror((int)shm_errno));
  return 1;
}

/* No success clears the code, so it is cleared before: SHM_EIO then tells of a file that does not have the change. */
static int set(int item, uint32_t value) {
  shm_errno = SHM_OK;
  if (setKestroveConfigItem(item, value, SHM_SOURCE_SSH, "admin") != 0) return failed("refused");
  return shm_errno == SHM_EIO ? failed("applied, not saved") : 0;
}

static int showItems(void) {
  uint32_t rate, compression;
  if (getKestroveConfigItem(SHM_ITEM_WAN_LINK_RATE, &rate) != 0) return failed("rate");
  if (getKestroveConfigItem(SHM_ITEM_COMPRESSION, &compression) != 0) return failed("compression");
  printf("rate %u\ncompression %s\n", (unsigned)rate, compression == SHM_ON ? "on" : "off");
  return 0;
}

static int showNewestEvent(void) {
  char line[256];
  int count = getEventCount();
  if (count > 0 && getEventString((uint32_t)count - 1, line, sizeof line, 0) > 0) printf("%s\n", line);
  return count < 0 ? failed("events") : 0;
}

static int showRoutes(void) {
  RouteEntry route;
  int got = getFirstRouteTableEntry(&route);
  for (; got == 0; got = getNextRouteTableEntry(route.destination, route.netmask, &route)) {
    printf("route %s/%d", ipv4_to_a(route.destination), netMaskCIDRNumber(route.netmask));
    printf(" by %s\n", ipv4_to_a(route.gateway)); /* the buffer of the first text */
  }
  return shm_errno == SHM_ENOENT ? 0 : failed("routes");
}

/* One hold over all of it: nobody changes the store between the lines. */
static int show(void) {
  if (kestrove_hold() != 0) return failed("store");
  int result = showItems() || showNewestEvent() || showRoutes();
  return kestrove_release() == 0 ? result : failed("store");
}

int main(int count, char** words) {
  const char *verb = count > 1 ? words[1] : "", *word = count > 2 ? words[2] : "";
  if (strcmp(verb, "show") == 0) return show();
  if (strcmp(verb, "rate") == 0) return set(SHM_ITEM_WAN_LINK_RATE, (uint32_t)strtoul(word, NULL, 10));
  if (strcmp(verb, "compression") != 0) return 2;
  /* Another word is a value that the library refuses, as is a rate without digits. */
  return set(SHM_ITEM_COMPRESSION, strcmp(word, "on") == 0 ? SHM_ON : strcmp(word, "off") == 0 ? SHM_OFF : 0);
}
