// SPDX-License-Identifier: Apache-2.0
// A script of kestrovectl as apply reads it, whole.
#include <stdio.h>
#include <stdlib.h>

#include <string>

#include "fuzz/fuzz_fixture.h"
#include "tools/ctl/script/script.h"

using namespace kestrove;

namespace {

void demand(bool condition) {
  if (!condition) abort();
}

void check(const ctl::Script& script) {
  demand(script.complaints.size() <= ctl::kMostComplaints);
  size_t before = 0;
  for (const ctl::ScriptLine& line : script.lines) {
    demand(line.number > before && !ctl::meaningOf(line).empty());
    before = line.number;
  }
  for (const ctl::Complaint& one : script.complaints) demand(one.line > 0 && *one.refusal.what() != 0);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  std::string text(reinterpret_cast<const char*>(data), size);
  fuzzing::freshStore();
  FILE* in = fmemopen(text.data(), text.size(), "r");
  check(ctl::scriptOf("script", in));
  fclose(in);
  fuzzing::checkStore();
  return 0;
}
