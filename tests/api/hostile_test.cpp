// SPDX-License-Identifier: Apache-2.0
// 5,000 requests of somebody who means harm: the store and the files are the same to the byte afterwards.
#include <random>

#include "tests/api/api_fixture.h"
#include "tools/api/router.h"

namespace kestrove::testing {
namespace {

class HostileTest : public ApiTest {};

constexpr int kRequests = 5000;

using Random = std::mt19937;

size_t below(Random& random, size_t limit) { return random() % limit; }

template <size_t N>
const char* oneOf(Random& random, const char* const (&words)[N]) {
  return words[below(random, N)];
}

std::string bytes(Random& random, size_t length) {
  std::string text;
  for (size_t i = 0; i < length; ++i) text += static_cast<char>(random());
  return text;
}

std::string pathOf(Random& random) {
  const api::Endpoint& row = api::endpoints()[below(random, api::endpoints().size())];
  std::string path = api::kPrefix + std::string(row.path);
  for (const std::string& name : api::placesIn(row.path)) {
    constexpr const char* kParts[] = {"0",           "compression", "..",  "%2e%2e%2f", "-1",  "99999999999999999999",
                                      "--user=root", "%00",         "%",   "?",         "%0a", "alice",
                                      "10.0.0.0",    "$(reboot)",   "';--"};
    const std::string mark = "{" + name + "}";
    path.replace(path.find(mark), mark.size(), oneOf(random, kParts));
  }
  switch (below(random, 8)) {
    case 0: return path + "/" + bytes(random, 8);
    case 1: return bytes(random, 16);
    case 2: return "/api/1/../1" + path.substr(6);
    case 3: return path + std::string(4000, 'a');
    default: return path;
  }
}

std::string bodyOf(Random& random) {
  switch (below(random, 8)) {
    case 0: return bytes(random, below(random, 200));
    case 1: return std::string(below(random, 2000000), ' ');
    case 2: return std::string(5000, '[');
    case 3: return R"({"position":0,"matchAll":true,"target":"drop"})";
    case 4: return R"({"value":"off"})";
    case 5: return R"({"user":"alice","password":")" + std::string(below(random, 400), 'x') + "\"}";
    case 6: return R"({"script":"rule delete 0\nset compression off\n","replace":true})";
    default: return R"({"operations":[{"method":"PUT","path":"/items/compression","body":{"value":"off"}}]})";
  }
}

// Each lacks something that a change needs, or has something that none may have.
void spoil(Random& random, api::Request& request, const Browser& admin, const Browser& reader) {
  constexpr const char* kOrigins[] = {"https://evil.example", "null", "http://192.0.2.1", "https://192.0.2.1:444", ""};
  constexpr const char* kHosts[] = {"evil.example", "", "[::1", "192.0.2.1, evil", "a:b:c", "192.0.2.1:99999999"};
  request.headers["cookie"] = admin.cookie;
  request.headers["x-csrf-token"] = admin.csrf;
  switch (below(random, 9)) {
    case 0: request.headers["origin"] = oneOf(random, kOrigins); break;
    case 1: request.headers["host"] = oneOf(random, kHosts); break;
    case 2: request.headers.erase("x-csrf-token"); break;
    case 3: request.headers["x-csrf-token"] = reader.csrf; break;
    case 4: request.headers["cookie"] = admin.cookie.substr(0, admin.cookie.size() - 1); break;
    case 5: request.headers.erase("cookie"); break;
    case 6: request.headers["authorization"] = "Bearer " + bytes(random, 64); break;
    case 7: request.fault = "host: given twice"; break;
    default: request.headers["cookie"] = reader.cookie; request.headers["x-csrf-token"] = reader.csrf;
  }
}

api::Request hostile(Random& random, const Browser& admin, const Browser& reader) {
  constexpr const char* kMethods[] = {"POST", "PUT", "PATCH", "DELETE", "POST", "PUT", "TRACE", "PROPFIND", ""};
  constexpr const char* kTypes[] = {"application/json", "text/plain", "application/json; charset=utf-8", ""};
  api::Request request;
  request.method = oneOf(random, kMethods);
  request.path = pathOf(random);
  request.body = bodyOf(random);
  request.headers = {{"host", kHome}, {"content-type", oneOf(random, kTypes)}};
  if (below(random, 4) == 0) request.query["confirm"] = bytes(random, 4);
  spoil(random, request, admin, reader);
  return request;
}

bool isLogIn(const api::Request& request) {
  return request.method == "POST" && request.path == std::string(api::kPrefix) + "/session";
}

TEST_F(HostileTest, FiveThousandRequestsLeaveEverythingAsItWas) {
  const Browser reader = browserOf("guest");
  const Browser admin = browserOf("alice");  // the store names the newest session, and a reader may log out
  ASSERT_EQ(0, save_shared_memory());
  const std::string before = everything();
  Random random(20261122);
  for (int i = 0; i < kRequests; ++i) {
    const api::Request request = hostile(random, admin, reader);
    const int status = api::answer(request).status;
    // A reader's log-out is his own.
    EXPECT_TRUE(status >= 400 || request.path == std::string(api::kPrefix) + "/session")
        << i << ": " << request.method << " " << request.path << " " << status;
    if (isLogIn(request)) {
      EXPECT_NE(201, status);
    }
  }
  EXPECT_TRUE(before == everything());
}

}  // namespace
}  // namespace kestrove::testing
