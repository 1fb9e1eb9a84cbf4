// SPDX-License-Identifier: Apache-2.0
// Words of a line that may hold blanks, quotes and any other byte.
#pragma once

#include <string>
#include <vector>

namespace ctl {

// The word as it stands when it is plain; otherwise in double quotes, with \" \\ \n \t and \xHH inside.
std::string quoted(const std::string& word);

// The words of a line, quotes taken off. Throws kUsage when a quote does not end.
std::vector<std::string> wordsIn(const std::string& line);

}  // namespace ctl
