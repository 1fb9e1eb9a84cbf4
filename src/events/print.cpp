// SPDX-License-Identifier: Apache-2.0
// The event log's section of the dump.
#include <stdio.h>

#include "events/format.h"
#include "kestrove/dump.h"
#include "kestrove/events.h"
#include "kestrove/segment.h"
#include "store/segment.h"
#include "sys/text_writer.h"

namespace kestrove {
namespace {

constexpr int kListedLine = 128;

void printHeader(FILE* stream, const EventLog& log) {
  fprintf(stream, "  eventLogFull: \t\t%d\n", static_cast<int>(log.eventLogFull));
  fprintf(stream, "  readIndex: \t\t\t%d\n", static_cast<int>(log.readIndex));
  fprintf(stream, "  writeIndex: \t\t\t%d\n", static_cast<int>(log.writeIndex));
}

// The labels do not match the columns below them: the established look, kept on purpose.
void printLabels(FILE* stream) {
  constexpr char kFormat[] = "%-21s %-12s %-9s %s\n";
  fputs("- List of events:\n", stream);
  fprintf(stream, kFormat, "Timestamp", "Description", "Source", "Type");
  fprintf(stream, kFormat, "---------", "-----------", "------", "----");
}

void printEvents(FILE* stream) {
  sys::StreamTarget target{stream};
  sys::TextWriter out(target);
  char line[kListedLine];
  int length;
  for (uint32_t index = 0; (length = getEventString(index, line, kListedLine, kListLayout)) > 0; ++index) {
    line[length] = '\n';
    out.text({line, static_cast<size_t>(length) + 1});
  }
  static_cast<void>(out.flush());  // a stream that takes no more tells its owner by ferror()
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

// The header is read without the lock, which the caller of a dump may hold; each event is fetched under it.
int printEventLog(FILE* stream) {
  if (!attachStore()) return -1;
  if (!stream) stream = stdout;
  const EventLog& log = shm->eventLog;
  printHeader(stream, log);
  if (!log.eventLogFull && log.writeIndex == 0) {
    fputs("  ** No events **\n", stream);
    return 0;
  }
  printLabels(stream);
  printEvents(stream);
  fputs("-----------------\n", stream);
  return 0;
}
