// SPDX-License-Identifier: Apache-2.0
// Which row of the table a request is for.
#pragma once

#include <string>
#include <vector>

#include "tools/api/endpoint.h"
#include "tools/api/message.h"

namespace api {

struct Route {
  const Endpoint* endpoint = nullptr;
  Fields parts;  // of the path, by the names of its places
};

// Throws 404 for a path that no row has, 405 with Allow for a method that none of its rows has, 400 for a path whose
// escapes make no sense.
Route routeOf(const std::string& method, const std::string& path);

// "%2F" as "/". False for an escape that is none, and for a zero.
bool unescape(const std::string& text, std::string& out);

// The names of the places: "{position}" of "rule change {position}".
std::vector<std::string> placesIn(const std::string& text);

}  // namespace api
