// SPDX-License-Identifier: Apache-2.0
// Seconds since the epoch as a date of the listings, in UTC and in English whatever the locale of the program.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace kestrove::sys {

enum class DateStyle { kMonthName, kMonthNumber };  // "%e-%b-%Y" and "%e-%m-%Y"

constexpr size_t kLongestDate = 24;

// Writes date, separator and time of day ("%T") at the cursor and returns the place behind; null, with nothing
// written, when the seconds are no date.
char* putDate(char* at, int32_t seconds, DateStyle style, char separator);

}  // namespace kestrove::sys
