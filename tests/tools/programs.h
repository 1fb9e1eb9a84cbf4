// SPDX-License-Identifier: Apache-2.0
// The programs as their users run them.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tests/support/store.h"
#include "tools/common/program.h"

namespace kestrove::testing {

using Json = nlohmann::ordered_json;

struct Ran {
  int status = -1;
  std::string out;
  std::string err;
  Json json() const { return Json::parse(out, nullptr, false); }
};

// Runs a line of the shell with the given standard input.
inline Ran run(const std::string& line, const std::string& input = "") {
  writeFile("/tmp/stdin", input);
  tools::Output output = tools::runForOutput((line + " </tmp/stdin 2>/tmp/stderr").c_str());
  return {output.status, output.text, readFile("/tmp/stderr")};
}

inline Ran ctl(const std::string& arguments, const std::string& input = "") {
  return run(std::string(KESTROVECTL) + " " + arguments, input);
}

// For explain: the leak checker of a sanitized build cannot look at a process that is traced.
inline Ran tracedCtl(const std::string& arguments) {
  return run(std::string("ASAN_OPTIONS=detect_leaks=0 ") + KESTROVECTL + " " + arguments);
}

}  // namespace kestrove::testing
