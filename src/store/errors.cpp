// SPDX-License-Identifier: Apache-2.0
// The table of error codes, and the look-up in every table of messages.
#include <errno.h>
#include <stdio.h>
#include <string.h>

#include "kestrove/errors.h"
#include "kestrove/segment.h"

namespace kestrove {
namespace {

// Indexed by row, not by code: row 21 holds the text of code 23 and the last two rows have none. Kept on purpose.
constexpr MessageEntry kErrors[] = {
    {SHM_OK, "Normal successful completion"},
    {SHM_EATTACH, "Error attaching to shared memory"},
    {SHM_ESYSTEM, "System error"},
    {SHM_EINVAL, "Invalid argument"},
    {SHM_EREADONLY, "Object is read-only"},
    {SHM_ELOGOFF, "Logging is disabled"},
    {SHM_EFULL, "The table is full"},
    {SHM_ENOENT, "The requested entity does not exist"},
    {SHM_EEXIST, "The entity already exists"},
    {SHM_EOPEN, "Error opening file"},
    {SHM_EIO, "Error reading or writing file"},
    {SHM_EEOF, "Attempt to access beyond end of file"},
    {SHM_ERANGE, "The given value does not fall in the allowed range"},
    {SHM_EOCTET, "Invalid Ip Address: Must contain 4 octets, each >=0  and <=255"},
    {SHM_EDOTS, "Invalid Ip Address: Must contain 4 octets separated by 3 dots"},
    {SHM_EMASK, "Invalid Ip Address Subnet Mask"},
    {SHM_EIPV6, "Invalid IPv6 Address"},
    {SHM_ESTARTS, "Kestrove has failed to init too many times consecutively"},
    {SHM_EREBOOTS, "We already rebooted because we couldn't start kestrove too many times"},
    {SHM_ENOUSER, "No such user exists in the system"},
    {SHM_EPASSWORD, "Incorrect password"},
    {SHM_EUNKNOWN, "Unknown error"},
    {0, nullptr},
    {0, nullptr},
};
constexpr uint32_t kLastRow = 23;
static_assert(sizeof kErrors / sizeof kErrors[0] == kLastRow + 1);

const char* messageOfRow(uint32_t row) { return kErrors[row < kLastRow ? row : kLastRow].message; }

const MessageEntry* findEntry(const MessageTable& table, int code) {
  for (int32_t i = 0; i < table.count; ++i) {
    if (table.entries[i].code == code) return &table.entries[i];
  }
  return nullptr;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

const char* shm_strerror(int code) { return messageOfRow(static_cast<uint32_t>(code)); }

void shm_perror(const char* prefix) {
  if (!prefix) return;
  int error = errno;  // before the streams can change it
  const char* message = messageOfRow(shm_errno);
  switch (shm_errno) {
    case SHM_ESYSTEM: perror(prefix); return;
    case SHM_EOPEN:
    case SHM_EIO: fprintf(stderr, "%s: %s: %s\n", prefix, message, strerror(error)); return;
    default: fprintf(stderr, "%s: %s\n", prefix, message ? message : "(null)");
  }
}

const char* shm_getMessage(const MessageTable* table, int code) {
  if (!table || !table->entries || table->count < 1) {
    shm_errno = SHM_EINVAL;
    return nullptr;
  }
  const MessageEntry* entry = findEntry(*table, code);
  if (!entry) entry = findEntry(*table, table->defaultCode);
  return entry ? entry->message : table->entries[table->count - 1].message;
}
