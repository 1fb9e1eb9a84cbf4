// SPDX-License-Identifier: Apache-2.0
// Where the appliance keeps its files.
#pragma once

namespace kestrove::testing {

constexpr char kConfigFile[] = "/etc/config/kestrove.conf";
constexpr char kEventFile[] = "/var/log/kestrove/event.log";
constexpr char kLockFile[] = "/var/lock/shm";
constexpr char kPasswd[] = "/etc/passwd";

}  // namespace kestrove::testing
