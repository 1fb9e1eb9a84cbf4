// SPDX-License-Identifier: Apache-2.0
#include "tools/api/metrics.h"

#include "tools/api/command.h"

namespace api {

Reply metrics(const Request& request, const Caller& caller) {
  ctl::Session session = sessionOf(request, caller);
  session.json = false;
  return {.status = 200,
          .body = run(session, {"metrics"}).text,
          .headers = {{"Content-Type", "text/plain; version=0.0.4; charset=utf-8"}}};
}

}  // namespace api
