// SPDX-License-Identifier: Apache-2.0
// What the module in snmpd tells kestrove-snmp: one datagram of a letter and the digit of the version.
#pragma once

namespace snmp {

constexpr char kHintPath[] = "/run/kestrove/snmp-hints";

enum Hint : char { kReadRefused = 'r', kWriteRefused = 'w', kWriteAsked = 's' };

}  // namespace snmp
