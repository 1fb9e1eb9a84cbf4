// SPDX-License-Identifier: Apache-2.0
// What is printed on a stream, as text.
#pragma once

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>

#include <string>

namespace kestrove::testing {

// All that a function prints on the stream that it is given; its result must be 0.
template <typename Print>
std::string printed(Print print) {
  char* text = nullptr;
  size_t size = 0;
  FILE* stream = open_memstream(&text, &size);
  EXPECT_EQ(0, print(stream));
  fclose(stream);
  std::string result(text, size);
  free(text);
  return result;
}

}  // namespace kestrove::testing
