// SPDX-License-Identifier: Apache-2.0
// Feeds the files of a corpus to a fuzz target, where there is no fuzzer: for compilers without one, and for the tests.
#include <dirent.h>
#include <stdio.h>

#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/fuzz_fixture.h"

namespace {

int replayFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file.good() && !file.eof()) return 0;
  fprintf(stderr, "%s: %zu bytes\n", path.c_str(), bytes.size());
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  return 1;
}

int replayFolder(const std::string& folder) {
  DIR* directory = opendir(folder.c_str());
  if (!directory) return 0;
  int count = 0;
  while (const dirent* entry = readdir(directory)) {
    if (entry->d_name[0] != '.') count += replayFile(folder + "/" + entry->d_name);
  }
  closedir(directory);
  return count;
}

}  // namespace

// An empty corpus is a failure: then nothing was tried.
int main(int argc, char** argv) {
  int count = 0;
  for (int i = 1; i < argc; ++i) count += replayFolder(argv[i]);
  fprintf(stderr, "%d inputs\n", count);
  return count > 0 ? 0 : 1;
}
