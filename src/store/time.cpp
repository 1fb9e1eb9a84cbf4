// SPDX-License-Identifier: Apache-2.0
// Dates and times as text.
#include <string.h>
#include <time.h>

#include "kestrove/text.h"

namespace {

constexpr size_t kTextSize = 256;

// What strftime leaves of a text that does not fit is undefined.
void writeTime(char* out, const char* format, const tm& when) {
  if (strftime(out, kTextSize, format, &when) == 0) *out = '\0';
}

}  // namespace

void formatTime(char* dateOut, char* timeOut, const char* format, const time_t* when) {
  if (!when || (dateOut && !format)) return;
  tm parts;
  if (!gmtime_r(when, &parts)) return;
  char date[kTextSize];  // before the time is given out: the format may stand in one of the outputs
  if (dateOut) writeTime(date, format, parts);
  if (timeOut) writeTime(timeOut, "%T", parts);
  if (dateOut) strcpy(dateOut, date);
}

void getSystemTime(char* dateOut, char* timeOut, const char* format) {
  time_t now = time(nullptr);
  formatTime(dateOut, timeOut, format, &now);
}
