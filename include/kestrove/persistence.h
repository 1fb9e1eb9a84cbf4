/* SPDX-License-Identifier: Apache-2.0 */
/* Building the store, saving it, factory resets.

   Saving writes the whole store to the file named by configFileName. The file is replaced as a whole: a save that fails
   keeps the old one. Every operation that saves leaves code 2 or 10 when its change did not reach the file, also where
   its result is 0. Of a text the file holds what stands before its first line feed, of an account's name what stands
   before a blank, tab or line feed; a save that leaves something out says so once, as a warning in syslog.

   Where nothing is said of it, an operation here logs no event, does not signal the engine, leaves the kernel alone and
   runs no program. */
#ifndef KESTROVE_PERSISTENCE_H
#define KESTROVE_PERSISTENCE_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Builds the store; for the start-up program, once, with no segment there. Creates the segment, reads
   /etc/config/factory.defaults and then the configuration file (configPath, unless the factory defaults name another),
   reads the event log back from eventLogPath, asks the kernel for the hardware addresses, fills in gateway identifier
   and short versions, and resets the statistics (two events). Saves nothing. A configuration file that cannot be read
   leaves the store in state 3 (Unconfigured) and is no failure. Paths are cut to 127 characters. 0; or -1 with code 3
   for a null path, with the reason on standard error when the lock file or the segment cannot be had, with code 1 when
   a segment is there already. After a failure behind the lock the process keeps the lock, with count 1 and no segment
   attached. Takes the lock from start to end. */
KESTROVE_API int init_shared_memory(const char* configPath, const char* eventLogPath);

/* As init_shared_memory, and keeps the hold: nobody else gets into the new store before kestrove_release(), so that the
   start-up program can finish it first. A hold that the caller had on a store before goes over into this one. */
KESTROVE_API int kestrove_build(const char* configPath, const char* eventLogPath);

/* Reads a configuration file into the store, line by line, in Configuration Mode: rows are stored and nothing is saved,
   logged as an event, signalled or applied to the kernel; the state is put back on every path, unless another one was
   set meanwhile. Only what the file names is overwritten. WEB_CACHE and DNS_ADDR write or remove /etc/resolv.conf and
   drive the operating modes with event 19; IPv6 rules are announced on standard output. Lines that make no sense are
   reported to syslog and skipped; codes left by refused values and rows stay in shm_errno. Further arguments are
   ignored. 0, also when the reading fails half-way (code 2); -2 when the file does not exist, -1 when it cannot be
   opened (both logged), when the lock cannot be taken (its code) or when path is null (code 3). Takes the lock. */
KESTROVE_API int load_shared_memory(const char* path, ...);

/* Saves the store, in every state, to the file that configFileName names. The file is replaced whole; where writing
   fails the old one stands and the reason is logged at error priority. 0, also when writing failed: then with code 10,
   so clear shm_errno before to tell; -1 with code 2 when the file cannot be opened for writing, with code 10 when
   writing failed among the rules (errno tells why). Takes the lock; saves are ordered among themselves even where it
   cannot be had. */
KESTROVE_API int write_shared_memory(void);

/* As write_shared_memory, but does nothing and gives 0 in Configuration Mode. */
KESTROVE_API int save_shared_memory(void);

/* Moves the administrator account of the old keys ADMIN_USERNAME and ADMIN_PASSWORD, when the store holds both, to the
   accounts of today; neither is checked as addUser does. The password is wiped from the store once the account exists.
   0, also without the keys; or a negative result with the code of the account operation that failed. Both keys are then
   appended to /etc/config/kestrove.conf, up to a line feed in them, for the next start, unless that file cannot be
   opened. An account that was added without its password is taken off the table again; where the table refused the
   name, removeUser is called for it, so that an older account of exactly that name goes, too. Takes the lock from
   beginning to end, saves, changes /etc/passwd. */
KESTROVE_API int addOldUser(void);

/* Factory reset on behalf of source and user: switches event logging off (item 36, which saves the store) and clears
   the event log, enters Configuration Mode, removes all user accounts (those without a line in /etc/passwd from the
   table alone), the state of the SNMP agent, the configured marker, the event log file and the configuration file, and
   puts the backup beside the configuration file (its name with ".bak") in its place by the program cp; a missing backup
   is no failure. 0, and the store lock stays counted in the calling process, which is to restart the appliance next. -1
   with the lock's code, or with code 2 as soon as something cannot be removed; the lock is then released, and the store
   stays in Configuration Mode with logging off. */
KESTROVE_API int restoreFactoryDefaults(uint32_t source, const char* user);

/* As restoreFactoryDefaults, but keeps the user accounts and the configured marker. */
KESTROVE_API int restoreZELFactoryDefaults(uint32_t source, const char* user);

/* Throws the store away, without a save, and runs the programs /bin/shm-init and then /bin/restartKestrove. The result
   of the second: its exit status, -1 when it could not be run. Takes no lock. */
KESTROVE_API int ZELrestore(void);

#ifdef __cplusplus
}
#endif

#endif
