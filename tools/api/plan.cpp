// SPDX-License-Identifier: Apache-2.0
#include "tools/api/plan.h"

#include <sys/shm.h>

#include <algorithm>

#include "kestrove/kestrove.h"
#include "tools/api/batch.h"
#include "tools/api/carry_out.h"
#include "tools/api/failure.h"
#include "tools/api/guard.h"
#include "tools/api/log_in.h"
#include "tools/api/metrics.h"
#include "tools/api/own_process.h"
#include "tools/api/preview.h"
#include "tools/api/router.h"
#include "tools/api/support.h"
#include "tools/common/lock_wait.h"
#include "tools/common/store_refusal.h"
#include "tools/ctl/shell/glance.h"

namespace api {
namespace {

int attachedSegment = -1;

// A store that was built anew meanwhile is another one.
const ShmData& presentStore() {
  const int segment = shmget(SHM_KEY, SHM_SIZE, 0);
  if (shm && segment != attachedSegment) {
    shm_detach();
    shm = nullptr;
  }
  const ShmData* store = segment == -1 ? nullptr : ctl::glance();
  if (!store) {
    throw Failure(errorReply(503, {ctl::kNoStore, tools::segmentRefusal(tools::segmentError()), SHM_EATTACH}))
        .with("Retry-After", "5");
  }
  attachedSegment = segment;
  return *store;
}

Reply about(const ShmData& store) {
  return jsonReply(200,
                   {{"api", 1}, {"version", kestrove_version()}, {"enabled", store.config.httpOperState == SHM_ON}});
}

Reply told(const std::function<Reply()>& work) {
  try {
    return work();
  } catch (const Failure& failure) {
    return failure.reply();
  } catch (const ctl::Refusal& refusal) {
    const Json error = {{"error", ctl::errorJson(refusal)}};
    return inviting(jsonReply(statusOf(refusal.exit(), error, {}), error));
  } catch (const std::exception& error) {
    return errorReply(500, {ctl::kSystem, error.what()});
  }
}

Plan working(std::function<Reply()> work, bool own) {
  return {.reply = {}, .work = [made = std::move(work)] { return told(made); }, .own = own};
}

Plan special(const Request& request, const Route& route, const Caller& caller) {
  const std::string name = route.endpoint->special;
  if (!route.endpoint->reads() && request.has("if-match")) throw Failure(400, "the resource has no ETag to match");
  if (name == "session") return {.reply = sessionReply(caller)};
  if (name == "log-out") return working([=] { return logOut(caller); }, true);
  if (name == "stream") {
    return {.reply = Reply{.headers = {{"Content-Type", "text/event-stream"}}, .events = true}};
  }
  if (name == "metrics") return working([=] { return metrics(request, caller); }, true);
  if (name == "preview") return working([=] { return preview(request, caller); }, true);
  if (name == "batch") return working([=] { return batch(request, caller); }, true);
  return working([=] { return support(request, route, caller); }, true);
}

// Looks that take their time, or much memory: a worker stays small, and hears others meanwhile.
constexpr const char* kLong[] = {
    "/check",  "/diff", "/events",   "/history", "/history/{revision}", "/interfaces/{port}/link",
    "/kernel", "/lost", "/settings", "/state"};
constexpr int32_t kManyRules = 256;

bool lasts(const ShmData& store, const Route& route) {
  const std::string path = route.endpoint->path;
  if (path.starts_with("/rules")) return store.filterTable.ruleCount > kManyRules;
  return std::ranges::count(kLong, path) > 0;
}

bool isFor(const Request& request, const char* method, const std::string& path) {
  return request.method == method && request.path == kPrefix + path;
}

bool takesScript(const Request& request) {
  return isFor(request, "POST", "/apply") || isFor(request, "POST", "/preview");
}

void requireOwnWay(const Request& request, const Settings& settings, const ShmData& store) {
  requireHost(request, store, settings.names);
  requireOwnPage(request);
}

void requireSwitchedOn(const ShmData& store) {
  if (store.config.httpOperState == SHM_ON) return;
  throw Failure(403, "the web interface is switched off (httpOperState)", ctl::kNotPermitted);
}

struct Admitted {
  Caller caller;
  Route route;
};

Admitted admit(const Request& request, const ShmData& store) {
  Admitted made = {callerOf(request, store), routeOf(request.method, request.path)};
  requireRight(request, made.caller, made.route.endpoint->right);
  return made;
}

size_t longestBodyOn(const ShmData& store, const Request& request, const Settings& settings) {
  if (!takesScript(request)) return kLongestBody;
  try {
    requireOwnWay(request, settings, store);
    requireSwitchedOn(store);
    admit(request, store);
    return kLongestScript;
  } catch (const Failure&) {
    return kLongestBody;
  }
}

void requireSound(const Request& request) {
  if (!request.fault.empty()) throw Failure(400, request.fault);
}

void requireLength(const Request& request, const Settings& settings, const ShmData& store) {
  if (request.body.size() <= kLongestBody) return;
  const size_t most = longestBodyOn(store, request, settings);
  if (request.body.size() > most) throw Failure(tooLong(most));
}

Plan planned(const Request& request, const Settings& settings, const ShmData& store) {
  requireLength(request, settings, store);
  requireOwnWay(request, settings, store);
  if (request.method == "GET" && request.path == kPrefix) return {.reply = about(store)};
  requireSwitchedOn(store);
  if (isFor(request, "POST", "/session")) return working([request] { return logIn(request); }, true);
  const Admitted admitted = admit(request, store);
  const Caller& caller = admitted.caller;
  const Route& route = admitted.route;
  if (*route.endpoint->special) return special(request, route, caller);
  if (std::optional<Reply> known = knownReply(request, route)) return {.reply = std::move(known)};
  const bool own = !route.endpoint->reads() || lasts(store, route);
  Plan made = working([=] { return carryOut(request, route, caller); }, own);
  if (!own) made.meanwhile = [=] { return lastReply(request, route); };
  return made;
}

Plan planFor(const std::function<Plan()>& make) {
  Plan made;
  const Reply refused = told([&] {
    made = make();
    return Reply{};
  });
  if (!made.reply && !made.work) made.reply = refused;
  return made;
}

}  // namespace

Reply tooLong(size_t most) {
  return errorReply(413, {ctl::kUsage, "a body has " + std::to_string(most >> 20) + " MiB at most"});
}

size_t longestBody(const Request& request, const Settings& settings) {
  try {
    return longestBodyOn(presentStore(), request, settings);
  } catch (const std::exception&) {  // no store
    return kLongestBody;
  }
}

Plan plan(const Request& request, const Settings& settings) {
  return planFor([&] {
    requireSound(request);
    return planned(request, settings, presentStore());
  });
}

Plan planOn(const ShmData& store, const Request& request, const Settings& settings) {
  return planFor([&] {
    requireSound(request);
    return planned(request, settings, store);
  });
}

void freshenTables() {
  try {
    const ShmData& store = presentStore();
    if (tools::lookAtLock().state != tools::LockState::kFree) return;
    tools::limitWaits(0);
    for (const Endpoint& row : endpoints()) {
      const Route route = {&row, {}};
      if (placesIn(row.path).empty() && !lasts(store, route)) lookAhead(route);
    }
  } catch (const std::exception&) {  // no store: there will be one
  }
}

Reply answer(const Request& request, const Settings& settings) {
  const Plan made = plan(request, settings);
  if (made.reply) return *made.reply;
  if (made.own) return inOwnProcess(made.work);
  tools::limitWaits(kPatience);
  return made.work();
}

}  // namespace api
