// SPDX-License-Identifier: Apache-2.0
// Programs of the appliance that tell whether the store's file lock is held while they run.
#pragma once

#include <string>
#include <vector>

#include "tests/support/peer.h"

namespace kestrove::testing {

class LockWatch {
 public:
  LockWatch();
  ~LockWatch();

  // From now on the program at that path does nothing but tell.
  void instead(const std::string& path);

  // What ran so far, in order: "NAME held" or "NAME free".
  std::vector<std::string> seen() const;

 private:
  Peer peer_;
};

}  // namespace kestrove::testing
