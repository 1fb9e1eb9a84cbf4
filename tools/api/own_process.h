// SPDX-License-Identifier: Apache-2.0
// Work in a process of its own, whose reply comes back: what changes something finds a fresh process, and who waits for
// the store keeps nobody else waiting.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

#include "sys/descriptor.h"
#include "tools/api/message.h"

namespace api {

class OwnProcess {
 public:
  // Begins. Throws a Refusal where there can be no more processes.
  explicit OwnProcess(const std::function<Reply()>& work);
  ~OwnProcess();
  OwnProcess(OwnProcess&& other) noexcept;
  OwnProcess(const OwnProcess&) = delete;
  OwnProcess& operator=(const OwnProcess&) = delete;
  OwnProcess& operator=(OwnProcess&&) = delete;

  // Readable when there is something to take.
  int descriptor() const { return out_.get(); }
  // Takes what is there; true when that was all.
  bool take();
  // Behind the end: what it said, or what became of it.
  Reply reply();

 private:
  pid_t child_ = -1;
  kestrove::sys::Descriptor out_;
  std::string text_;
};

Reply inOwnProcess(const std::function<Reply()>& work);

}  // namespace api
