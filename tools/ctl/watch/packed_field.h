// SPDX-License-Identifier: Apache-2.0
// Members of the store's packed records, found through a pointer to member: that has forgotten the packing, so what is
// read through it may lie anywhere.
#pragma once

#include <cstring>

namespace ctl {

template <typename Record, typename Field>
Field fieldOf(const Record& record, Field Record::*field) {
  Field value;
  memcpy(&value, &(record.*field), sizeof value);
  return value;
}

}  // namespace ctl
