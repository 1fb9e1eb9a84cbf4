/* SPDX-License-Identifier: Apache-2.0 */
/* Event catalogue and event log.

   Events are kept in a ring of 8192 records in the store; after every change the whole log area is written to
   /var/log/kestrove/event.log (360460 bytes, a byte-for-byte image). An event has an id of the catalogue (0 to 48), the
   number of the front end that caused it (the source: 0 System, 1 Kestrove, 2 HTTP, 3 Serial, 4 SSH, 5 to 7 SNMP
   versions 1 to 3, 8 unknown) and the name of the user behind it. Results are 0 or a value; -1 is a failure with its
   code in shm_errno.

   None saves the store or signals the engine, and the kernel is left alone but for the program that
   logSystemUpdateEvent runs. */
#ifndef KESTROVE_EVENTS_H
#define KESTROVE_EVENTS_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Records an event and tells syslog: "Event logged: type, source, description" at informational priority, or "Bogus
   Event: id" at warning priority for an id outside the catalogue, which is recorded all the same. The source is stored
   as given. Of the user name 32 bytes are kept; null counts as empty. Works in every operational state. Takes the lock
   and writes the file under it. -1 with code 2 when the clock cannot be read, with code 5 when logging is switched off
   (both record nothing), with the lock's code, with code 9 or 10 when the file cannot be opened or written (the record
   stays in the store; errno tells why). */
KESTROVE_API int logEvent(uint32_t id, uint32_t source, const char* user);

/* Renders the index-th oldest event (0 is the oldest) into a buffer of size bytes, terminated and cut to fit. Layout 2
   is comma-separated, 3 narrow, every other value that of the listing; times are UTC. The number of characters written,
   at most size - 1; 0 when there is no such event or size is 0. Takes the lock to find the record and renders it after
   the release. -1 with code 3 when size is negative or the buffer null, with the lock's code. An index beyond the ring
   takes no lock. */
KESTROVE_API int getEventString(uint32_t index, char* buffer, int size, int layout);

/* The description of an event id, a constant text; that of id 0 for every id outside the catalogue. No lock. */
KESTROVE_API const char* getEventMessage(uint32_t id);

/* The number of events held: 8192 once the ring has wrapped. Takes the lock; -1 with its code. */
KESTROVE_API int getEventCount(void);

/* Empties the log, writes the file, then logs event 17 with the given source and user (nothing more when logging is
   switched off: the log then stays empty). The result is that of the first write, 0 or -1 with code 9 or 10 and errno,
   whatever becomes of the event; with 0 the code may be the event's. -1 with the lock's code. Takes the lock. */
KESTROVE_API int clearEventLog(uint32_t source, const char* user);

/* Empties the log and writes the file; logs nothing. 0, or -1 with code 9 or 10 of the write or the lock's code. */
KESTROVE_API int wipeEventLog(void);

/* Starts the log of an updated system: wipes it, logs the given event and event 3, both with the given source and user,
   and copies the file to /old_dir/var/log/kestrove/ with the program cp. The exit status of cp, -1 when it could not be
   run. Takes the lock for all of it; without the lock nothing is logged and the file is copied as it is. */
KESTROVE_API int logSystemUpdateEvent(uint32_t id, uint32_t source, const char* user);

/* Writes the 360460 bytes at area to a file, which is created when missing, overwritten in place and cut to that size:
   once whole it is never shorter, whatever happens to the writer. A writer killed inside its write leaves the new bytes
   up to some place and the old ones behind it. Not synced to the disk. -1 with code 3 for a null argument, 9 when the
   file cannot be opened, 10 when it cannot be written whole (errno is that of the failed call). Takes no lock. */
KESTROVE_API int write_event_log(const char* path, const void* area);

/* Reads the first 360460 bytes of a file into area. -1 when it cannot be opened or is shorter; then no code is set, and
   area is as before unless the reading itself failed half-way. -1 with code 3 for a null argument. Takes no lock. */
KESTROVE_API int read_event_log(const char* path, void* area);

#ifdef __cplusplus
}
#endif

#endif
