// SPDX-License-Identifier: Apache-2.0
// Where an engine hands over its counters that does not fold them into the store itself: a socket that takes one record
// in each datagram.
#pragma once

#include <string>

#include "sys/descriptor.h"
#include "tools/monitor/store.h"

namespace monitor {

class Records {
 public:
  // Reachable for root alone.
  explicit Records(const std::string& path);
  int descriptor() const { return socket_.get(); }

  // Folds what has come into the store, one hold of its lock for each record. Where the lock is not to be had the rest
  // stays in the socket: false.
  bool fold(Store& store);

 private:
  enum class Kind { kNone, kInterval, kSessions, kUnknown };
  Kind next();

  kestrove::sys::Descriptor socket_;
  char record_[1024] = {};
  Kind waiting_ = Kind::kNone;  // of the record that was read and is not folded yet
  bool toldOfUnknown_ = false;
};

}  // namespace monitor
