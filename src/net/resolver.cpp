// SPDX-License-Identifier: Apache-2.0
// The name server in the resolver's file.
#include <stdio.h>
#include <unistd.h>

#include "kestrove/codes.h"
#include "kestrove/opmode.h"
#include "kestrove/text.h"
#include "store/lock.h"
#include "sys/stream.h"

namespace kestrove {
namespace {

constexpr char kResolverFile[] = "/etc/resolv.conf";

int writeNameServer(uint32_t addr) {
  sys::Stream file(fopen(kResolverFile, "we"));
  if (!file) return -1;
  // No line feed behind the address: kept on purpose.
  if (fprintf(file.get(), "nameserver %s", ipv4_to_a(addr)) < 0) return -1;
  return file.close() == 0 ? 0 : -1;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int removeResolvConf(void) { return unlink(kResolverFile); }

int changeDnsServerIp(uint32_t addr) {
  StoreLock lock;
  if (!lock) return -1;
  OpModeContext context = {};
  context.mode = shm->config.opModeState;
  context.l7Mode = shm->config.opModeSubState;
  if (writeNameServer(addr) != 0) return -1;
  OpModeState(SHM_MODE_EVENT_DNS, &context);  // no mode handles it; the file is written
  return 0;
}
