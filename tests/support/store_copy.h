// SPDX-License-Identifier: Apache-2.0
// What an operation does with a record of the store itself, held against what it does with a copy of that.
#pragma once

#include <string.h>

#include <functional>
#include <memory>

#include "kestrove/kestrove.h"

namespace kestrove::testing {

// Results, codes and the whole store are the same whether the operation is handed the record of the store or its copy.
template <typename Record>
void expectSameAsACopy(Record* record, const std::function<int(Record*)>& operation) {
  auto before = std::make_unique<ShmData>(), after = std::make_unique<ShmData>();
  memcpy(before.get(), shm, sizeof *shm);
  Record copy = *record;
  shm_errno = SHM_OK;
  int result = operation(&copy);
  uint32_t code = shm_errno;
  memcpy(after.get(), shm, sizeof *shm);
  memcpy(static_cast<void*>(shm), before.get(), sizeof *shm);
  shm_errno = SHM_OK;
  EXPECT_EQ(result, operation(record));
  EXPECT_EQ(code, shm_errno);
  EXPECT_EQ(0, memcmp(after.get(), shm, sizeof *shm));
}

}  // namespace kestrove::testing
