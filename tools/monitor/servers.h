// SPDX-License-Identifier: Apache-2.0
// Has the servers told when the management addresses that are in use have changed, whoever changed them.
#pragma once

#include <optional>
#include <string>

#include "tools/monitor/process.h"
#include "tools/monitor/store.h"

namespace monitor {

class Servers {
 public:
  // What they were told last is kept in that file, for a helper that comes after this one.
  explicit Servers(std::string note);

  void look(Store& store, Milliseconds now);

 private:
  bool takeIn();
  bool settled(const ShmData& data, Milliseconds now);
  void tell(const std::string& addresses, bool webIsOn);
  void complain(const std::string& complaint);

  std::string path_;
  std::optional<std::string> told_;
  std::string seen_;        // the store's table
  std::string compared_;    // as it was when nothing had to be done
  Milliseconds since_ = 0;  // of what is seen
  Process telling_;
  std::string toNote_;  // when it is over
  kestrove::sys::Descriptor words_;
  std::string complaint_;  // the last one that was said
};

}  // namespace monitor
