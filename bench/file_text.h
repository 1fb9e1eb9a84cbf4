// SPDX-License-Identifier: Apache-2.0
// A whole file as text.
#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace bench {

// Empty when it cannot be read.
inline std::string fileText(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace bench
