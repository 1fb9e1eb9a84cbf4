// SPDX-License-Identifier: Apache-2.0
// One line of a configuration file, as the reader hands it to the parser.
#include <string.h>

#include "config/line_source.h"
#include "config/reader.h"
#include "fuzz/fuzz_fixture.h"

using namespace kestrove;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  char line[LineSource::kLongestLine + 1];
  if (size > LineSource::kLongestLine) size = LineSource::kLongestLine;
  memcpy(line, data, size);
  line[size] = '\0';
  fuzzing::freshStore();
  parseConfigLine(line, "/etc/config/kestrove.conf", 1);
  fuzzing::checkStore();
  return 0;
}
