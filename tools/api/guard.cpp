// SPDX-License-Identifier: Apache-2.0
#include "tools/api/guard.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <algorithm>

#include "kestrove/codes.h"
#include "tools/api/digest.h"
#include "tools/api/failure.h"
#include "tools/api/tokens.h"
#include "tools/ctl/shell/glance.h"

namespace api {
namespace {

constexpr char kBearer[] = "Bearer ";
constexpr size_t kLongestHost = 255;

// "[fd00::1]:443" as "fd00::1"; empty for what is no host.
std::string hostName(const std::string& host) {
  const bool bracketed = host.starts_with("[");
  const size_t end = bracketed ? host.find(']') : host.find(':');
  if (bracketed && end == std::string::npos) return {};
  const std::string name = host.substr(bracketed, std::min(end, host.size()) - bracketed);
  const std::string port = end == std::string::npos ? "" : host.substr(end + bracketed);
  const bool plain = port.empty() || (port[0] == ':' && port.size() > 1 && port.size() < 7 &&
                                      port.find_first_not_of("0123456789", 1) == std::string::npos);
  return plain ? lower(name) : "";
}

bool isAddress(const std::string& name) {
  unsigned char bytes[16];
  return inet_pton(AF_INET, name.c_str(), bytes) == 1 || inet_pton(AF_INET6, name.c_str(), bytes) == 1;
}

std::string machineName() {
  char name[256] = {};
  return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

[[noreturn]] void refuse(const std::string& message) { throw Failure(403, message, ctl::kNotPermitted); }

Caller tokensCaller(const Request& request) {
  const std::optional<Token> token = findToken(request.header("authorization").substr(sizeof kBearer - 1));
  if (!token) throw Failure(401, "no such token", ctl::kNotPermitted).with("WWW-Authenticate", "Bearer");
  return {.user = "token-" + token->name, .changes = token->changes, .byCookie = false, .session = {}};
}

Caller sessionsCaller(const Request& request, const ShmData& store) {
  const std::optional<WebSession> session =
      findSession(cookieOf(request), store, !request.has("x-kestrove-background"));
  if (!session) throw Failure(401, "nobody is logged in", ctl::kNotPermitted).with("WWW-Authenticate", "Bearer");
  return {.user = session->user, .changes = session->changes, .byCookie = true, .session = *session};
}

}  // namespace

void requireHost(const Request& request, const ShmData& store, const std::vector<std::string>& names) {
  const std::string host = request.header("host");
  const std::string name = host.size() > kLongestHost ? "" : hostName(host);
  if (name.empty()) throw Failure(400, "a host is needed");
  if (isAddress(name) || name == "localhost" || name == lower(machineName())) return;
  if (name == lower(ctl::text(store.config.sysName)) || std::ranges::count(names, name) > 0) return;
  throw Failure(421, "the appliance has another name", ctl::kNotPermitted);
}

void requireOwnPage(const Request& request) {
  const std::string site = request.header("sec-fetch-site");
  if (!site.empty() && site != "same-origin" && site != "none") refuse("the request comes from another page");
  if (request.has("origin") && lower(request.header("origin")) != "https://" + lower(request.header("host"))) {
    refuse("the request comes from another origin");
  }
}

Caller callerOf(const Request& request, const ShmData& store) {
  return request.header("authorization").starts_with(kBearer) ? tokensCaller(request) : sessionsCaller(request, store);
}

void requireRight(const Request& request, const Caller& caller, Right right) {
  const bool looks = request.method == "GET" || request.method == "HEAD";
  if (caller.byCookie && !looks && !sameSecret(caller.session.csrf, request.header("x-csrf-token"))) {
    refuse("the session's own word is missing (X-CSRF-Token)");
  }
  if (right == Right::kChange && !caller.changes) {
    refuse(caller.user + " may only read" + (caller.byCookie ? ": the account has no super-user switch" : ""));
  }
}

std::string clientOf(const Request& request) {
  const std::string client = request.header("x-kestrove-client");
  return isAddress(client) ? client : "local";
}

std::string cookieOf(const Request& request) {
  const std::string cookies = request.header("cookie");
  const std::string name = std::string(kCookie) + "=";
  std::string found;
  for (size_t at = 0; at < cookies.size();) {
    const size_t end = std::min(cookies.find(';', at), cookies.size());
    const size_t begin = cookies.find_first_not_of(' ', at);
    if (begin != std::string::npos && cookies.compare(begin, name.size(), name) == 0) {
      if (!found.empty()) return {};
      found = cookies.substr(begin + name.size(), end - begin - name.size());
    }
    at = end + 1;
  }
  return found;
}

}  // namespace api
