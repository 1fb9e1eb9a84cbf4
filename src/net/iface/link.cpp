// SPDX-License-Identifier: Apache-2.0
// Link speed and duplex, set and read by the MII tool.
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "kestrove/codes.h"
#include "kestrove/iface.h"
#include "store/fail.h"
#include "store/interface_names.h"
#include "store/lock.h"
#include "sys/command.h"
#include "sys/scratch_file.h"
#include "sys/stream.h"

using namespace kestrove;
using sys::Word;

namespace {

constexpr char kRestartNegotiation[] = "/usr/bin/mii-diag -R %s > /dev/null 2>&1";
constexpr char kForceMedium[] = "/usr/bin/mii-diag -F %d %s > /dev/null 2>&1";
constexpr char kReadStatus[] = "/usr/bin/mii-diag -t %s > %s";
constexpr char kStatusFile[] = "/tmp/mii.out";
constexpr int kLongestLine = 255;

struct LinkRow {
  int which;
  uint32_t ConfigRecord::*setting;
  int interfaceNumber;
};

// The LAN side is the base port, of which its bridge and VLANs are made.
constexpr LinkRow kLinks[] = {{SHM_IF_LAN, &ConfigRecord::lanLinkSetting, SHM_IF_BASE},
                              {SHM_IF_WAN, &ConfigRecord::wanLinkSetting, SHM_IF_WAN},
                              {SHM_IF_MANAGEMENT, &ConfigRecord::managementLinkSetting, SHM_IF_MANAGEMENT}};

const LinkRow* linkRow(int which) {
  for (const LinkRow& row : kLinks) {
    if (row.which == which) return &row;
  }
  return nullptr;
}

// The text behind ": " of the line's last colon; false for a line without one.
bool copyValue(char* line, char* out) {
  line[strcspn(line, "\n")] = '\0';
  const char* colon = strrchr(line, ':');
  if (!colon) return false;
  strcpy(out, colon[1] == '\0' ? "" : colon + 2);
  return true;
}

bool readValues(FILE* stream, char* const (&outputs)[3]) {
  char line[kLongestLine + 1];
  for (char* out : outputs) {
    if (!fgets(line, sizeof line, stream) || !copyValue(line, out)) return false;
  }
  return true;
}

}  // namespace

// A setting that the port cannot do is kept: what the tool says of it is not looked at, on purpose.
int setSystemLinkSetting(int which) {
  const LinkRow* row = linkRow(which);
  if (!row) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  InterfaceName name;
  static_cast<void>(interfaceName(row->interfaceNumber, name));  // each row has one
  uint32_t setting = shm->config.*row->setting;
  if (setting == SHM_LINK_AUTO) {
    sys::tryLine(kRestartNegotiation, {Word::interface(name.text)});
  } else {
    sys::tryLine(kForceMedium, {Word::number(static_cast<int32_t>(setting)), Word::interface(name.text)});
  }
  return 0;
}

// The second line goes into the third buffer and the third into the second: kept on purpose.
int getLinkStatus(int iface, char* first, char* second, char* third) {
  if (!first || !second || !third) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  unlink(kStatusFile);
  InterfaceName name;
  if (!interfaceName(iface == SHM_IF_LAN ? SHM_IF_BASE : iface, name)) return fail(SHM_EINVAL);
  // The shell writes into the file that it finds under the name: one of ours, or the tool does not run.
  sys::Stream status = sys::streamOn(sys::makeScratchFile(kStatusFile), "r");
  if (!status) return fail(SHM_ESYSTEM);
  // A failure leaves no lines to read.
  sys::tryLine(kReadStatus, {Word::interface(name.text), Word::fixed(kStatusFile)});
  bool complete = readValues(status.get(), {first, third, second});
  unlink(kStatusFile);
  return complete ? 0 : -1;
}
