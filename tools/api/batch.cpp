// SPDX-License-Identifier: Apache-2.0
#include "tools/api/batch.h"

#include "tools/api/carry_out.h"
#include "tools/api/failure.h"
#include "tools/api/operation.h"
#include "tools/api/own_process.h"

namespace api {
namespace {

constexpr size_t kMost = 1000;

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

// The refusal stands where that of every other request does, too.
Json failureOf(size_t failed, const Json& results) {
  Json made = {{"failed", failed}};
  const Json& body = results.back()["body"];
  if (body.is_object() && body.contains("error")) made["error"] = body["error"];
  made["results"] = results;
  return made;
}

}  // namespace

Reply batch(const Request& request, const Caller& caller) {
  Json results = Json::array();
  bool waits = false;
  std::vector<Operation> operations = operationsOf(request, caller);
  for (Operation& operation : operations) {
    // Behind the first change that waits for its confirmation they wait with it: what is taken back is the whole.
    if (waits) operation.request.query.erase("confirm");
    const Reply reply = inOwnProcess([&] { return carryOut(operation.request, operation.route, caller); });
    results.push_back(resultOf(reply));
    const Json& body = results.back()["body"];
    waits = waits || (body.is_object() && body.contains("confirm"));
    if (reply.status < 300 && reply.status != 207) continue;
    const size_t failed = results.size() - 1;
    return inviting(jsonReply(failed == 0 ? reply.status : 207, failureOf(failed, results)));
  }
  return jsonReply(200, {{"failed", nullptr}, {"results", results}});
}

}  // namespace api
