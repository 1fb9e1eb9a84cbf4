// SPDX-License-Identifier: Apache-2.0
// The appliance's root while it is being built.
//
// One memory file system holds everything that the appliance may write: `upper` lies over the machine's folders,
// and /run, /tmp and /dev are the appliance's alone. Files are laid into it before it is mounted, which is far
// quicker than writing through the finished root.
#pragma once

#include <sys/types.h>

#include <string>

namespace kestrove::sandbox {

// Nothing that the launcher still needs lies below /sys, so that the stage may cover it.
inline const std::string kStage = "/sys";
inline const std::string kUpper = kStage + "/upper";
inline const std::string kRoot = kStage + "/root";

// Where the appliance keeps what tests ask about.
inline const std::string kMarkers = "/run/kestrove";

void makeStage();

// True for what the appliance has apart from the machine: /proc, /sys, /dev, /run and /tmp with all below them.
bool isOwn(const std::string& path);

// The place on the stage of a path of the appliance. Folders on the way that are links on the machine are followed,
// missing ones are made, with the machine's mode where the machine has them.
std::string place(const std::string& path);

// The same for a folder, which is made.
std::string placeFolder(const std::string& path, mode_t mode = 0755);

// Marks a staged folder: what the machine has at its place stays out of the appliance.
void markEmpty(const std::string& staged);
bool markedEmpty(const std::string& staged);

}  // namespace kestrove::sandbox
