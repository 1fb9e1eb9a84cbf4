// SPDX-License-Identifier: Apache-2.0
// The operations whose orders are explored, by name.
#pragma once

#include <span>

#include "tests/explore/report.h"

namespace kestrove::explore {

enum OperationFlag : unsigned {
  kOften = 1,   // one of the most used: also explored in threes
  kKernel = 2,  // changes addresses, routes or rules of the kernel
  kBuilds = 4,  // builds the store: explored from a state without one
  kBrief = 8,   // much like another one, or in so many steps that it meets only some of the others
  kApart = 16,  // takes no lock as others do: meets only what it is meant for
};

// The calls of one process, one after the other. Between two of them others may come in; within one nobody may.
struct Operation {
  const char* name;
  unsigned flags;
  int (*call[kMostCalls])();  // up to the first null
};

std::span<const Operation> operations();

// Makes the store that every order starts from: small tables, the kernel in step with them, everything saved. 0, or
// what went wrong was said.
int setUp();

}  // namespace kestrove::explore
