/* SPDX-License-Identifier: Apache-2.0 */
/* Segment, lock and error codes.

   The pattern of work on the store: shm_lock(), work on *shm, shm_unlock(). The exported operations of the other
   headers hold the lock by themselves, each from its beginning to its end; one that is called inside shm_lock() and
   shm_unlock() asks for the lock all the same and has released it when it returns. What must be seen as one change
   together with such operations stands between kestrove_hold() and kestrove_release(). The library is for
   single-threaded processes.

   Nothing in this header saves the store, logs an event or signals the engine, and of the kernel it has to do with
   the segment and the lock file alone. */
#ifndef KESTROVE_SEGMENT_H
#define KESTROVE_SEGMENT_H

#include "kestrove/errors.h"
#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct MessageEntry {
  int32_t code;
  const char* message;
} MessageEntry;

/* The default code stands in the entries as well, by custom in the last one. */
typedef struct MessageTable {
  int32_t count;
  int32_t defaultCode;
  const MessageEntry* entries;
} MessageTable;

/* Where this process has the segment attached; null before the first lock. */
KESTROVE_API extern ShmData* shm;

/* Nesting depth of the store lock in this process. */
KESTROVE_API extern int32_t shm_lock_count;

/* Code of the last failure (errors.h). A success never clears it. */
KESTROVE_API extern uint32_t shm_errno;

/* Opens the lock file /var/lock/shm unless this process has it open, making it when it is missing. 0, or -1 with code
   2. Takes no lock. */
KESTROVE_API int create_lock_file(void);

/* Attaches the segment if this process has not yet, and takes the store lock, waiting without limit for other
   processes. The lock nests: a process that holds it only counts up, without a system call. 0, or -1: code 1 when there
   is no segment to attach, 2 when the lock file cannot be opened or locked.

   A process that dies inside a change of users, rules, routes, addresses or events leaves word of it in the store, in
   the first eight bytes of reserved32. Whoever takes the file lock next, here or in any operation, finds the tables as
   before that change or as after it: it finishes the change or takes it back before anything else, and says which in
   the system log (a warning). Words that no change leaves are cleared and named there. Two cases are left: in a full
   table of 8192 rules whose last rule is not the one that the store's birth makes, a rule that is moved or changed, and
   beside any full rule table the oldest event that is overwritten or an address of the bridge that is changed can be
   torn; in a full route table a route that is replaced can be lost, or torn under its own key. */
KESTROVE_API int shm_lock(void);

/* Counts the lock down by one. Every call, an inner one of a nested pair too, gives the lock to whoever waits for it;
   the outer pair then goes on without it. The process stays attached. 0, or -1: code 3 when nothing is locked or
   attached, 2 when the lock can neither be released nor its file closed (the count then stays). */
KESTROVE_API int shm_unlock(void);

/* Holds the store over several operations: until kestrove_release() nobody else gets in, whatever operations are called
   between, and all that they do is seen as one change. Nests. Not for shm_lock() and shm_unlock() between the two: that
   pair drops the lock as ever. Programs that may use the store themselves (refresh_userinterface_apps,
   setNetworkConfigItem of item 1, ZELrestore, dhcp_start) are run without the lock all the same. Attaches as shm_lock()
   does. 0, or -1 with its codes. */
KESTROVE_API int kestrove_hold(void);

/* Ends a hold. 0, or -1: code 3 when none is there, 2 as shm_unlock(). */
KESTROVE_API int kestrove_release(void);

/* The operational state of the store; 0 without a code when there is no segment. -1 with the codes of shm_lock, or 2
   when the system cannot tell whether there is one. Takes the lock. */
KESTROVE_API int getSharedMemoryStatus(void);

/* Removes the segment from the system: it goes with the last process that uses it. Sets shm to null without detaching.
   0, or -1 with the reason on standard error; shm_errno is not touched. Takes no lock. */
KESTROVE_API int delete_shared_memory(void);

/* Detaches the segment from this process. shm keeps its value, which then points nowhere, and the lock count stays:
   call nothing that uses the store before delete_shared_memory() has set shm to null. */
KESTROVE_API void shm_detach(void);

/* Prints prefix, ": " and the text of shm_errno to standard error: as perror does for code 2, with the text of errno as
   a third part for codes 9 and 10. A null prefix prints nothing. */
KESTROVE_API void shm_perror(const char* prefix);

/* The text of a code, constant. Texts are found by row: 21 gives "Unknown error"; 22, 23 and all codes outside 0 to 23
   give null. */
KESTROVE_API const char* shm_strerror(int code);

/* The message of a code in a table: that of the default code for a code that is not listed, that of the last entry when
   the default is not listed either. A null or empty table gives null and code 3. */
KESTROVE_API const char* shm_getMessage(const MessageTable* table, int code);

#ifdef __cplusplus
}
#endif

#endif
