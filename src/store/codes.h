// SPDX-License-Identifier: Apache-2.0
// Names of the codes that the store holds. The last row of each table is its default: unknown codes take its text.
#pragma once

#include "kestrove/segment.h"

namespace kestrove {

extern const MessageTable kOperationalStateNames;  // switches, operationalState, ipv6Support
extern const MessageTable kCongestionNames;        // lanCongestionControl, wanCongestionControl
extern const MessageTable kCompressionNames;       // ddupOperState
extern const MessageTable kTaskNames;              // indexes of taskPids
extern const MessageTable kRowStatusNames;         // routes and rules
extern const MessageTable kLinkNames;  // link settings; the speeds that have no name of their own are 10baseT

}  // namespace kestrove
