// SPDX-License-Identifier: Apache-2.0
// A place that a process in new namespaces cannot leave traces in.
#pragma once

#include <sys/types.h>

#include <vector>

namespace ctl {

class PrivatePlace {
 public:
  // To be made before the process goes into its namespaces, while it can still see who and where it is.
  PrivatePlace();

  // Makes everything that is mounted read-only, lays scratch copies over what the library writes, gives up the
  // privileges that reach beyond namespaces and goes silent. With a user namespace of its own the process becomes root
  // of that first. Throws kSystem.
  void enter(bool ownUserNamespace) const;

 private:
  void takePrivateLockFile() const;

  std::vector<int> lockFiles_;  // descriptors of the appliance's lock file that this process has
  uid_t user_;
  gid_t group_;
};

}  // namespace ctl
