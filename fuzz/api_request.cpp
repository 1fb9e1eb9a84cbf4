// SPDX-License-Identifier: Apache-2.0
// A request, its first line METHOD PATH, then headers, an empty line and the body. Nobody is logged in: whatever comes,
// the store stays as it is.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>

#include "fuzz/fuzz_fixture.h"
#include "kestrove/kestrove.h"
#include "tools/api/endpoint.h"
#include "tools/api/plan.h"

namespace {

api::Request requestOf(const std::string& text) {
  api::Request request;
  std::istringstream stream(text);
  std::getline(stream, request.method, ' ');
  std::getline(stream, request.path);
  if (const size_t query = request.path.find('?'); query != std::string::npos) {
    request.query["confirm"] = request.path.substr(query + 1);
    request.path.erase(query);
  }
  for (std::string line; std::getline(stream, line) && !line.empty();) {
    const size_t colon = std::min(line.find(": "), line.size());
    request.headers[line.substr(0, colon)] = line.substr(std::min(colon + 2, line.size()));
  }
  std::ostringstream body;
  body << stream.rdbuf();
  request.body = body.str();
  return request;
}

bool isLogIn(const api::Request& request) {
  return request.method == "POST" && request.path == std::string(api::kPrefix) + "/session";
}

void demand(bool condition) {
  if (!condition) abort();
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kestrove::fuzzing::freshStore();
  shm->config.httpOperState = SHM_ON;
  const api::Request request = requestOf(std::string(reinterpret_cast<const char*>(data), size));
  const api::Plan made = api::planOn(*shm, request, {});
  demand(made.reply || isLogIn(request));
  demand(!made.reply || made.reply->status >= 400 || request.path == api::kPrefix);
  kestrove::fuzzing::checkStore();
  return 0;
}
