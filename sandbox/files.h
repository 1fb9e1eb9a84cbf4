// SPDX-License-Identifier: Apache-2.0
// Small file operations of the launcher. Those without a result end the launcher when they fail.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace kestrove::sandbox {

bool exists(const std::string& path);  // symbolic links count as they stand
bool isFolder(const std::string& path);
std::string folderOf(const std::string& path);
std::string nameOf(const std::string& path);
std::string realPath(const std::string& path);  // all links followed; empty when there is nothing

// What a folder holds, without "." and ".."; nothing when it cannot be read.
std::vector<std::string> namesIn(const std::string& folder);

// True when path is folder or lies below it.
bool isBelow(const std::string& path, const std::string& folder);

void makeFolder(const std::string& path, mode_t mode);  // an existing one is left as it is
void writeText(const std::string& path, const std::string& text, mode_t mode);
bool copyFile(const std::string& from, const std::string& to, mode_t mode);  // false when `from` cannot be read
void link(const std::string& target, const std::string& path);               // a symbolic link, replacing a file

}  // namespace kestrove::sandbox
