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
  kResourceUnavailable = 13,
  kNotWritable = 17
};

// The type in which a field is sent.
int typeOf(Kind kind);

}  // namespace snmp
