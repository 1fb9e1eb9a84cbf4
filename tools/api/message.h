// SPDX-License-Identifier: Apache-2.0
// What comes in and what goes out, without the socket between.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tools/ctl/session.h"

namespace api {

using Json = ctl::Json;

// Of headers the name in small letters; of a query the name and value without their escapes.
using Fields = std::map<std::string, std::string>;

struct Request {
  std::string method;
  std::string path;  // as it was sent, without the query
  Fields query;
  Fields headers;
  std::string body = {};
  std::string fault;  // why it cannot be understood at all; empty where it can

  std::string header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? "" : found->second;
  }
  bool has(const std::string& name) const { return headers.contains(name); }
};

struct Reply {
  int status = 200;
  std::string body = {};
  std::vector<std::pair<std::string, std::string>> headers = {};
  std::string file = {};  // whose content is the body; removed once it is open
  bool events = false;    // followed by events as they come

  std::string header(const std::string& name) const {
    for (const auto& [key, value] : headers) {
      if (key == name) return value;
    }
    return "";
  }
};

constexpr double kPatience = 2;  // seconds that a request waits for locks, for all together
constexpr char kJsonType[] = "application/json";

// Of names that are the same in capitals: headers, hosts.
inline std::string lower(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return text;
}

inline Reply jsonReply(int status, const Json& value) {
  return {.status = status, .body = ctl::jsonText(value, 2) + "\n", .headers = {{"Content-Type", kJsonType}}};
}

// Who came while others had the store is told when to come again.
inline Reply inviting(Reply reply) {
  if (reply.status == 503) reply.headers.emplace_back("Retry-After", "1");
  return reply;
}

// As kestrovectl --json prints one.
inline Reply errorReply(int status, const ctl::Refusal& refusal) {
  return jsonReply(status, {{"error", ctl::errorJson(refusal)}});
}

}  // namespace api
