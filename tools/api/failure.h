// SPDX-License-Identifier: Apache-2.0
// Ends a request: with a status of its own and the error that kestrovectl would print.
#pragma once

#include <string>

#include "tools/api/message.h"

namespace api {

class Failure : public std::exception {
 public:
  Failure(int status, const std::string& message, ctl::Exit exit = ctl::kUsage)
      : message_(message), reply_(errorReply(status, {exit, message})) {}
  explicit Failure(Reply reply) : reply_(std::move(reply)) {}
  const char* what() const noexcept override { return message_.c_str(); }
  Failure with(const std::string& header, const std::string& value) && {
    reply_.headers.emplace_back(header, value);
    return std::move(*this);
  }
  const Reply& reply() const { return reply_; }

 private:
  std::string message_;
  Reply reply_;
};

}  // namespace api
