// SPDX-License-Identifier: Apache-2.0
// Numbers of the protocol, without the headers of its library.
#pragma once

#include "tools/snmp/objects.h"

namespace snmp {

enum Error {
  kNoError = 0,
  kGenErr = 5,
  kNoAccess = 6,
  kWrongType = 7,
  kWrongLength = 8,
  kWrongValue = 10,
  kNoCreation = 11,
  kResourceUnavailable = 13,
  kNotWritable = 17
};

enum Type { kInteger = 0x02, kOctets = 0x04, kAddress = 0x40, kUnsigned = 0x42, kCounter64 = 0x46 };

// The type in which a field is sent.
constexpr int typeOf(Kind kind) {
  switch (kind) {
    case Kind::kNumber:
    case Kind::kGauge: return kUnsigned;
    case Kind::kInteger:
    case Kind::kSwitch: return kInteger;
    case Kind::kCounter: return kCounter64;
    case Kind::kAddress: return kAddress;
    case Kind::kAddress6:
    case Kind::kHardware:
    case Kind::kText: break;
  }
  return kOctets;
}

}  // namespace snmp
