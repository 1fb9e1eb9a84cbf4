// SPDX-License-Identifier: Apache-2.0
// Rows of the configuration file: each hands an entry to the table's own operation. A row that ends early is dropped
// without a message; columns behind the last one are not looked at. The result of the operation is not either: no row
// ends the reading, and what a table refuses is left out with its code in shm_errno.
#pragma once

#include "config/keywords.h"

namespace kestrove {

void readIp6Address(const ConfigLine& line);
void readManagementAddress(const ConfigLine& line);
void readRoute(const ConfigLine& line);
void readRoute6(const ConfigLine& line);
void readRule(const ConfigLine& line);
void readRule6(const ConfigLine& line);
void readRuleAny(const ConfigLine& line);
void readUserAccount(const ConfigLine& line);

}  // namespace kestrove
