// SPDX-License-Identifier: Apache-2.0
#include "tools/api/operation.h"

#include <algorithm>

#include "tools/api/failure.h"
#include "tools/api/router.h"
#include "tools/api/tag.h"

namespace api {
namespace {

std::string textOf(const Json& operation, const char* name) {
  if (!operation.is_object() || !operation.contains(name) || !operation[name].is_string()) {
    throw Failure(400, std::string(name) + ": a text is needed");
  }
  return operation[name].get<std::string>();
}

std::string plain(std::string text) {
  std::ranges::replace(text, '+', ' ');
  std::string made;
  if (!unescape(text, made)) throw Failure(400, text + ": a query has whole escapes and no zero");
  return made;
}

// "bridge=true&confirm=5" beside what goes with the whole.
void addQuery(const std::string& text, Fields& query) {
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find('&', at), text.size());
    const size_t equal = std::min(text.find('=', at), end);
    query[plain(text.substr(at, equal - at))] = equal == end ? "" : plain(text.substr(equal + 1, end - equal - 1));
    at = end + 1;
  }
}

}  // namespace

Operation operationOf(const Json& given, const Request& whole, const Caller& caller) {
  Operation made;
  made.request.method = textOf(given, "method");
  const std::string path = textOf(given, "path");
  const size_t mark = std::min(path.find('?'), path.size());
  made.request.path = kPrefix + path.substr(0, mark);
  made.request.query = whole.query;
  if (mark < path.size()) addQuery(path.substr(mark + 1), made.request.query);
  made.request.headers = {{"content-type", kJsonType}};
  if (given.contains("ifMatch")) made.request.headers["if-match"] = textOf(given, "ifMatch");
  if (given.contains("body")) made.request.body = given["body"].dump();
  made.route = routeOf(made.request.method, made.request.path);
  if (*made.route.endpoint->special) throw Failure(400, made.request.path + ": not within a request");
  if (made.route.endpoint->right == Right::kChange && !caller.changes) throw Failure(403, "may only read");
  wantedTags(made.request);
  spoken(made.route, made.request);
  return made;
}

}  // namespace api
