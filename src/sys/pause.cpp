// SPDX-License-Identifier: Apache-2.0
#include "sys/pause.h"

#include <errno.h>
#include <time.h>

namespace kestrove::sys {

void pauseSeconds(unsigned seconds) {
  timespec left = {static_cast<time_t>(seconds), 0};
  while (nanosleep(&left, &left) == -1 && errno == EINTR) {
  }
}

}  // namespace kestrove::sys
