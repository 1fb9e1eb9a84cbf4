// SPDX-License-Identifier: Apache-2.0
// A look at the store around the change that a command makes, by whoever runs the command.
#pragma once

#include <functional>

namespace ctl {

// While one lives, a change calls it with the store held: before it is made, when it may still be refused by throwing a
// Refusal, and behind it.
class HeldLook {
 public:
  using Look = std::function<void(bool made)>;
  explicit HeldLook(Look look);
  ~HeldLook();
  HeldLook(const HeldLook&) = delete;
  HeldLook& operator=(const HeldLook&) = delete;

  // For the change.
  static void call(bool made);
};

// While one lives, a command that only reads calls it when it has gathered, with the store still held.
class ReadLook {
 public:
  explicit ReadLook(std::function<void()> look);
  ~ReadLook();
  ReadLook(const ReadLook&) = delete;
  ReadLook& operator=(const ReadLook&) = delete;

  // For the command.
  static void call();
};

}  // namespace ctl
