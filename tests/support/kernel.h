// The real kernel, asked and changed through its usual programs; each must succeed.
#pragma once

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>

#include <string>

namespace kestrove::testing {

inline std::string outputOf(const std::string& command) {
  FILE* pipe = popen(command.c_str(), "re");
  std::string text;
  char part[4096];
  for (size_t length; (length = fread(part, 1, sizeof part, pipe)) > 0;) text.append(part, length);
  EXPECT_EQ(0, pclose(pipe)) << command;
  return text;
}

inline void run(const std::string& command) { ASSERT_EQ(0, system(command.c_str())) << command; }

}  // namespace kestrove::testing
