// SPDX-License-Identifier: Apache-2.0
// Showing files and folders at second places.
#pragma once

#include <string>

namespace kestrove::sandbox {

// Shows a file or folder, with all that is mounted below it, at a second place, which exists.
void bind(const std::string& from, const std::string& to);

// Makes a mounted file or folder, with all that is mounted below it, read-only.
void makeReadOnly(const std::string& path);

}  // namespace kestrove::sandbox
