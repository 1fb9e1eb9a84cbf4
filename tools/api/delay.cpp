// SPDX-License-Identifier: Apache-2.0
#include "tools/api/delay.h"

#include <algorithm>
#include <cmath>

#include "tools/api/digest.h"
#include "tools/api/folder.h"

namespace api {
namespace {

constexpr double kForgotten = 900;
constexpr size_t kMost = 4096;

struct Key {
  std::string name;
  double longest;
};

Key clientKey(const std::string& client) { return {digest("client " + client), 30}; }
Key userKey(const std::string& user) { return {digest("user " + user), 4}; }

int failures(const Folder& files, const Key& key) {
  const double age = files.age(key.name);
  if (age < 0 || age > kForgotten) return 0;
  return std::min(static_cast<int>(files.read(key.name).value_or("").size()), 16);
}

double left(const Folder& files, const Key& key) {
  const int count = failures(files, key);
  return count == 0 ? 0 : std::max(0.0, std::min(std::ldexp(1.0, count - 1), key.longest) - files.age(key.name));
}

// A mark for each: what somebody makes up as names does not fill the memory.
void add(const Folder& files, const Key& key) {
  const std::vector<std::string> names = files.names();
  if (names.size() >= kMost) {
    for (const std::string& name : names) {
      if (files.age(name) > 30) files.remove(name);
    }
  }
  files.write(key.name, std::string(static_cast<size_t>(failures(files, key)) + 1, 'x'));
}

}  // namespace

double secondsToWait(const std::string& client, const std::string& user) {
  const Folder files(kFailureFolder);
  return std::max(left(files, clientKey(client)), left(files, userKey(user)));
}

void noteFailure(const std::string& client, const std::string& user) {
  const Folder files(kFailureFolder);
  add(files, clientKey(client));
  add(files, userKey(user));
}

void forgetFailures(const std::string& client, const std::string& user) {
  const Folder files(kFailureFolder);
  files.remove(clientKey(client).name);
  files.remove(userKey(user).name);
}

}  // namespace api
