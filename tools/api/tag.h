// SPDX-License-Identifier: Apache-2.0
// The marks of what a table holds, as they stand in ETag, If-Match and If-None-Match.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/api/message.h"

namespace api {

// With its quotes. Equal texts have equal ones.
std::string tagOf(const std::string& text);

struct GivenTag {
  std::string text;  // with its quotes
  bool weak = false;
};

struct GivenTags {
  bool any = false;  // "*"
  std::vector<GivenTag> all = {};

  // A weak one says that something is much the same: for a change that is not enough.
  bool hasStrong(const std::string& tag) const;
  bool has(const std::string& tag) const;
};

// Nothing where the header is no list of tags.
std::optional<GivenTags> tagsIn(const std::string& header);

// What has to hold for a change; nothing where it is to be made whatever the table holds. Throws 400 for what is no
// list of tags: whoever sends that means to be careful.
std::optional<GivenTags> wantedTags(const Request& request);

}  // namespace api
