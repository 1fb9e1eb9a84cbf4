// SPDX-License-Identifier: Apache-2.0
// One line of kestrovectl, held against its grammar; what it asks for is read, and nothing is run.
#include <stdlib.h>

#include <string>

#include "fuzz/fuzz_fixture.h"
#include "tools/ctl/script/match.h"
#include "tools/ctl/script/script_file.h"

using namespace kestrove;

namespace {

void demand(bool condition) {
  if (!condition) abort();
}

void read(const std::vector<std::string>& words) {
  const ctl::Match match = ctl::matcher().match(words);
  demand(!match.row || match.given.size() == match.row->values.size());
  if (match.row && match.row->wish) match.row->wish(match.given);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string line(reinterpret_cast<const char*>(data), size);
  fuzzing::freshStore();
  try {
    read(ctl::wordsOfLine(line));
  } catch (const ctl::Refusal& refusal) {
    demand(*refusal.what() != '\0');
  }
  fuzzing::checkStore();
  return 0;
}
