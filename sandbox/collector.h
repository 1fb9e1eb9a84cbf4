// SPDX-License-Identifier: Apache-2.0
// The appliance's system log.
#pragma once

#include "sys/descriptor.h"

namespace kestrove::sandbox {

// Ends each message in the log's file. A message may hold line feeds, but never a zero.
constexpr char kMessageEnd[] = {'\0', '\n'};

class Collector {
 public:
  // Binds /dev/log and opens the log's file; to be called in the finished root.
  Collector();

  int socket() const { return socket_.get(); }
  void collect() const;  // appends every message that is there, without waiting

 private:
  sys::Descriptor socket_;
  sys::Descriptor file_;
};

}  // namespace kestrove::sandbox
