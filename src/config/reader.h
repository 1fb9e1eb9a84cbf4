// SPDX-License-Identifier: Apache-2.0
// Reading a configuration file into the store.
#pragma once

namespace kestrove {

// One line, which may be written to, of at most LineSource::kLongestLine characters. The path and the number are for
// messages. The store is attached and locked.
void parseConfigLine(char* line, const char* path, int number);

// Every line of an open file. False when it could not be read to its end.
[[nodiscard]] bool readConfigFile(const char* path, int fd);

}  // namespace kestrove
