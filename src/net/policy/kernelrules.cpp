// SPDX-License-Identifier: Apache-2.0
// The packet-filter tables, reset through one iptables-restore run.
#include "kestrove/kernelrules.h"

#include <stdio.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include "store/fail.h"
#include "sys/command.h"
#include "sys/scratch_file.h"
#include "sys/stream.h"

FILE* fp = nullptr;

namespace kestrove {
namespace {

constexpr char kRestoreFile[] = "/tmp/restore_file";
constexpr char kNowhere[] = "/dev/null";
constexpr mode_t kEverybodyReadsAndWrites = 0666;

using Vector = const char* const[];
constexpr Vector kFlushFilter = {"/sbin/iptables", "-F", nullptr};
constexpr Vector kFlushMangle = {"/sbin/iptables", "-t", "mangle", "-F", nullptr};
constexpr Vector kFlushFilter6 = {"/sbin/ip6tables", "-F", nullptr};
constexpr Vector kDeleteFilterChains = {"/sbin/iptables", "-X", nullptr};
constexpr Vector kDeleteMangleChains = {"/sbin/iptables", "-t", "mangle", "-X", nullptr};
constexpr Vector kRestore = {"/sbin/iptables-restore", nullptr};
constexpr Vector kDropForwarded6 = {"/sbin/ip6tables", "-A", "FORWARD", "-j", "DROP", nullptr};

constexpr const char* kOpeningLines[] = {"*mangle",
                                         ":PREROUTING ACCEPT [0:0]",
                                         ":INPUT ACCEPT [0:0]",
                                         ":FORWARD ACCEPT [0:0]",
                                         ":OUTPUT ACCEPT [0:0]",
                                         ":POSTROUTING ACCEPT [0:0]"};
constexpr const char* kClosingLines[] = {
    "COMMIT", "*filter", ":INPUT ACCEPT [0:0]", ":FORWARD ACCEPT [0:0]", ":OUTPUT ACCEPT [0:0]", "COMMIT"};

int run(const char* const* vector, const char* input = kNowhere) {
  return sys::runVector(const_cast<char* const*>(vector), input, kNowhere);
}

template <size_t N>
void addLines(const char* const (&lines)[N]) {
  for (const char* line : lines) addToRestoreFile(line);
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

// Callers may add lines of their own between the opening and commitHandler, so the stream is theirs to see.
int updateKernelRules(void) {
  fp = sys::streamOn(sys::makeScratchFile(kRestoreFile), "w").release();
  if (!fp) {
    syslog(LOG_ERR, "Error opening iptables temp file: %m");
    return -1;
  }
  // Only now that the new tables have a file are the old ones flushed.
  addLines(kOpeningLines);
  flushExistingChains();
  deleteExistingChains();
  commitHandler();
  return 0;
}

int addToRestoreFile(const char* line) {
  if (!line) return fail(SHM_EINVAL);
  return fp ? fprintf(fp, "%s\n", line) : -1;
}

// Both: every command runs, the result is that of the last.
int flushExistingChains(void) {
  run(kFlushFilter);
  run(kFlushMangle);
  return run(kFlushFilter6);
}

int deleteExistingChains(void) {
  run(kDeleteFilterChains);
  return run(kDeleteMangleChains);
}

// The result is that of removing the file, not that of the restore: kept on purpose.
int commitHandler(void) {
  if (!fp) return -1;
  addLines(kClosingLines);
  // On the descriptor: by its name another file could get the mode.
  if (fchmod(fileno(fp), kEverybodyReadsAndWrites) != 0) syslog(LOG_ERR, "Error changing mode on restore file: %m");
  fclose(fp);  // a file that lost its end has no last COMMIT, and the restore refuses it
  fp = nullptr;
  run(kRestore, kRestoreFile);
  return unlink(kRestoreFile);
}

int addIp6tablesDropRule(void) { return run(kDropForwarded6); }
