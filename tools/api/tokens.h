// SPDX-License-Identifier: Apache-2.0
// Tokens for programs: kept as digests, each with a name and a role.
#pragma once

#include <optional>
#include <string>

#include "tools/ctl/session.h"

namespace api {

struct Token {
  std::string name;
  bool changes = false;  // the role admin; read otherwise
};

constexpr char kTokenFolder[] = "/var/lib/kestrove/api";

// Gives the token, which is shown once. Throws a Refusal for a name that is there or makes no sense.
std::string addToken(const std::string& name, bool changes);
// False where there is none of that name.
bool removeToken(const std::string& name);
std::optional<Token> findToken(const std::string& shown);
ctl::Json tokenRows();

}  // namespace api
