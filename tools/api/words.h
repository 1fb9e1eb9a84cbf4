// SPDX-License-Identifier: Apache-2.0
// A request as the words of the command that its row stands for.
#pragma once

#include <string>
#include <vector>

#include "tools/api/router.h"

namespace api {

struct Spoken {
  std::vector<std::string> words;
  std::string input;  // standard input of the command
};

// The members of the body, or of a GET and a DELETE those of the query, as the row takes them. Throws 400 for what is
// no object, what no row takes, what is missing, and for values that are no single words.
Spoken spoken(const Route& route, const Request& request);

// The words of another template of the same row, of the parts of its path alone.
std::vector<std::string> wordsFrom(const std::string& pattern, const Fields& parts);

// The body as an object; empty where nothing was sent.
Json bodyOf(const Request& request);

}  // namespace api
