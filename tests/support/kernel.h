// SPDX-License-Identifier: Apache-2.0
// The real kernel, asked and changed through its usual programs; each must succeed unless it is tried.
#pragma once

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>

#include <string>

namespace kestrove::testing {

inline std::string readAll(FILE* stream) {
  std::string text;
  char part[4096];
  for (size_t length; (length = fread(part, 1, sizeof part, stream)) > 0;) text.append(part, length);
  return text;
}

inline std::string outputOf(const std::string& command) {
  FILE* pipe = popen(command.c_str(), "re");
  std::string text = readAll(pipe);
  EXPECT_EQ(0, pclose(pipe)) << command;
  return text;
}

// What a command prints, its complaints too, whether it succeeds or not.
inline std::string tried(const std::string& command) {
  FILE* pipe = popen((command + " 2>&1").c_str(), "re");
  std::string text = readAll(pipe);
  pclose(pipe);
  return text;
}

inline void run(const std::string& command) { ASSERT_EQ(0, system(command.c_str())) << command; }

}  // namespace kestrove::testing
