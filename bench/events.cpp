// SPDX-License-Identifier: Apache-2.0
// Logging an event, beside what it cannot do without: a syslog datagram, a lock pair and a write of the whole image.
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include "bench/floors.h"
#include "bench/turns.h"
#include "kestrove/kestrove.h"

namespace {

constexpr char kDatagram[] = "<14>Nov 21 11:52:06 kestrove-bench: Event logged: Information, Serial, CLI Login";

int connectSyslog() {
  int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  strcpy(address.sun_path, "/dev/log");
  if (fd == -1 || connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) exit(2);
  return fd;
}

void logging(benchmark::State& state) {
  openlog("kestrove-bench", LOG_NDELAY, LOG_USER);
  int syslogSocket = connectSyslog();
  auto work = [&] {
    if (logEvent(24, 3, "admin") != 0) state.SkipWithError("the event was not logged");
  };
  auto floor = [&] {
    if (send(syslogSocket, kDatagram, sizeof kDatagram - 1, MSG_NOSIGNAL) < 0) exit(2);
    bench::lockPair();
    bench::writeEventImage();
  };
  bench::inTurns(state, bench::byProcessor(work), bench::byProcessor(floor));
  close(syslogSocket);
}
BENCH_ROW(logging);

}  // namespace
