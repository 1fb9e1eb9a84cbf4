// SPDX-License-Identifier: Apache-2.0
// The members of a result that --fields names.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/session.h"

namespace ctl {

// "A,B" as its names.
std::vector<std::string> fieldNames(const std::string& list);

// The records of a result: of an object whose only member is a list of objects that list, otherwise the result itself.
Json recordsOf(const Json& result);

// These members of each record, in this order; empty where a record lacks one. What has no members stays as it is.
Json fieldsOf(const Json& result, const std::vector<std::string>& names);

}  // namespace ctl
