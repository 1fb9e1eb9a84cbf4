// SPDX-License-Identifier: Apache-2.0
// A name and a password of somebody who wants to come in, and what the log says of it.
#pragma once

#include <cstdint>
#include <string>

#include "kestrove/codes.h"
#include "tools/ctl/session.h"

namespace ctl {

// From where somebody comes.
struct Entrance {
  uint32_t source;
  uint32_t success, failure;  // events
  uint32_t from;              // of setLoginFrom; 0 where that has no value for it
};

inline constexpr Entrance kSerialLogIn = {SHM_SOURCE_SERIAL, SHM_EVENT_CLI_LOGIN, SHM_EVENT_CLI_LOGIN_FAILED,
                                          SHM_LOGIN_SERIAL};

// By the exact name, and never with an empty password. Waits for the store; throws a Refusal where there is none.
bool authentic(const Session& session, const std::string& name, const char* password);

// Logged, with the name where the store has it: any other may be a password that was typed too early.
void logFailure(const Session& session, const std::string& name, const Entrance& entrance);
// Logged and stamped.
void logSuccess(const Session& session, const std::string& name, const Entrance& entrance);

}  // namespace ctl
