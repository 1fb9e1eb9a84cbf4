// SPDX-License-Identifier: Apache-2.0
// One request on its way through a worker.
#pragma once

#include <microhttpd.h>

#include <optional>

#include "tools/api/own_process.h"

namespace api {

struct Exchange {
  Exchange(MHD_Connection* of, Request made) : connection(of), request(std::move(made)) {}

  MHD_Connection* connection;
  Request request;
  bool heard = false;                 // whole
  size_t most = 0;                    // that its body may have, once that matters
  bool tooLong = false;               // its body
  std::optional<OwnProcess> process;  // while it is carried out elsewhere; the connection sleeps meanwhile
  std::optional<Reply> reply;
  // Of a stream of events:
  bool streams = false;
  bool greeted = false;
  bool sleeps = false;
  bool ended = false;
  std::string unsent;
};

// The request as it came, but for the body.
Request requestOf(MHD_Connection* connection, const char* method, const char* path);

// Whether the headers say that the body is so long that not even its end is waited for. The web server in front hears
// no answer before it has sent all.
bool announcesTooMuch(const Request& request);

MHD_Result give(MHD_Connection* connection, const Reply& reply);
// A reply that goes on; the reader takes what is unsent.
MHD_Result giveStream(Exchange& exchange);

}  // namespace api
