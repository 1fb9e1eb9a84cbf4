// SPDX-License-Identifier: Apache-2.0
// Lines of the configuration file for whole tables, one for each entry in use. Given false back, a rule could not be
// written; the others do not look at that.
#pragma once

#include "config/keywords.h"

namespace kestrove {

[[nodiscard]] bool writeUserRows(std::string_view keyword, sys::TextWriter& out);
[[nodiscard]] bool writeIp6AddressRows(std::string_view keyword, sys::TextWriter& out);
[[nodiscard]] bool writeManagementRows(std::string_view keyword, sys::TextWriter& out);
[[nodiscard]] bool writeRouteRows(std::string_view keyword, sys::TextWriter& out);
[[nodiscard]] bool writeRoute6Rows(std::string_view keyword, sys::TextWriter& out);
// All rules but the last, the default rule. Ends at the first that cannot be written; writes none and gives true when
// nothing could be written before them.
[[nodiscard]] bool writeRuleRows(std::string_view keyword, sys::TextWriter& out);

}  // namespace kestrove
