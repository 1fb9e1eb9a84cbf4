// SPDX-License-Identifier: Apache-2.0
#include "sys/calendar.h"

#include <time.h>

#include "sys/format.h"

namespace kestrove::sys {
namespace {

constexpr std::string_view kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

char* putTwo(char* at, int value, char blank = '0') {
  *at++ = value < 10 ? blank : static_cast<char>('0' + value / 10);
  *at++ = static_cast<char>('0' + value % 10);
  return at;
}

char* putMonth(char* at, int month, DateStyle style) {
  return style == DateStyle::kMonthName ? putText(at, kMonths[month]) : putTwo(at, month + 1);
}

char* putTimeOfDay(char* at, const struct tm& when) {
  at = putTwo(at, when.tm_hour);
  *at++ = ':';
  at = putTwo(at, when.tm_min);
  *at++ = ':';
  return putTwo(at, when.tm_sec);
}

}  // namespace

char* putDate(char* at, int32_t seconds, DateStyle style, char separator) {
  time_t when = seconds;
  struct tm parts;
  if (!gmtime_r(&when, &parts)) return nullptr;
  at = putTwo(at, parts.tm_mday, ' ');
  *at++ = '-';
  at = putMonth(at, parts.tm_mon, style);
  *at++ = '-';
  at = putNumber(at, 1900 + parts.tm_year);
  *at++ = separator;
  return putTimeOfDay(at, parts);
}

}  // namespace kestrove::sys
