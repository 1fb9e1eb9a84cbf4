// SPDX-License-Identifier: Apache-2.0
#include "tools/api/router.h"

#include <cstring>
#include <set>

#include "tools/api/failure.h"

namespace api {
namespace {

int digit(char one) {
  if (one >= '0' && one <= '9') return one - '0';
  if (one >= 'a' && one <= 'f') return one - 'a' + 10;
  return one >= 'A' && one <= 'F' ? one - 'A' + 10 : -1;
}

// "/rules/3" as "rules" and "3".
std::vector<std::string> segments(const std::string& path) {
  std::vector<std::string> found;
  for (size_t at = 0; at < path.size();) {
    const size_t end = std::min(path.find('/', at + 1), path.size());
    found.push_back(path.substr(at + 1, end - at - 1));
    at = end;
  }
  return found;
}

bool isPlace(const std::string& segment) { return segment.starts_with("{"); }

bool matches(const std::vector<std::string>& pattern, const std::vector<std::string>& path, Fields& parts) {
  if (pattern.size() != path.size()) return false;
  for (size_t i = 0; i < path.size(); ++i) {
    if (isPlace(pattern[i])) {
      if (path[i].empty()) return false;
      parts[pattern[i].substr(1, pattern[i].size() - 2)] = path[i];
    } else if (pattern[i] != path[i]) {
      return false;
    }
  }
  return true;
}

std::vector<std::string> pathOf(const std::string& path) {
  const size_t prefix = strlen(kPrefix);
  if (!path.starts_with(kPrefix) || (path.size() > prefix && path[prefix] != '/')) {
    throw Failure(404, path + ": no such resource");
  }
  std::vector<std::string> found = segments(path.substr(prefix));
  for (std::string& segment : found) {
    const std::string sent = segment;
    if (!unescape(sent, segment)) throw Failure(400, sent + ": a path has whole escapes and no zero");
  }
  return found;
}

// Split once: each request is held to all of them.
const std::vector<std::string>& patternOf(const Endpoint& row) {
  static const std::vector<std::vector<std::string>> all = [] {
    std::vector<std::vector<std::string>> made;
    for (const Endpoint& one : endpoints()) made.push_back(segments(one.path));
    return made;
  }();
  return all[static_cast<size_t>(&row - endpoints().data())];
}

std::string joined(const std::set<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text;
}

}  // namespace

bool unescape(const std::string& text, std::string& out) {
  out.clear();
  for (size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      out += text[at];
      continue;
    }
    const int high = at + 2 < text.size() ? digit(text[at + 1]) : -1;
    const int low = at + 2 < text.size() ? digit(text[at + 2]) : -1;
    if (high < 0 || low < 0 || high + low == 0) return false;
    out += static_cast<char>(high * 16 + low);
    at += 2;
  }
  return true;
}

std::vector<std::string> placesIn(const std::string& text) {
  std::vector<std::string> names;
  for (size_t at = 0; (at = text.find('{', at)) != std::string::npos;) {
    const size_t end = text.find('}', at);
    names.push_back(text.substr(at + 1, end - at - 1));
    at = end;
  }
  return names;
}

Route routeOf(const std::string& method, const std::string& path) {
  const std::vector<std::string> asked = pathOf(path);
  std::set<std::string> allowed;
  Route route;
  for (const Endpoint& row : endpoints()) {
    Fields parts;
    if (!matches(patternOf(row), asked, parts)) continue;
    allowed.insert(row.method);
    // The words of a path go before its places.
    const bool better = !route.endpoint || parts.size() < route.parts.size();
    if (method == row.method && better) route = {&row, parts};
  }
  if (route.endpoint) return route;
  if (allowed.empty()) throw Failure(404, path + ": no such resource");
  throw Failure(405, method + ": the resource takes " + joined(allowed)).with("Allow", joined(allowed));
}

}  // namespace api
