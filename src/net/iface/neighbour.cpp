// SPDX-License-Identifier: Apache-2.0
// A neighbour's hardware address, as a probe of the wire tells it.
#include <stdio.h>
#include <string.h>
#include <syslog.h>

#include "kestrove/text.h"
#include "store/fail.h"
#include "sys/command.h"
#include "sys/probe.h"
#include "sys/stream.h"

namespace kestrove {
namespace {

constexpr char kNeighbourQuery[] = "/usr/bin/arping %s -I %s -c %d";
constexpr size_t kHardwareAddressLength = 17;

// Copies the hardware address between the brackets of an answer; false for any other line.
bool copyAnswer(const char* line, char* dst) {
  if (!strstr(line, "Unicast reply")) return false;
  const char* open = strchr(line, '[');
  const char* close = open ? strchr(open, ']') : nullptr;
  if (!close) return false;
  size_t length = static_cast<size_t>(close - open - 1);
  if (length > kHardwareAddressLength) length = kHardwareAddressLength;
  memcpy(dst, open + 1, length);
  dst[length] = '\0';
  return true;
}

// The line is the command first, then each line of its output: the last one stands in the log.
template <size_t Size>
int answerTo(char (&line)[Size], char* dst) {
  sys::Pipe pipe(popen(line, "re"));
  if (!pipe) {
    syslog(LOG_ERR, "fail to popen %s\n", line);
    return -1;
  }
  while (fgets(line, static_cast<int>(Size), pipe.get())) {
    if (copyAnswer(line, dst)) return 0;
  }
  syslog(LOG_ERR, "fail to retrieve %s\n", line);
  return -1;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int neighb_mac(int count, const char* ifname, const char* ip, char* dst) {
  if (!ifname || !ip || !dst) return fail(SHM_EINVAL);
  char line[240];
  if (!sys::formatLine(line, sizeof line, kNeighbourQuery,
                       {sys::Word::address(ip), sys::Word::interface(ifname), sys::Word::number(count)}))
    return -1;
  KESTROVE_PROBE1(command_begin, &line[0]);
  int result = answerTo(line, dst);
  KESTROVE_PROBE1(command_end, result);
  return result;
}
