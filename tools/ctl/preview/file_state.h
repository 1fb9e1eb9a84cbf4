// SPDX-License-Identifier: Apache-2.0
// The files that the appliance's programs write.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace ctl::preview {

// The folders that an appliance has for itself, and the two files that its store names.
std::vector<std::string> ownPlaces();
// Where this program keeps its own books: a command that is tried finds them, and what it writes there is nobody's
// difference.
std::string ownBooks();

// Copies them below the folder, and from below it to their places again. What cannot be read is left out.
void exportFiles(const std::string& folder, const std::vector<std::string>& places);
void importFiles(const std::string& folder);

// Every file there and below /etc with its content: text as it stands, with password hashes replaced by a mark that
// changes with them; other files as a line that says their size and a mark of their content.
std::map<std::string, std::string> fileState(const std::vector<std::string>& places);

}  // namespace ctl::preview
