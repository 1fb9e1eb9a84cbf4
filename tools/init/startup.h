// SPDX-License-Identifier: Apache-2.0
// The start of the appliance, step by step.
#pragma once

#include <stdexcept>
#include <string>

#include "tools/init/platform.h"

namespace init {

enum Exit : int {
  kBuilt = 0,
  kStoreExists = 1,   // and --replace was not given
  kUsage = 2,         // a wrong command line or platform file
  kNotBuilt = 3,      // no segment, no lock, no privilege, a library of another layout
  kUnconfigured = 4,  // built, but the configuration file is missing or cannot be read
  kIncomplete = 5,    // built, but a later step failed: the old account, the operating mode, the packet filter
  kLocked = 6,        // another process held the lock for too long; nothing was changed
  kNotPermitted = 7   // the lock file or the segment belongs to others
};

struct Options {
  std::string configPath = "/etc/config/kestrove.conf";
  std::string eventLogPath = "/var/log/kestrove/event.log";
  bool replace = false;
  double waitSeconds = 10;  // for the lock of a store that is there
  Platform platform;
};

class Failure : public std::runtime_error {
 public:
  Failure(Exit exit, const std::string& message) : std::runtime_error(message), exit_(exit) {}
  Exit exit() const { return exit_; }

 private:
  Exit exit_;
};

// Builds the store and brings the appliance up for the stored mode. Says on standard error what did not go well.
Exit startUp(const Options& options);

}  // namespace init
