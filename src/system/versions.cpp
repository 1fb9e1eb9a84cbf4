// SPDX-License-Identifier: Apache-2.0
// Version texts and the identifier of the unit.
#include <string.h>

#include "kestrove/system.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/text.h"

namespace kestrove {
namespace {

// The rest of the length is zeroed; a text that fills it stays without a terminator.
template <size_t N>
int copyText(char (ConfigRecord::*field)[N], char* buf, int len) {
  if (!buf || len < 0) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  size_t length = static_cast<size_t>(len);
  std::string_view text = fieldView(shm->config.*field).substr(0, length);
  memmove(buf, text.data(), text.size());  // the buffer may be the field
  memset(buf + text.size(), 0, length - text.size());
  return 0;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int getFullVersionNumber(char* buf, int len) { return copyText(&ConfigRecord::kestroveFullVersion, buf, len); }
int getFullDrelmVersionNumber(char* buf, int len) { return copyText(&ConfigRecord::drelmFullVersion, buf, len); }
int getKestroveVersion(char* buf, int len) { return copyText(&ConfigRecord::kestroveVersion, buf, len); }
int getDrelmVersion(char* buf, int len) { return copyText(&ConfigRecord::drelmVersion, buf, len); }
int getUnitId(char* buf, int len) { return copyText(&ConfigRecord::unitId, buf, len); }
