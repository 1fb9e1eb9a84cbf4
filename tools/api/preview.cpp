// SPDX-License-Identifier: Apache-2.0
#include "tools/api/preview.h"

#include <algorithm>

#include "tools/api/carry_out.h"
#include "tools/api/command.h"
#include "tools/api/failure.h"
#include "tools/api/folder.h"
#include "tools/api/operation.h"
#include "tools/ctl/sandbox_call.h"

namespace api {
namespace {

void requireChange(const Operation& operation) {
  const Endpoint& row = *operation.route.endpoint;
  if (row.reads() || row.right != Right::kChange) throw Failure(400, "what changes nothing has no preview");
  if (row.takesSecret()) throw Failure(400, "what takes a password has no preview");
}

// What comes by standard input lies in a file there.
std::vector<std::string> wordsOf(const Spoken& spoken, const ctl::ScratchFolder& scratch) {
  std::vector<std::string> words = {"preview"};
  words.insert(words.end(), spoken.words.begin(), spoken.words.end());
  if (spoken.input.empty()) return words;
  Folder(scratch.path()).write("script", spoken.input);
  std::ranges::replace(words, std::string("-"), scratch.path() + "/script");
  return words;
}

}  // namespace

Reply preview(const Request& request, const Caller& caller) {
  const Operation operation = operationOf(bodyOf(request), request, caller);
  requireChange(operation);
  const ctl::ScratchFolder scratch;
  const Printed printed = run(sessionOf(request, caller), wordsOf(spoken(operation.route, operation.request), scratch));
  const Json value = Json::parse(printed.text, nullptr, false);
  if (value.is_object() && value.contains("exit")) return jsonReply(200, value);
  return inviting(jsonReply(statusOf(printed.exit, value, {}), value));
}

}  // namespace api
