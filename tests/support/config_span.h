// SPDX-License-Identifier: Apache-2.0
// Fields of the configuration, by their place in it.
#pragma once

#include <stddef.h>

#include "kestrove/kestrove.h"

namespace kestrove::testing {

struct ConfigSpan {
  const char* name;
  size_t offset;
  size_t width;
};

#define CONFIG_SPAN(field) \
  { #field, offsetof(ConfigRecord, field), sizeof(ConfigRecord::field) }

inline char* fieldOf(ShmData& store, const ConfigSpan& span) {
  return reinterpret_cast<char*>(&store.config) + span.offset;
}

}  // namespace kestrove::testing
