// SPDX-License-Identifier: Apache-2.0
// The lock that the system's own tools take before they change the password file.
#pragma once

#include "sys/descriptor.h"

namespace kestrove {

// Asked for a few times within a second, without an alarm: the caller's own stays set. The work goes on without it,
// with a warning in syslog, since the appliance must be able to part with a user.
class SystemPasswordLock {
 public:
  SystemPasswordLock();

 private:
  sys::Descriptor file_;  // closing it gives the lock back
};

}  // namespace kestrove
