// SPDX-License-Identifier: Apache-2.0
// What a restart or a timer would take back, said once in the system log when it comes and once when it goes.
#pragma once

#include <string>

#include "tools/monitor/store.h"

namespace monitor {

class Unkept {
 public:
  void look(const Store& store);

 private:
  void tell(bool& told, bool now, const char* came, const char* went) const;

  std::string mark_;  // of the settings when they were compared last
  bool unsaved_ = false;
  bool unconfirmed_ = false;
};

}  // namespace monitor
