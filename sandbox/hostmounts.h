// The machine's other file systems.
#pragma once

namespace kestrove::sandbox {

// Every file system mounted below the machine's root stays visible at its place, read-only. What the appliance has of
// its own (/proc, /sys, /dev, /run, /tmp) is left out.
void mountHostFileSystems();

}  // namespace kestrove::sandbox
