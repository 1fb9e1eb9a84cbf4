// SPDX-License-Identifier: Apache-2.0
#include "sandbox/collector.h"

#include <fcntl.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/un.h>

#include "sandbox/files.h"
#include "sandbox/report.h"
#include "sandbox/stage.h"

namespace kestrove::sandbox {
namespace {

constexpr const char* kSocket = "/dev/log";

// Writers block when the queue is full, so it is long; a kernel that refuses the setting is merely slower.
void lengthenQueue() {
  sys::Descriptor limit(open("/proc/sys/net/unix/max_dgram_qlen", O_WRONLY | O_CLOEXEC));
  if (limit) (void)!write(limit.get(), "4096", 4);
}

}  // namespace

Collector::Collector()
    : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)),
      file_(open((kMarkers + "/syslog").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC)) {
  lengthenQueue();
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  strcpy(address.sun_path, kSocket);
  if (bind(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == -1 || !file_) {
    giveUp("no system log: %m");
  }
  chmod(kSocket, 0666);
}

void Collector::collect() const {
  char message[65536];
  ssize_t length = 0;
  while ((length = recv(socket_.get(), message, sizeof message, 0)) >= 0) {
    iovec parts[] = {{message, strnlen(message, static_cast<size_t>(length))},
                     {const_cast<char*>(kMessageEnd), sizeof kMessageEnd}};
    (void)!writev(file_.get(), parts, 2);
  }
}

}  // namespace kestrove::sandbox
