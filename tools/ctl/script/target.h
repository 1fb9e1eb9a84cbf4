// SPDX-License-Identifier: Apache-2.0
// The store that a script leads to.
#pragma once

#include "tools/ctl/script/script.h"
#include "tools/ctl/settings/image.h"

namespace ctl {

enum class Joining {
  kMerge,   // the script adds and changes
  kReplace  // what the script has tables for becomes what it says
};

struct Target {
  Image store;
  std::vector<bool> changes;            // by line: whether it asks for something that the start does not have
  std::vector<Complaint> refused = {};  // lines that the library refuses, left out of the store
};

// Runs the lines on a copy of the appliance, which nothing leaves; the library itself takes or refuses them.
//
// The mode of the interfaces comes first, whatever its place in the script: a change of it switches policy routing.
// Merging, a route or an address that is there gets what its line says and keeps its place; rules that the script names
// stand at the numbers it gives them, in its order, and the others in their order around them, so that the same script
// changes nothing the second time. Replacing, management addresses, routes and rules begin empty; single values that it
// does not name stay, and so do users and, unless the script names one, the bridge's own IPv6 addresses.
Target targetOf(const Image& start, const Script& script, Joining joining);

}  // namespace ctl
