// SPDX-License-Identifier: Apache-2.0
// How often the configuration file is put in place.
#pragma once

#include <sys/inotify.h>
#include <unistd.h>

#include "tests/support/files.h"
#include "tests/support/store.h"

namespace kestrove::testing {

// Counts the files moved into place since it was made, or since the last count.
class SaveCounter {
 public:
  // Both ends of a move are watched, because the kernel puts equal events in a row together.
  SaveCounter() : fd_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    EXPECT_GE(inotify_add_watch(fd_, "/etc/config", IN_MOVED_FROM | IN_MOVED_TO), 0);
  }
  ~SaveCounter() { close(fd_); }
  SaveCounter(const SaveCounter&) = delete;
  SaveCounter& operator=(const SaveCounter&) = delete;

  int count() {
    int saves = 0;
    alignas(inotify_event) char events[16384];
    ssize_t length;
    while ((length = read(fd_, events, sizeof events)) > 0) {
      for (ssize_t at = 0; at < length;) {
        const auto* event = reinterpret_cast<const inotify_event*>(events + at);
        if (event->mask & IN_MOVED_TO) ++saves;
        at += static_cast<ssize_t>(sizeof *event + event->len);
      }
    }
    return saves;
  }

 private:
  int fd_;
};

}  // namespace kestrove::testing
