// SPDX-License-Identifier: Apache-2.0
// A request that makes sense for each row of the table of requests.
#pragma once

#include <string>
#include <utility>

#include "tests/api/api_fixture.h"
#include "tools/api/router.h"

namespace kestrove::testing {

inline Json sampleOperation() {
  return {{"method", "PUT"}, {"path", "/items/compression"}, {"body", {{"value", "on"}}}};
}

// A value of each place in a path, and of each member of a body, that makes sense there.
inline Json sample(const api::Endpoint& row, const std::string& name) {
  const bool six = std::string(row.path).starts_with("/routes6");
  const std::pair<const char*, Json> kSamples[] = {{"item", "compression"},
                                                   {"value", "on"},
                                                   {"position", "0"},
                                                   {"to", "0"},
                                                   {"port", "lan"},
                                                   {"lan", 10},
                                                   {"wan", 20},
                                                   {"on", true},
                                                   {"length", "16"},
                                                   {"password", kPassword},
                                                   {"oldPassword", kPassword},
                                                   {"user", "alice"},
                                                   {"time", "2026-11-22T04:45:25Z"},
                                                   {"which", "all"},
                                                   {"number", "2"},
                                                   {"method", "PUT"},
                                                   {"path", "/items/compression"},
                                                   {"operations", Json::array({sampleOperation()})},
                                                   {"newPassword", "Xyzuvw9#k"}};
  for (const auto& [known, value] : kSamples) {
    if (name == known) return value;
  }
  if (row.path == std::string("/dhcp")) return "nosuch0";
  if (name == "name" && std::string(row.path).starts_with("/interfaces")) return "eth7";
  if (name == "name") return row.method == std::string("POST") ? "carol" : row.fields.empty() ? "guest" : "bertha";
  if (name == "script") return "set wanLinkRate 4096000\n";
  if (name == "revision") return "1";
  if (name == "destination") return six ? "fd08::/16" : "10.8.0.0/16";
  if (name == "gateway") return six ? "fd01::1" : "192.0.2.254";
  if (std::string(row.path).starts_with("/addresses")) return "192.0.2.9";
  return six ? "fd09::" : "10.9.0.0";
}

inline std::string samplePath(const api::Endpoint& row) {
  std::string path = row.path;
  for (const std::string& name : api::placesIn(row.path)) {
    const std::string mark = "{" + name + "}";
    path.replace(path.find(mark), mark.size(), sample(row, name).get<std::string>());
  }
  return path;
}

inline Json sampleBody(const api::Endpoint& row) {
  if (row.reads() || row.method == std::string("DELETE")) return nullptr;
  Json body = Json::object();
  for (const api::Field& field : row.fields) {
    if (field.needed) body[field.name] = sample(row, field.name);
  }
  if (row.path == std::string("/rules")) body["protocol"] = "udp";
  if (row.path == std::string("/preview")) body["body"] = sampleOperation()["body"];
  if (row.path == std::string("/dhcp")) body["timeout"] = 1;
  return body;
}

// Of a look, or of a removal.
inline api::Fields sampleQuery(const api::Endpoint& row) {
  api::Fields query;
  for (const api::Field& field : row.fields) {
    if (field.needed && row.reads()) query[field.name] = "running";
  }
  return query;
}

}  // namespace kestrove::testing
