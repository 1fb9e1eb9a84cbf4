// SPDX-License-Identifier: Apache-2.0
// What may stand at a place of a line: words and values, with their help.
#pragma once

#include "tools/ctl/place.h"
#include "tools/ctl/shell/typed_line.h"

namespace ctl {

struct Candidate {
  std::string word;
  std::string help;
};

// What begins with the text behind these whole words. Values of the store are read as they stand, without its lock:
// nobody waits for a key. Names of files only where they may be seen; a folder ends in "/".
std::vector<Candidate> candidates(const Words& before, const std::string& begun, bool files);

// The same with what is no word but a value of some type: what "?" shows.
std::vector<Candidate> explained(const Words& before, const std::string& begun);

// Whether the value that is typed there is the name of a file.
bool takesFile(const Words& before);

}  // namespace ctl
