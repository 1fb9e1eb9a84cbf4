// Lines of the configuration file for whole tables, one for each entry in use. Given false back, a rule could not be
// written; the others do not look at that.
#pragma once

#include "config/keywords.h"

namespace kestrove {

bool writeUserAccounts(std::string_view keyword, sys::TextWriter& out);
bool writeIp6Addresses(std::string_view keyword, sys::TextWriter& out);
bool writeManagementAddresses(std::string_view keyword, sys::TextWriter& out);
bool writeRoutes(std::string_view keyword, sys::TextWriter& out);
bool writeRoutes6(std::string_view keyword, sys::TextWriter& out);
// All rules but the last, the default rule. Ends at the first that cannot be written; writes none and gives true when
// nothing could be written before them.
bool writeRules(std::string_view keyword, sys::TextWriter& out);

}  // namespace kestrove
