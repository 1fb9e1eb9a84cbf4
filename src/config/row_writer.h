// Lines of the configuration file for whole tables, one for each entry in use. Given false back, a rule could not be
// written; the others do not look at that.
#pragma once

#include "config/keywords.h"

namespace kestrove {

bool writeUserRows(std::string_view keyword, sys::TextWriter& out);
bool writeIp6AddressRows(std::string_view keyword, sys::TextWriter& out);
bool writeManagementRows(std::string_view keyword, sys::TextWriter& out);
bool writeRouteRows(std::string_view keyword, sys::TextWriter& out);
bool writeRoute6Rows(std::string_view keyword, sys::TextWriter& out);
// All rules but the last, the default rule. Ends at the first that cannot be written; writes none and gives true when
// nothing could be written before them.
bool writeRuleRows(std::string_view keyword, sys::TextWriter& out);

}  // namespace kestrove
