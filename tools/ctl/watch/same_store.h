// SPDX-License-Identifier: Apache-2.0
// Whoever watches for long may outlive the store.
#pragma once

namespace ctl {

// The store as it was when this was made.
class SameStore {
 public:
  SameStore();
  // Throws kNoStore when that store is gone, also where another has come.
  void require() const;

 private:
  int segment_;
};

}  // namespace ctl
