// SPDX-License-Identifier: Apache-2.0
#include "tools/snmp/setting.h"

#include <cstring>
#include <string>

#include "kestrove/kestrove.h"
#include "tools/snmp/wire.h"

namespace snmp {
namespace {

constexpr size_t kLongestText = 256;

int setText(const ctl::ItemRow& row, std::span<const uint8_t> value) {
  return setShmString(row.id, std::string(value.begin(), value.end()).c_str());
}

int setNumber(const ctl::ItemRow& row, std::span<const uint8_t> value, uint32_t source) {
  long number;
  memcpy(&number, value.data(), sizeof number);
  return setKestroveConfigItem(row.id, static_cast<uint32_t>(number), source, kUser);
}

bool hasZero(std::span<const uint8_t> value) { return memchr(value.data(), 0, value.size()) != nullptr; }

}  // namespace

Refused check(const Found& found, int type, size_t length, const ShmData& store) {
  if (!found.leaf->scalar || !found.leaf->scalar->settable) return kNotWritable;
  if (type != typeOf(found.leaf->field->kind)) return kWrongType;
  const bool isText = found.leaf->field->kind == Kind::kText;
  if (isText ? length > kLongestText : length != sizeof(long)) return kWrongLength;
  return store.config.snmpOperState == SHM_ON ? kNoError : kNoAccess;
}

// The library names its reason; a value that is in the store and not in the file is a failure, too.
Refused set(const Found& found, std::span<const uint8_t> value, uint32_t source) {
  const ctl::ItemRow& row = *found.leaf->scalar->settable;
  const bool isText = row.family == ctl::ItemFamily::kText;
  if (isText && hasZero(value)) return kWrongValue;
  shm_errno = SHM_OK;
  const int result = isText ? setText(row, value) : setNumber(row, value, source);
  if (result == 0 && shm_errno != SHM_EIO) return kNoError;
  return shm_errno == SHM_EINVAL || shm_errno == SHM_ERANGE ? kWrongValue : kGenErr;
}

}  // namespace snmp
