// SPDX-License-Identifier: Apache-2.0
#include "tools/api/exchange.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "tools/api/plan.h"
#include "tools/api/router.h"

namespace api {
namespace {

constexpr size_t kBlock = 16384;
constexpr size_t kLongestDropped = 16 << 20;

// Each says all there is to say: two of them are two stories.
constexpr const char* kSingle[] = {"host",         "origin",         "authorization", "x-csrf-token",
                                   "content-type", "content-length", "if-match",      "x-kestrove-client"};

MHD_Result takeHeader(void* closure, MHD_ValueKind, const char* key, const char* value) {
  Request& request = *static_cast<Request*>(closure);
  const std::string name = lower(key ? key : "");
  const std::string text = value ? value : "";
  const auto [place, fresh] = request.headers.emplace(name, text);
  if (fresh) return MHD_YES;
  if (std::ranges::find(kSingle, name) != std::end(kSingle)) request.fault = name + ": given twice";
  place->second += (name == "cookie" ? "; " : ", ") + text;
  return MHD_YES;
}

std::string queryText(const char* sent, Request& request) {
  std::string text = sent ? sent : "";
  std::ranges::replace(text, '+', ' ');
  std::string plain;
  if (!unescape(text, plain)) request.fault = "the query has an escape that is none, or a zero";
  return plain;
}

MHD_Result takeQuery(void* closure, MHD_ValueKind, const char* key, const char* value) {
  Request& request = *static_cast<Request*>(closure);
  const std::string name = queryText(key, request);
  if (!request.query.emplace(name, queryText(value, request)).second) request.fault = name + ": given twice";
  return MHD_YES;
}

MHD_Response* ofFile(const Reply& reply) {
  const int fd = open(reply.file.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  unlink(reply.file.c_str());
  struct stat facts;
  if (fd == -1 || fstat(fd, &facts) != 0) return nullptr;
  return MHD_create_response_from_fd64(static_cast<uint64_t>(facts.st_size), fd);
}

MHD_Response* ofText(const Reply& reply) {
  return MHD_create_response_from_buffer(reply.body.size(), const_cast<char*>(reply.body.data()),
                                         MHD_RESPMEM_MUST_COPY);
}

void addHeaders(MHD_Response* response, const Reply& reply) {
  for (const auto& [name, value] : reply.headers) MHD_add_response_header(response, name.c_str(), value.c_str());
  if (reply.header("Cache-Control").empty()) MHD_add_response_header(response, "Cache-Control", "no-store");
  MHD_add_response_header(response, "X-Content-Type-Options", "nosniff");
}

MHD_Result queue(MHD_Connection* connection, int status, MHD_Response* response) {
  if (!response) return MHD_NO;
  const MHD_Result result = MHD_queue_response(connection, static_cast<unsigned>(status), response);
  MHD_destroy_response(response);
  return result;
}

// Whoever has nothing to read sleeps until there is something.
ssize_t readStream(void* closure, uint64_t, char* buffer, size_t size) {
  Exchange& exchange = *static_cast<Exchange*>(closure);
  if (exchange.unsent.empty() && exchange.ended) return MHD_CONTENT_READER_END_OF_STREAM;
  if (exchange.unsent.empty()) {
    exchange.sleeps = true;
    MHD_suspend_connection(exchange.connection);
    return 0;
  }
  const size_t length = std::min(size, exchange.unsent.size());
  std::copy_n(exchange.unsent.data(), length, buffer);
  exchange.unsent.erase(0, length);
  return static_cast<ssize_t>(length);
}

}  // namespace

Request requestOf(MHD_Connection* connection, const char* method, const char* path) {
  Request request;
  request.method = method;
  request.path = path;
  MHD_get_connection_values(connection, MHD_HEADER_KIND, takeHeader, &request);
  MHD_get_connection_values(connection, MHD_GET_ARGUMENT_KIND, takeQuery, &request);
  return request;
}

bool announcesTooMuch(const Request& request) {
  return strtoull(request.header("content-length").c_str(), nullptr, 10) > kLongestDropped;
}

MHD_Result give(MHD_Connection* connection, const Reply& reply) {
  MHD_Response* response = reply.file.empty() ? ofText(reply) : ofFile(reply);
  if (!response) return give(connection, errorReply(500, {ctl::kSystem, "the file is gone"}));
  addHeaders(response, reply);
  MHD_add_response_header(response, MHD_HTTP_HEADER_CONNECTION, "close");
  return queue(connection, reply.status, response);
}

MHD_Result giveStream(Exchange& exchange) {
  exchange.streams = true;
  MHD_Response* response = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kBlock, readStream, &exchange, nullptr);
  if (response) addHeaders(response, *exchange.reply);
  return queue(exchange.connection, exchange.reply->status, response);
}

}  // namespace api
