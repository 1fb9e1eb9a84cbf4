/* SPDX-License-Identifier: Apache-2.0 */
/* Counters of the engine and of the interfaces, and their resets.

   Unless said otherwise a call takes the store lock and gives 0, or -1 with the code in shm_errno: 3 for a null pointer
   or a row that does not exist (nothing changes), else the lock's. Numbers are in the machine's byte order. None saves
   the store or signals the engine; what the kernel counts is read and never changed. Resets log events, nothing else
   does. */
#ifndef KESTROVE_STATS_H
#define KESTROVE_STATS_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Folds the engine's record of one accumulation interval into the counters: totals, peaks, ratios, and from word 30 on
   the ten rows of the queues, 15 words each. A peak per second stays what it was when accumulationInterval is 0. Words
   18 to 24 are signed, the data sizes of words 25 to 28 are not. Saves, logs and signals nothing. */
KESTROVE_API int shm_updateKestroveStats(const uint32_t record[180]);

/* Copies the first 956 bytes of the statistics block. */
KESTROVE_API int readOperationalStats(void* out);

/* Copies the ten rows of the queues, 440 bytes: 0 WAN total, 1 to 8 WAN classes, 9 LAN. */
KESTROVE_API int readQosStats(void* out);

/* Copies the session engine's eight counters of 64 bits and its gauge, 68 bytes. */
KESTROVE_API int readDomoStats(void* out);

/* Copies a queue's row (0 to 9) of the latest interval record, 60 bytes. */
KESTROVE_API int getQueueIntervalStats(int index, void* out);

/* Copies an interface's row (0 LAN, 1 WAN), an InterfaceCounters of 48 bytes. */
KESTROVE_API int getInterfaceStats(int index, void* out);

/* Adds the caller's eight counters of 64 bits to the session engine's and zeroes the caller's, then takes over the
   gauge behind them (68 bytes in all; no alignment needed). */
KESTROVE_API int updateDomoStats(void* record);

/* The number of intervals folded in since the last reset; 0 without the lock. */
KESTROVE_API uint64_t checkStatsCounter(void);

/* Uptime in hundredths of a second at the last reset; all ones without the lock. */
KESTROVE_API uint32_t getLastResetTimeStamp(void);

/* The kernel's uptime in hundredths of a second, its low 32 bits. Needs no store. -1 with *out 0 when the kernel does
   not tell; then no code is set. */
KESTROVE_API int getSystemUptime(uint32_t* out);

/* The kernel's counters of an interface, an InterfaceCounters of 48 bytes; for tap0 sent and received change places.
   Needs no store. -1, with out untouched, and code 7 for an interface that is not listed, 9 when the kernel's list
   cannot be opened, 10 for a line that cannot be read. */
KESTROVE_API int readInterfaceStats(void* out, const char* interfaceName);

/* Every reset changes the store first and then logs its events with the given source (SHM_SOURCE_*) and user; one that
   cannot be logged leaves its code (logEvent), the result is 0 all the same. */

/* All counters but the latest record and those of the filter; the queues keep their priorities. Events 16 and 14. */
KESTROVE_API int resetStats(uint32_t source, const char* user);

/* Compression, filter and session counters. Event 14; unless a de-duplication method is set, the web cache's log is
   rotated (cache on) or emptied (cache off) by a program; event 15. */
KESTROVE_API int resetOptimizationStats(uint32_t source, const char* user);

/* The compression totals to 0, their ratio to 100. Event 14. */
KESTROVE_API int resetCompressionRatio(uint32_t source, const char* user);

/* The filter totals to 0, their ratio to 100. No event. */
KESTROVE_API int resetFilterStats(void);

#ifdef __cplusplus
}
#endif

#endif
