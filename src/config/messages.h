// SPDX-License-Identifier: Apache-2.0
// What the reader says about a line.
#pragma once

#include <syslog.h>

#include "config/keywords.h"

namespace kestrove {

inline void warnTruncated(const ConfigLine& line, size_t limit) {
  syslog(LOG_ERR, "%s: line %d: Warning: truncated value for %.*s parameter, max length %d.\n", line.path, line.number,
         static_cast<int>(line.keyword.size()), line.keyword.data(), static_cast<int>(limit));
}

inline void warnUndefined(const ConfigLine& line) {
  syslog(LOG_WARNING, "%s: line %d: undefined parameter \"%.*s\".\n", line.path, line.number,
         static_cast<int>(line.keyword.size()), line.keyword.data());
}

}  // namespace kestrove
