// SPDX-License-Identifier: Apache-2.0
#include "tools/api/batch.h"

#include "tools/api/carry_out.h"
#include "tools/api/failure.h"
#include "tools/api/own_process.h"
#include "tools/api/router.h"

namespace api {
namespace {

constexpr size_t kMost = 1000;

struct Operation {
  Request request;
  Route route;
};

std::string textOf(const Json& operation, const char* name) {
  if (!operation.is_object() || !operation.contains(name) || !operation[name].is_string()) {
    throw Failure(400, std::string(name) + ": a text is needed");
  }
  return operation[name].get<std::string>();
}

Operation operationOf(const Json& given, const Request& whole, const Caller& caller) {
  Operation made;
  made.request.method = textOf(given, "method");
  made.request.path = kPrefix + textOf(given, "path");
  made.request.query = whole.query;
  made.request.headers = {{"content-type", kJsonType}};
  if (given.contains("ifMatch")) made.request.headers["if-match"] = textOf(given, "ifMatch");
  if (given.contains("body")) made.request.body = given["body"].dump();
  made.route = routeOf(made.request.method, made.request.path);
  if (*made.route.endpoint->special) throw Failure(400, made.request.path + ": not in a batch");
  if (made.route.endpoint->right == Right::kChange && !caller.changes) throw Failure(403, "may only read");
  spoken(made.route, made.request);
  return made;
}

// All are looked at before the first is carried out.
std::vector<Operation> operationsOf(const Request& request, const Caller& caller) {
  const Json body = bodyOf(request);
  if (!body.contains("operations") || !body["operations"].is_array())
    throw Failure(400, "operations: a list is needed");
  if (body["operations"].size() > kMost) throw Failure(400, "operations: 1000 at most");
  std::vector<Operation> operations;
  for (const Json& given : body["operations"]) {
    try {
      operations.push_back(operationOf(given, request, caller));
    } catch (const Failure& failure) {
      throw Failure(failure.reply().status, "operation " + std::to_string(operations.size()) + ": " + failure.what());
    }
  }
  return operations;
}

Json resultOf(const Reply& reply) {
  return {{"status", reply.status}, {"body", Json::parse(reply.body, nullptr, false)}};
}

}  // namespace

Reply batch(const Request& request, const Caller& caller) {
  Json results = Json::array();
  for (const Operation& operation : operationsOf(request, caller)) {
    const Reply reply = inOwnProcess([&] { return carryOut(operation.request, operation.route, caller); });
    results.push_back(resultOf(reply));
    if (reply.status < 300 && reply.status != 207) continue;
    const size_t failed = results.size() - 1;
    return jsonReply(failed == 0 ? reply.status : 207, {{"failed", failed}, {"results", results}});
  }
  return jsonReply(200, {{"failed", nullptr}, {"results", results}});
}

}  // namespace api
