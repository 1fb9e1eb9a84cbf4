// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/held_look.h"

#include <utility>

namespace ctl {
namespace {

HeldLook::Look present;
std::function<void()> reading;

}  // namespace

HeldLook::HeldLook(Look look) { present = std::move(look); }

HeldLook::~HeldLook() { present = nullptr; }

// What the look itself runs is no part of the change.
void HeldLook::call(bool made) {
  const Look look = std::exchange(present, nullptr);
  if (!look) return;
  look(made);  // where it throws there is no change, nor a look behind it
  present = look;
}

ReadLook::ReadLook(std::function<void()> look) { reading = std::move(look); }

ReadLook::~ReadLook() { reading = nullptr; }

void ReadLook::call() {
  if (reading) reading();
}

}  // namespace ctl
