/* SPDX-License-Identifier: Apache-2.0 */
/* The store as text, for support staff.

   The printers write to a stream, null meaning standard output, and give 0, whatever becomes of the stream. They take
   no lock of their own; each event is fetched under the lock. They change nothing, and attach the store when the
   process is not attached yet: -1 with code 1 when that fails. Damaged counts and chains end a section early.

   Nothing here saves, logs an event, signals the engine or touches the kernel's network. The names of codes need no
   store and set no code. */
#ifndef KESTROVE_DUMP_H
#define KESTROVE_DUMP_H

#include <stdio.h>
#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Every section, with its "-->" heading. The three are one. */
KESTROVE_API int dumpSharedMemory(FILE* stream);
KESTROVE_API int printSharedMemory(FILE* stream);
KESTROVE_API int printTelemetry(FILE* stream);

/* Key, size and number of attached processes of the segment, on standard output. Needs no attachment. -1, with the
   reason on standard error and no code, when there is no segment. */
KESTROVE_API int printSharedMemoryStats(void);

/* Single sections, without heading. */
KESTROVE_API int printEventLog(FILE* stream);
KESTROVE_API int printRouteInfo(FILE* stream);
KESTROVE_API int printRoute6Info(FILE* stream);

/* Names of codes, constant texts; an unknown code has its table's default name. */
KESTROVE_API const char* strOperationalState(int code);
KESTROVE_API const char* strCongestionControl(int code);
KESTROVE_API const char* strDDupState(int code);

#ifdef __cplusplus
}
#endif

#endif
